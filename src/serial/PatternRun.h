#pragma once

#include "serial/PatternAutomaton.h"

#include <QtGlobal>

#include <memory>
#include <vector>

namespace vorn {

// The walks through an automaton that a stream of UTF-8 text makes, begun at every character of it.
// A step takes a time that depends on the automaton only, however much came before: of the walks
// that stand at one place only the newest is kept, since all of them end alike.
class PatternRun
{
public:
    explicit PatternRun(std::shared_ptr<const PatternAutomaton> automaton);

    // Takes the next byte. Returns the length of the shortest text that ends with it and may be a
    // match, 0 when there is none.
    qint64 append(char byte);
    // Forgets the stream so far.
    void reset();

private:
    // A walk, begun at the given character, takes the next one at the place, if the place does.
    void walkTo(std::size_t place, std::size_t character, qint64 begin);

    std::shared_ptr<const PatternAutomaton> m_automaton;
    // The places where walks stand, and for each place where in the stream the newest walk to it
    // began, -1 without one; before and after the step that is being made.
    struct Walks
    {
        std::vector<std::size_t> places;
        std::vector<qint64> begins;
        void clear();
    };
    Walks m_walks;
    Walks m_nextWalks;
    qint64 m_newestEnded = -1;
    qint64 m_length = 0;
};

} // namespace vorn
