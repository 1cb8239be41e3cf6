#pragma once

#include "platform/Lifetime.h"

namespace vorn {

// Base class of delegates and observers that are held weakly.
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

// A non-owning reference to a delegate. Any thread may ask whether the delegate is gone, but only
// the thread that destroys it may use it.
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
