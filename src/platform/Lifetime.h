#pragma once

#include <memory>

namespace vorn {

// A member that lets background jobs and queued calls see whether its owner still exists. Any
// thread may ask, but only the thread that destroys the owner may use it.
class Lifetime
{
public:
    using Token = std::weak_ptr<const void>;

    Lifetime() = default;
    // A copy of the owner is another object with its own lifetime.
    Lifetime(const Lifetime &) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
    Lifetime &operator=(const Lifetime &) { return *this; }
    ~Lifetime() = default;

    // Expires with the owner.
    Token token() const { return m_life; }

private:
    std::shared_ptr<const void> m_life = std::make_shared<char>();
};

} // namespace vorn
