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
    std::shared_ptr<const PatternAutomaton> m_automaton;
    // Where in the stream the newest walk to each place began; -1: no walk leads there.
    std::vector<qint64> m_begins;
    std::vector<qint64> m_nextBegins;
    qint64 m_newestEnded = -1;
    qint64 m_length = 0;
};

} // namespace vorn
