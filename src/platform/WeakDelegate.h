#pragma once

#include <memory>

namespace vorn {

// Base of a delegate that others hold weakly: it lets them see that it is gone.
class DelegateBase
{
public:
    DelegateBase() = default;
    // A copy is another object with a life of its own.
    DelegateBase(const DelegateBase &) {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned.
    DelegateBase &operator=(const DelegateBase &) { return *this; }
    std::weak_ptr<const void> lifetime() const { return m_life; }

protected:
    virtual ~DelegateBase() = default;

private:
    std::shared_ptr<const void> m_life = std::make_shared<char>();
};

// A non-owning reference to a delegate. Whether it is gone may be asked on any thread; the object
// itself is to be reached only on the thread that destroys it.
template <typename Delegate>
class WeakDelegate
{
public:
    WeakDelegate() = default;
    explicit WeakDelegate(Delegate *delegate) : m_delegate(delegate)
    {
        if (delegate)
            m_life = delegate->lifetime();
    }
    Delegate *get() const { return m_life.expired() ? nullptr : m_delegate; }
    bool isGone() const { return m_life.expired(); }

private:
    Delegate *m_delegate = nullptr;
    std::weak_ptr<const void> m_life;
};

} // namespace vorn
