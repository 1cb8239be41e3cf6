#include "serial/PatternRun.h"

#include <algorithm>
#include <utility>

namespace vorn {

PatternRun::PatternRun(std::shared_ptr<const PatternAutomaton> automaton)
    : m_automaton(std::move(automaton))
{
    m_walks.begins.assign(m_automaton->m_places.size(), -1);
    m_nextWalks = m_walks;
}

qint64 PatternRun::append(char byte)
{
    const qint64 at = m_length++;
    const auto code = static_cast<uchar>(byte);
    // A character steps with its first byte; until the last one it is not text, which whoever
    // checks the tail finds out.
    const bool isContinuation = (code & 0xC0) == 0x80;
    if (!isContinuation) {
        const auto character = std::min<std::size_t>(code, PatternAutomaton::OtherCharacter);
        m_newestEnded = -1;
        for (const std::size_t first : m_automaton->m_first)
            walkTo(first, character, at);
        for (const std::size_t place : m_walks.places)
            for (const std::size_t next : m_automaton->m_places[place].next)
                walkTo(next, character, m_walks.begins[place]);
        m_walks.clear();
        std::swap(m_walks, m_nextWalks);
    }
    return m_newestEnded < 0 ? 0 : m_length - m_newestEnded;
}

void PatternRun::walkTo(std::size_t place, std::size_t character, qint64 begin)
{
    const auto &to = m_automaton->m_places[place];
    qint64 &newest = m_nextWalks.begins[place];
    if (begin <= newest || !to.taken[character])
        return;
    if (newest < 0)
        m_nextWalks.places.push_back(place);
    newest = begin;
    if (to.isLast)
        m_newestEnded = std::max(m_newestEnded, begin);
}

void PatternRun::reset()
{
    m_walks.clear();
    m_newestEnded = -1;
}

void PatternRun::Walks::clear()
{
    for (const std::size_t place : places)
        begins[place] = -1;
    places.clear();
}

} // namespace vorn
