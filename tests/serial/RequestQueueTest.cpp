// Requests through a port on a pseudo-terminal, and the queue against a plain model of it.
#include "serial/RequestQueue.h"

#include "platform/ThreadName.h"
#include "serial/ORSSerialRequest.h"
#include "tests/serial/SerialPortFixture.h"
#include "tests/support/ThreadWatch.h"

#include <deque>
#include <random>

namespace vorn {
namespace {

using namespace std::chrono_literals;

// Records a port's events about requests, which are named by their user information.
class RequestDelegate : public ORSSerialPortDelegate
{
public:
    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceivePacketMatchingDescriptor(
        ORSSerialPort &, const QByteArray &packet,
        const std::shared_ptr<const ORSSerialPacketDescriptor> &) override
    {
        events += "packet " + packet;
    }
    void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &response,
                                               const ORSSerialRequestPtr &request) override
    {
        events += request->userInfo().toByteArray() + "=" + response;
    }
    QByteArrayList events;
};

class TimeoutDelegate : public RequestDelegate
{
public:
    void serialPortRequestDidTimeout(ORSSerialPort &, const ORSSerialRequestPtr &request) override
    {
        events += "timeout " + (request ? request->userInfo().toByteArray() : QByteArray("none"));
        if (onTimeout)
            onTimeout();
    }
    std::function<void()> onTimeout;
};

class ClosingDelegate : public RequestDelegate
{
public:
    void serialPortWasClosed(ORSSerialPort &) override
    {
        events += "closed";
        if (onClosed)
            onClosed();
    }
    std::function<void()> onClosed;
};

ORSSerialRequestPtr request(const QByteArray &name, const QByteArray &answer,
                            ORSSerialRequest::TimeInterval timeout = 0s)
{
    return ORSSerialRequest::requestWithDataToSend(
        name, name, timeout,
        answer.isEmpty() ? nullptr : std::make_shared<ORSSerialPacketDescriptor>(answer));
}

class RequestQueueOnAPort : public testing::Test
{
protected:
    template <typename Delegate>
    void open(Delegate &delegate)
    {
        m_port->setDelegate(&delegate);
        m_port->open();
        ASSERT_TRUE(m_port->isOpen());
    }
    static void expect(RequestDelegate &delegate, const QByteArrayList &expected)
    {
        eventually([&] { return delegate.events.size() >= expected.size(); });
        EXPECT_EQ(delegate.events.join(", ").toStdString(), expected.join(", ").toStdString());
    }
    bool isIdle() const
    {
        return eventually(
            [&] { return !m_port->pendingRequest() && m_port->queuedRequests().isEmpty(); });
    }

    TestTerminal m_terminal;
    ORSSerialPortPtr m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device());
};

TEST_F(RequestQueueOnAPort, SendsOneAtATimeHoweverTheAnswersAreSplit)
{
    RequestDelegate delegate;
    open(delegate);
    m_port->startListeningForPacketsMatchingDescriptor(
        std::make_shared<ORSSerialPacketDescriptor>(QByteArray("k!o")));
    const auto first = request("a", "ok!");
    EXPECT_TRUE(m_port->sendRequest(first));
    EXPECT_TRUE(m_port->sendRequest(request("b", "ok!")));
    EXPECT_TRUE(m_port->sendRequest(request("no answer wanted", {})));
    EXPECT_TRUE(m_port->sendRequest(request("c", "ok!")));
    EXPECT_EQ(m_port->pendingRequest(), first);
    EXPECT_EQ(m_port->queuedRequests().size(), 3);

    EXPECT_EQ(m_terminal.take(1), "a");
    m_terminal.send("..o");
    runEventLoopFor(20ms);
    m_terminal.send("k!o"); // ends the first answer and begins the second, around a packet
    EXPECT_EQ(m_terminal.take(1), "b");
    m_terminal.send("k!");
    EXPECT_EQ(m_terminal.take(17), "no answer wantedc");
    m_terminal.send("ok!ok!"); // the second answer belongs to no request
    expect(delegate, {"a=ok!", "packet k!o", "b=ok!", "packet k!o", "c=ok!", "packet k!o"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, MovesOnAfterATimeoutWhetherOrNotTheDelegateImplementsIt)
{
    TimeoutDelegate hears;
    open(hears);
    const auto first = request("a", "ok", ORSSerialRequest::TimeInterval(1e-10)); // below 1 ns
    const auto second = request("b", "ok");
    enum { Idle, Busy, Released };
    std::atomic<int> matching = Idle;
    const auto keepsQueueBusy =
        std::make_shared<ORSSerialPacketDescriptor>(8, QVariant(), [&](QByteArrayView) {
            int expected = Idle;
            if (matching.compare_exchange_strong(expected, Busy)) {
                matching.notify_all();
                matching.wait(Busy);
            }
            return false;
        });
    m_port->startListeningForPacketsMatchingDescriptor(keepsQueueBusy);
    hears.onTimeout = [&] {
        EXPECT_EQ(m_port->pendingRequest(), first);
        m_terminal.send("x");
        matching.wait(Idle);
        // Not too late, since the next request is sent by a job that is posted after this callback.
        m_port->cancelQueuedRequest(second);
        QTimer::singleShot(0, qApp, [&] {
            matching = Released;
            matching.notify_all();
        });
    };
    for (const auto &sent : {first, second, request("c", "ok")})
        m_port->sendRequest(sent);
    EXPECT_EQ(m_terminal.take(2), "ac");
    m_terminal.send("ok");
    expect(hears, {"timeout a", "c=ok"});
    m_port->stopListeningForPacketsMatchingDescriptor(keepsQueueBusy);

    RequestDelegate doesNot;
    m_port->setDelegate(&doesNot);
    m_port->sendRequest(request("d", "ok", 50ms));
    m_port->sendRequest(request("e", "ok"));
    EXPECT_EQ(m_terminal.take(2), "de");
    m_terminal.send("ok");
    expect(doesNot, {"e=ok"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, AnAnswerWhileItsTimeoutIsReportedAdvancesTheQueueTwice)
{
    TimeoutDelegate delegate;
    open(delegate);
    const auto second = request("b", "ok");
    delegate.onTimeout = [&] {
        m_terminal.send("ok"); // late, but before the queue has moved on
        while (m_port->pendingRequest() != second)
            std::this_thread::yield();
    };
    m_port->sendRequest(request("a", "ok", 20ms));
    m_port->sendRequest(second);
    m_port->sendRequest(request("c", "ok"));
    EXPECT_EQ(m_terminal.take(3), "abc");
    m_terminal.send("ok");
    expect(delegate, {"timeout a", "a=ok", "c=ok"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, ATimerOutlivesARequestThatExpectsNoAnswer)
{
    TimeoutDelegate delegate;
    open(delegate);
    m_port->sendRequest(request("a", {}, 50ms));
    EXPECT_TRUE(isIdle());
    expect(delegate, {"timeout none"});
    m_port->sendRequest(request("b", {}, 50ms));
    m_port->sendRequest(request("c", "ok"));
    expect(delegate, {"timeout none", "timeout c"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, AFailedWriteStaysPendingUntilItsTimeout)
{
    TimeoutDelegate delegate;
    m_port->setDelegate(&delegate);
    const auto second = request("b", "ok");
    EXPECT_FALSE(m_port->sendRequest(request("a", "ok", 50ms))); // the port is closed
    EXPECT_TRUE(m_port->sendRequest(second));
    expect(delegate, {"timeout a"});
    EXPECT_TRUE(eventually([&] { return m_port->pendingRequest() == second; }));
}

TEST_F(RequestQueueOnAPort, RequestsSurviveACloseUnlessTheDelegateImplementsIt)
{
    RequestDelegate deaf;
    open(deaf);
    m_port->sendRequest(request("a", "ok"));
    m_port->sendRequest(request("b", "ok"));
    m_port->close();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    runEventLoopFor(20ms);
    EXPECT_TRUE(m_port->pendingRequest());
    EXPECT_EQ(m_port->queuedRequests().size(), 1);

    ClosingDelegate hears;
    open(hears);
    EXPECT_EQ(m_port->queuedRequests().size(), 1);
    m_terminal.unplug();
    expect(hears, {"closed"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, RequestsSentAfterTheCloseAreKept)
{
    const auto again = request("a", "ok"); // the same request twice, before and after
    bool byCallback = false;
    const auto reopen = [&](bool isMeant) {
        if (m_port->isOpen() || !isMeant)
            return;
        m_port->open();
        m_port->sendRequest(again);
        m_port->sendRequest(request("b", {}));
    };
    ClosingDelegate delegate;
    delegate.onClosed = [&] { reopen(byCallback); };
    QObject::connect(m_port.get(), &ORSSerialPort::fileDescriptorChanged, m_port.get(),
                     [&] { reopen(!byCallback); });
    open(delegate);
    byCallback = true;
    for (const bool isLast : {false, true}) {
        m_port->sendRequest(again);
        m_port->sendRequest(request("forgotten", "ok"));
        EXPECT_EQ(m_terminal.take(1), "a");
        delegate.events.clear();
        m_port->close();
        EXPECT_EQ(m_terminal.take(1), "a");
        m_terminal.send("ok");
        EXPECT_EQ(m_terminal.take(1), "b");
        expect(delegate, {"closed", "a=ok"});
        EXPECT_TRUE(isIdle());
        byCallback = isLast;
    }
}

// A host without a line: every write succeeds, time-outs are not reported.
class ModelHost : public RequestQueueHost
{
public:
    Lifetime::Token lifetime() override { return m_life.token(); }
    bool writeRequest(QByteArrayView) override { return true; }
    void requestWasAnswered(const ORSSerialRequestPtr &answered, const QByteArray &) override
    {
        answers.push_back(answered);
    }
    bool reportsTimeouts() override { return false; }
    void requestTimedOut(const ORSSerialRequestPtr &) override {}
    void pendingRequestDidChange() override {}
    void requestsQueueDidChange() override {}

    std::vector<ORSSerialRequestPtr> answers;

private:
    Lifetime m_life;
};

TEST(RequestQueueModel, AnAnswerStopsTheTimer)
{
    SerialQueue queue;
    ModelHost host;
    RequestQueue requests(queue, host);
    const auto next = request("b", "!");
    // In one job, for which the timer has to wait.
    queue.postAndWait([&] {
        requests.reallySendRequest(request("a", "!", 1ns));
        requests.checkResponseToPendingRequestAndContinueIfValidWithReceivedByte('!');
        requests.reallySendRequest(next);
        std::this_thread::sleep_for(50ms);
    });
    queue.postAndWait([&] { EXPECT_EQ(requests.pendingRequest(), next); });
}

TEST(RequestQueueModel, AnswersEachOf100000RequestsOnceOrNotAtAllAsAPlainQueueDoes)
{
    SerialQueue queue;
    ModelHost host;
    RequestQueue requests(queue, host);
    // The model: the first entry is pending.
    std::deque<ORSSerialRequestPtr> model;
    std::vector<ORSSerialRequestPtr> expected;
    const auto dropUnanswerable = [&] {
        while (!model.empty() && !model.front()->responseDescriptor())
            model.pop_front();
    };
    const auto answer = std::make_shared<ORSSerialPacketDescriptor>(QByteArray("\xAF"));
    std::mt19937 random(20261121);
    std::vector<ORSSerialRequestPtr> all;
    while (all.size() < 100000) {
        const auto dice = static_cast<unsigned>(random() % 100);
        if (dice < 45) {
            const auto next = ORSSerialRequest::requestWithDataToSend(
                "x", {}, dice % 2 ? 3600s : 0s, dice < 38 ? answer : nullptr);
            const bool sendsAgain = dice == 0 && !model.empty();
            all.push_back(sendsAgain ? model.front() : next);
            EXPECT_TRUE(requests.reallySendRequest(all.back()));
            model.push_back(all.back());
            if (model.size() == 1)
                dropUnanswerable();
        } else if (dice < 90) {
            const char byte = dice % 9 ? '\xAF' : 'z';
            requests.checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(byte);
            if (byte == '\xAF' && !model.empty()) {
                expected.push_back(model.front());
                model.pop_front();
                dropUnanswerable();
            }
        } else if (dice < 99 && !all.empty()) {
            const auto &victim = all[all.size() - 1 - random() % std::min<size_t>(all.size(), 8)];
            requests.cancelQueuedRequest(victim);
            const auto found = std::find(model.begin(), model.end(), victim);
            if (found != model.end() && found != model.begin())
                model.erase(found);
        } else if (random() % 20 == 0) {
            requests.cancelAllQueuedRequests();
            model.resize(std::min<size_t>(model.size(), 1));
        }
        ASSERT_EQ(requests.pendingRequest(), model.empty() ? nullptr : model.front());
        ASSERT_EQ(static_cast<size_t>(requests.queuedRequests().size()),
                  model.empty() ? 0 : model.size() - 1);
    }
    EXPECT_EQ(host.answers, expected);
}

// All operations from several threads while the port closes and opens.
TEST_F(RequestQueueOnAPort, SurvivesManyThreadsThatSendCancelCloseAndOpen)
{
    struct CountingDelegate : TimeoutDelegate
    {
        void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &,
                                                   const ORSSerialRequestPtr &answered) override
        {
            EXPECT_FALSE(answered->userInfo().toBool()) << "answered twice";
            answered->setUserInfo(true);
            ++count;
        }
        void serialPortWasClosed(ORSSerialPort &) override {}
        int count = 0;
    };
    CountingDelegate delegate;
    open(delegate);
    const ThreadWatch watch(120s);
    std::atomic<bool> done = false;
    const auto answer = std::make_shared<ORSSerialPacketDescriptor>(QByteArray("\xAF"));
    std::mutex lastMutex;
    ORSSerialRequestPtr last;

    std::vector<std::jthread> threads;
    const auto repeat = [&](const char *name, const std::function<void(int)> &job) {
        threads.emplace_back([&done, name, job] {
            const ThreadName itsName(name);
            for (int turn = 0; !done; ++turn)
                job(turn);
        });
    };
    for (const char *name : {"sender 1", "sender 2", "sender 3", "sender 4"})
        repeat(name, [&](int) {
            const auto next = ORSSerialRequest::requestWithDataToSend("x", false, 5ms, answer);
            {
                const std::lock_guard lock(lastMutex);
                last = next;
            }
            m_port->sendRequest(next);
        });
    for (const char *name : {"canceller 1", "canceller 2"})
        repeat(name, [&](int turn) {
            ORSSerialRequestPtr victim;
            {
                const std::lock_guard lock(lastMutex);
                victim = last;
            }
            m_port->cancelQueuedRequest(victim);
            if (turn % 200 == 0)
                m_port->cancelAllQueuedRequests();
            std::this_thread::sleep_for(100us);
        });
    repeat("setter", [&](int turn) {
        m_port->setRTS(turn % 2 == 0);
        m_port->setBaudRate(turn % 3 ? 9600 : 2000000);
        m_port->setParity(turn % 2 ? 1 : 2);
        m_port->sendData("y");
        if (turn % 64 == 0)
            m_port->setUsesRTSCTSFlowControl(turn % 128 == 0);
        m_port->open();
        std::this_thread::sleep_for(1ms);
    });
    repeat("device", [&](int) { // which answers every byte
        std::array<char, 256> bytes{};
        pollfd waiting{m_terminal.master(), POLLIN, 0};
        if (::poll(&waiting, 1, 10) <= 0)
            return;
        const ssize_t got = ::read(m_terminal.master(), bytes.data(), bytes.size());
        for (ssize_t n = 0; n < got; ++n)
            std::ignore = ::write(m_terminal.master(), "\xAF", 1);
        if (got <= 0) // nobody has the terminal open
            std::this_thread::sleep_for(1ms);
    });
    // The port may also be closed by the setter's change of the flow control.
    for (int turn = 0; turn < 60 || (delegate.count < 100 && !watch.isOver()); ++turn) {
        runEventLoopFor(20ms);
        m_port->close();
        m_port->open();
    }
    done = true;
    threads.clear();
    EXPECT_GE(delegate.count, 100);

    // In the end it works as before.
    m_port->close();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    m_port->cancelAllQueuedRequests();
    m_terminal.take();
    m_port->open();
    EXPECT_TRUE(m_port->sendData("z"));
    EXPECT_TRUE(eventually([&] { return m_terminal.take().contains('z'); }));
}

} // namespace
} // namespace vorn
