#pragma once

#include <bitset>
#include <cstddef>
#include <vector>

namespace vorn {

// A regular expression's places and their order (Glushkov's position automaton): a place takes one
// character of certain kinds, and each text that the expression matches is a walk from place to
// place. Built from Parts, from the smallest up to the whole, and immutable from then on.
//
// A character is known by its ASCII code; all others count as one.
class PatternAutomaton
{
public:
    static constexpr std::size_t OtherCharacter = 128;
    using Characters = std::bitset<OtherCharacter + 1>;

    // A part of the expression: where a walk through it may begin and end, and whether it may be
    // walked without taking a character.
    struct Part
    {
        std::vector<std::size_t> first;
        std::vector<std::size_t> last;
        bool mayBeEmpty = true;
    };

    Part place(const Characters &taken);
    Part sequence(Part part, const Part &next);
    // The part once, or again and again.
    Part repeated(Part part);
    static Part either(Part part, const Part &other);
    static Part optional(Part part);
    void finish(const Part &whole);

    // True when steps would take too long; what was built is not to be used.
    bool isTooLarge() const { return m_isTooLarge; }

private:
    friend class PatternRun;
    struct Place
    {
        Characters taken;
        std::vector<std::size_t> next;
        bool isLast = false;
    };
    void connect(const std::vector<std::size_t> &from, const std::vector<std::size_t> &to);

    std::vector<Place> m_places;
    std::vector<std::size_t> m_first;
    std::size_t m_connections = 0;
    bool m_isTooLarge = false;
};

} // namespace vorn
