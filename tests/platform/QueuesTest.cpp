#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/SerialQueue.h"
#include "tests/support/Eventually.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <thread>

namespace vorn {
namespace {

using namespace std::chrono_literals;

// Something that happens once; copies are the same event.
class Event
{
public:
    void set() const { m_promise->set_value(); }
    bool comes() const { return m_future.wait_for(10s) == std::future_status::ready; }

private:
    std::shared_ptr<std::promise<void>> m_promise = std::make_shared<std::promise<void>>();
    std::shared_future<void> m_future = m_promise->get_future().share();
};

TEST(MainQueueTest, ANestedEventLoopRunsTheJobsBehindIt)
{
    MainQueue &queue = MainQueue::instance(); // made on the main thread, which it serves
    QEventLoop nested;
    bool left = false;
    std::thread thread([&] {
        queue.post([&] {
            QTimer::singleShot(10s, &nested, [&] { nested.exit(1); });
            left = nested.exec() == 0;
        });
        queue.post([&] { nested.quit(); });
    });
    thread.join();
    EXPECT_TRUE(eventually([&] { return left; }));
}

TEST(MainQueueTest, ClosingReleasesWhoeverWaitsSoThatTheProgramCanEnd)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto endProgram = [] {
        MainQueue::instance();
        std::atomic<int> entered = 0;
        std::atomic<int> refused = 0;
        for (int i = 0; i < 20; ++i) {
            GlobalQueue::instance().post([&] {
                ++entered;
                refused += MainQueue::instance().postAndWait([] { std::_Exit(1); }) ? 0 : 1;
            });
        }
        GlobalQueue::instance().postAfter(1h, [] { std::_Exit(2); });
        while (entered < 20)
            std::this_thread::yield();
        MainQueue::instance().close();
        GlobalQueue::instance().shutdown();
        SerialQueue queue;
        int late = 0;
        queue.postAndWait([&] { late = 1; }); // on this thread, there being no other
        MainQueue::instance().post([] { std::_Exit(3); });
        std::_Exit(refused == 20 && late == 1 && !GlobalQueue::instance().post([] {}) ? 0 : 4);
    };
    EXPECT_EXIT(endProgram(), testing::ExitedWithCode(0), "");
}

TEST(GlobalQueueTest, JobsThatWaitNeverKeepOthersFromRunning)
{
    for (int round = 0; round < 20; ++round) {
        constexpr int count = 40;
        const auto all = std::make_shared<std::latch>(count + 1);
        for (int i = 0; i < count; ++i)
            GlobalQueue::instance().post([all] { all->arrive_and_wait(); });
        all->arrive_and_wait(); // hangs when one job is not run beside the others
    }
}

TEST(GlobalQueueTest, ScheduledJobsRunWhenDueUnlessCancelled)
{
    const auto start = GlobalQueue::Clock::now();
    const Event late;
    const Event early;
    std::atomic<bool> cancelledRan = false;
    GlobalQueue::instance().postAt(start + 60ms, [=] { late.set(); });
    const auto ticket = GlobalQueue::instance().postAt(start + 30ms, [&] { cancelledRan = true; });
    GlobalQueue::instance().postAt(start + 20ms, [=] { early.set(); });
    GlobalQueue::instance().cancel(ticket);
    EXPECT_TRUE(early.comes());
    EXPECT_GE(GlobalQueue::Clock::now(), start + 20ms);
    EXPECT_TRUE(late.comes());
    EXPECT_GE(GlobalQueue::Clock::now(), start + 60ms);
    EXPECT_FALSE(cancelledRan);
}

TEST(SerialQueueTest, WhatWasPostedRunsAlsoWhenTheQueueIsGone)
{
    auto queue = std::make_unique<SerialQueue>();
    const Event held;
    const Event ranAfterTheEnd;
    queue->post([=] { held.comes(); });
    queue->post([=] { ranAfterTheEnd.set(); });
    queue.reset();
    held.set();
    EXPECT_TRUE(ranAfterTheEnd.comes());
}

} // namespace
} // namespace vorn
