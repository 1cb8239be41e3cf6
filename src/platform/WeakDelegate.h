#pragma once

#include "platform/Lifetime.h"

namespace vorn {

// Base of a delegate or observer that others hold weakly.
class DelegateBase
{
public:
    Lifetime::Token lifetime() const { return m_lifetime.token(); }

protected:
    virtual ~DelegateBase() = default;
    DelegateBase() = default;
    DelegateBase(const DelegateBase &) = default;
    DelegateBase &operator=(const DelegateBase &) = default;

private:
    Lifetime m_lifetime;
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
    Lifetime::Token m_life;
};

} // namespace vorn
