#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/SerialQueue.h"
#include "tests/support/Eventually.h"
#include "tests/support/ThreadShortage.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <thread>

namespace vorn {
namespace {

using namespace std::chrono_literals;

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

TEST(MainQueueTest, ClosingReleasesWaitingThreadsSoThatTheProgramCanEnd)
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
        std::exit(refused == 20 && late == 1 && !GlobalQueue::instance().post([] {}) ? 0 : 4);
    };
    EXPECT_EXIT(endProgram(), testing::ExitedWithCode(0), "");
}

TEST(GlobalQueueTest, JobsThatWaitNeverKeepOthersFromRunning)
{
    for (int round = 0; round < 20; ++round) {
        constexpr int kCount = 40;
        const auto all = std::make_shared<std::latch>(kCount + 1);
        for (int i = 0; i < kCount; ++i)
            GlobalQueue::instance().post([all] { all->arrive_and_wait(); });
        all->arrive_and_wait(); // hangs if any job does not run beside the others
    }
}

TEST(GlobalQueueTest, ScheduledJobsRunWhenDueUnlessCancelled)
{
    const auto start = GlobalQueue::Clock::now();
    std::latch late(1);
    std::latch early(1);
    std::atomic<bool> cancelledRan = false;
    GlobalQueue::instance().postAt(start + 60ms, [&] { late.count_down(); });
    const auto ticket = GlobalQueue::instance().postAt(start + 30ms, [&] { cancelledRan = true; });
    GlobalQueue::instance().postAt(start + 20ms, [&] { early.count_down(); });
    GlobalQueue::instance().cancel(ticket);
    early.wait();
    EXPECT_GE(GlobalQueue::Clock::now(), start + 20ms);
    late.wait();
    EXPECT_GE(GlobalQueue::Clock::now(), start + 60ms);
    EXPECT_FALSE(cancelledRan);
}

TEST(SerialQueueTest, AJobWaitsForAThreadInsteadOfBlockingItsPoster)
{
    const auto ranOn = std::make_shared<std::promise<std::thread::id>>();
    auto future = ranOn->get_future();
    SerialQueue queue;
    {
        const ThreadShortage shortage;
        queue.post([=] { ranOn->set_value(std::this_thread::get_id()); });
        SerialQueue other;
        other.postAndWait([] {}); // hangs unless it runs here
        future.wait_for(30ms);    // the next attempts fail, too
    }
    ASSERT_EQ(future.wait_for(20s), std::future_status::ready);
    EXPECT_NE(future.get(), std::this_thread::get_id());
}

TEST(SerialQueueTest, JobsRunEvenIfTheQueueIsDestroyedFirst)
{
    auto queue = std::make_unique<SerialQueue>();
    const auto held = std::make_shared<std::latch>(1);
    const auto ran = std::make_shared<std::latch>(1);
    queue->post([=] { held->wait(); });
    queue->post([=] { ran->count_down(); });
    queue.reset();
    held->count_down();
    ran->wait(); // hangs if the second job is dropped
}

} // namespace
} // namespace vorn
