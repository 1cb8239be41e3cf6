#pragma once

#include <pthread.h>

#include <array>
#include <string>

namespace vorn {

// Names the calling thread, for debuggers and `ps -L`, and restores its previous name on
// destruction. The system keeps the first 15 bytes.
class ThreadName
{
public:
    explicit ThreadName(const std::string &name)
    {
        ::pthread_getname_np(::pthread_self(), m_before.data(), m_before.size());
        ::pthread_setname_np(::pthread_self(), name.substr(0, m_before.size() - 1).c_str());
    }
    ~ThreadName() { ::pthread_setname_np(::pthread_self(), m_before.data()); }
    ThreadName(const ThreadName &) = delete;
    ThreadName &operator=(const ThreadName &) = delete;

private:
    std::array<char, 16> m_before{};
};

} // namespace vorn
