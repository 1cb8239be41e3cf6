#pragma once

#include "platform/GlobalQueue.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <cstddef>
#include <latch>
#include <memory>

namespace vorn {

// While it exists, the system refuses new threads, and the global queue has no idle one.
class ThreadShortage
{
public:
    ThreadShortage()
    {
        pthread_attr_t tooLarge;
        EXPECT_EQ(::pthread_getattr_default_np(&m_usual), 0);
        EXPECT_EQ(::pthread_getattr_default_np(&tooLarge), 0);
        EXPECT_EQ(::pthread_attr_setstacksize(&tooLarge, std::size_t{1} << 46), 0);
        EXPECT_EQ(::pthread_setattr_default_np(&tooLarge), 0);
        while (GlobalQueue::instance().tryPost([end = m_end] { end->wait(); }))
            ;
    }
    ~ThreadShortage()
    {
        EXPECT_EQ(::pthread_setattr_default_np(&m_usual), 0);
        m_end->count_down();
    }
    ThreadShortage(const ThreadShortage &) = delete;
    ThreadShortage &operator=(const ThreadShortage &) = delete;

private:
    pthread_attr_t m_usual{};
    const std::shared_ptr<std::latch> m_end = std::make_shared<std::latch>(1);
};

} // namespace vorn
