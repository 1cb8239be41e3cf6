#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/SerialQueue.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

namespace vorn {
namespace {

using namespace std::chrono_literals;

constexpr int kLimit = 10000; // ms to wait for what must come

MainQueue &mainQueue()
{
    return MainQueue::instance();
}

GlobalQueue &globalQueue()
{
    return GlobalQueue::instance();
}

// Waits on the main thread, with its event loop running.
bool comesTrue(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, kLimit);
}

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

TEST(MainQueueTest, JobsOfEveryThreadRunOnTheMainThreadInPostingOrder)
{
    mainQueue();
    std::vector<std::vector<int>> seen(4);
    std::vector<std::thread> threads;
    for (auto &numbers : seen) {
        threads.emplace_back([&numbers] {
            for (int i = 0; i < 1000; ++i)
                mainQueue().post([&numbers, i] {
                    if (mainQueue().isCurrent())
                        numbers.push_back(i);
                });
        });
    }
    for (auto &thread : threads)
        thread.join();
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_TRUE(comesTrue([&] {
        return std::all_of(seen.begin(), seen.end(), [&](const auto &n) { return n == expected; });
    }));
}

TEST(MainQueueTest, AWaitingHandOffReturnsWhenTheJobHasRun)
{
    mainQueue();
    std::vector<int> order;
    mainQueue().post([&] { order.push_back(2); });
    EXPECT_TRUE(mainQueue().postAndWait([&] { order.push_back(1); })); // on the spot, when here
    std::atomic<bool> done = false;
    std::thread thread([&] {
        EXPECT_TRUE(mainQueue().postAndWait([&] { order.push_back(3); }));
        order.push_back(4);
        done = true;
    });
    EXPECT_TRUE(comesTrue([&] { return done.load(); }));
    thread.join();
    EXPECT_THAT(order, testing::ElementsAre(1, 2, 3, 4));
}

TEST(MainQueueTest, ANestedEventLoopRunsTheJobsBehindIt)
{
    QEventLoop nested;
    bool left = false;
    std::thread thread([&] {
        mainQueue().post([&] {
            QTimer::singleShot(kLimit, &nested, [&] { nested.exit(1); });
            left = nested.exec() == 0;
        });
        mainQueue().post([&] { nested.quit(); });
    });
    thread.join();
    EXPECT_TRUE(comesTrue([&] { return left; }));
}

TEST(MainQueueTest, ClosingReleasesWhoeverWaitsSoThatTheProgramCanEnd)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto endProgram = [] {
        mainQueue();
        std::atomic<int> entered = 0;
        std::atomic<int> refused = 0;
        for (int i = 0; i < 20; ++i) {
            globalQueue().post([&] {
                ++entered;
                refused += mainQueue().postAndWait([] { std::_Exit(1); }) ? 0 : 1;
            });
        }
        globalQueue().postAfter(1h, [] { std::_Exit(2); });
        while (entered < 20)
            std::this_thread::yield();
        mainQueue().close();
        globalQueue().shutdown();
        SerialQueue queue;
        int late = 0;
        queue.postAndWait([&] { late = 1; }); // on this thread, there being no other
        mainQueue().post([] { std::_Exit(3); });
        std::_Exit(refused == 20 && late == 1 && !globalQueue().post([] {}) ? 0 : 4);
    };
    EXPECT_EXIT(endProgram(), testing::ExitedWithCode(0), "");
}

TEST(GlobalQueueTest, JobsThatWaitNeverKeepOthersFromRunning)
{
    for (int round = 0; round < 20; ++round) {
        constexpr int count = 40;
        const auto all = std::make_shared<std::latch>(count + 1);
        for (int i = 0; i < count; ++i)
            globalQueue().post([all] { all->arrive_and_wait(); });
        all->arrive_and_wait(); // hangs when one job is not run beside the others
    }
}

TEST(GlobalQueueTest, ScheduledJobsRunWhenDueUnlessCancelled)
{
    const auto start = GlobalQueue::Clock::now();
    const Event late;
    const Event early;
    std::atomic<bool> cancelledRan = false;
    globalQueue().postAt(start + 60ms, [=] { late.set(); });
    const auto ticket = globalQueue().postAt(start + 30ms, [&] { cancelledRan = true; });
    globalQueue().postAt(start + 20ms, [=] { early.set(); });
    globalQueue().cancel(ticket);
    EXPECT_TRUE(early.comes());
    EXPECT_GE(GlobalQueue::Clock::now(), start + 20ms);
    EXPECT_TRUE(late.comes());
    EXPECT_GE(GlobalQueue::Clock::now(), start + 60ms);
    EXPECT_FALSE(cancelledRan);
}

TEST(SerialQueueTest, JobsRunOneAtATimeInPostingOrder)
{
    auto queue = std::make_unique<SerialQueue>();
    std::vector<std::pair<int, int>> ran; // unguarded: the queue's order is all there is
    std::vector<std::thread> threads;
    for (int poster = 0; poster < 4; ++poster) {
        threads.emplace_back([&, poster] {
            for (int i = 0; i < 500; ++i)
                queue->post([&, poster, i] { ran.emplace_back(poster, i); });
        });
    }
    for (auto &thread : threads)
        thread.join();
    bool inside = false;
    queue->postAndWait([&] { inside = queue->isCurrent(); });
    EXPECT_TRUE(inside);
    EXPECT_FALSE(queue->isCurrent());
    ASSERT_EQ(ran.size(), 2000U);
    std::stable_sort(ran.begin(), ran.end(), [](auto &a, auto &b) { return a.first < b.first; });
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));

    const Event held;
    const Event ranAfterTheEnd;
    queue->post([=] { held.comes(); });
    queue->post([=] { ranAfterTheEnd.set(); });
    queue.reset();
    held.set();
    EXPECT_TRUE(ranAfterTheEnd.comes());
}

TEST(QueueTimerTest, ItRepeatsUntilCancelledOnItsQueue)
{
    SerialQueue queue;
    const Event third;
    int calls = 0;
    std::unique_ptr<QueueTimer> timer;
    queue.postAndWait([&] {
        timer = std::make_unique<QueueTimer>(queue, 5ms, [&] {
            if (++calls == 3) {
                timer->cancel();
                third.set();
            }
        });
    });
    EXPECT_TRUE(third.comes());
    const Event later;
    globalQueue().postAfter(40ms, [=] { later.set(); });
    EXPECT_TRUE(later.comes());
    queue.postAndWait([&] { EXPECT_EQ(calls, 3); });
}

TEST(QueueTimerTest, ABusyQueueGetsOneCallForTheTicksThatItMissed)
{
    SerialQueue queue;
    const Event release;
    const Event recorded;
    int calls = 0;
    int callsWhileBusy = 0;
    queue.post([=] { release.comes(); });
    const QueueTimer timer(queue, 1ms, [&] { ++calls; });
    globalQueue().postAfter(50ms, [&, release, recorded] {
        queue.post([&, recorded] {
            callsWhileBusy = calls;
            recorded.set();
        });
        release.set();
    });
    EXPECT_TRUE(recorded.comes());
    EXPECT_LE(callsWhileBusy, 1);
    EXPECT_TRUE(comesTrue([&] {
        bool goesOn = false;
        queue.postAndWait([&] { goesOn = calls > callsWhileBusy + 2; });
        return goesOn;
    }));
}

} // namespace
} // namespace vorn
