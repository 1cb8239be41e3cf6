#include "serial/PatternAutomaton.h"

namespace vorn {

namespace {

// A step follows at most this many connections: some tens of microseconds.
constexpr std::size_t MostConnections = 16384;

void addTo(std::vector<std::size_t> &places, const std::vector<std::size_t> &more)
{
    places.insert(places.end(), more.begin(), more.end());
}

} // namespace

PatternAutomaton::Part PatternAutomaton::place(const Characters &taken)
{
    const std::size_t place = m_places.size();
    m_places.push_back({.taken = taken, .next = {}});
    return {{place}, {place}, false};
}

PatternAutomaton::Part PatternAutomaton::sequence(Part part, const Part &next)
{
    connect(part.last, next.first);
    if (part.mayBeEmpty)
        addTo(part.first, next.first);
    if (next.mayBeEmpty)
        addTo(part.last, next.last);
    else
        part.last = next.last;
    part.mayBeEmpty = part.mayBeEmpty && next.mayBeEmpty;
    return part;
}

PatternAutomaton::Part PatternAutomaton::repeated(Part part)
{
    connect(part.last, part.first);
    return part;
}

PatternAutomaton::Part PatternAutomaton::either(Part part, const Part &other)
{
    addTo(part.first, other.first);
    addTo(part.last, other.last);
    part.mayBeEmpty = part.mayBeEmpty || other.mayBeEmpty;
    return part;
}

PatternAutomaton::Part PatternAutomaton::optional(Part part)
{
    part.mayBeEmpty = true;
    return part;
}

void PatternAutomaton::finish(const Part &whole)
{
    m_first = whole.first;
    for (const std::size_t place : whole.last)
        m_places[place].isLast = true;
}

void PatternAutomaton::connect(const std::vector<std::size_t> &from,
                               const std::vector<std::size_t> &to)
{
    m_connections += from.size() * to.size();
    m_isTooLarge = m_isTooLarge || m_connections > MostConnections;
    if (m_isTooLarge)
        return;
    for (const std::size_t place : from)
        addTo(m_places[place].next, to);
}

} // namespace vorn
