#pragma once

#include <memory>

namespace vorn {

// Held by an object, lets background jobs and queued calls see that the object is gone. Any thread
// may ask; the object itself is to be reached only on the thread that destroys it.
class Lifetime
{
public:
    using Token = std::weak_ptr<const void>;

    Lifetime() = default;
    // A copy of the object is another object with a life of its own.
    Lifetime(const Lifetime &) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
    Lifetime &operator=(const Lifetime &) { return *this; }
    ~Lifetime() = default;

    // Expires with the object.
    Token token() const { return m_life; }

private:
    std::shared_ptr<const void> m_life = std::make_shared<char>();
};

} // namespace vorn
