#include "serial/PatternRun.h"

#include <algorithm>
#include <utility>

namespace vorn {

PatternRun::PatternRun(std::shared_ptr<const PatternAutomaton> automaton)
    : m_automaton(std::move(automaton)), m_begins(m_automaton->m_places.size(), -1),
      m_nextBegins(m_begins)
{
}

qint64 PatternRun::append(char byte)
{
    const qint64 at = m_length++;
    const auto code = static_cast<uchar>(byte);
    // A character steps with its first byte; until the last one it is not text, which whoever
    // checks the tail finds out.
    const bool isContinuation = (code & 0xC0) == 0x80;
    if (!isContinuation) {
        std::fill(m_nextBegins.begin(), m_nextBegins.end(), -1);
        m_newestEnded = -1;
        const std::size_t character = std::min<std::size_t>(code, PatternAutomaton::OtherCharacter);
        for (const std::size_t taker : m_automaton->m_takers[character]) {
            const auto &place = m_automaton->m_places[taker];
            qint64 begin = place.isFirst ? at : -1;
            for (const std::size_t before : place.before)
                begin = std::max(begin, m_begins[before]);
            m_nextBegins[taker] = begin;
            if (place.isLast)
                m_newestEnded = std::max(m_newestEnded, begin);
        }
        m_begins.swap(m_nextBegins);
    }
    return m_newestEnded < 0 ? 0 : m_length - m_newestEnded;
}

void PatternRun::reset()
{
    std::fill(m_begins.begin(), m_begins.end(), -1);
    m_newestEnded = -1;
}

} // namespace vorn
