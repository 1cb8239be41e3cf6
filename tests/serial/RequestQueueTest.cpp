#include "serial/RequestQueue.h"

#include "serial/ORSSerialRequest.h"
#include "tests/serial/SerialPortFixture.h"

#include <thread>
#include <tuple>

namespace vorn {
namespace {

using namespace std::chrono_literals;

// Records a port's events about requests, which are named by their user information.
struct RequestDelegate : ORSSerialPortDelegate
{
    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceivePacketMatchingDescriptor(ORSSerialPort &, const QByteArray &packet,
                                                      const ORSSerialPacketDescriptorPtr &) override
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

struct FullDelegate : RequestDelegate
{
    void serialPortRequestDidTimeout(ORSSerialPort &, const ORSSerialRequestPtr &request) override
    {
        events += "timeout " + (request ? request->userInfo().toByteArray() : QByteArray("none"));
        if (onTimeout)
            onTimeout();
    }
    void serialPortWasClosed(ORSSerialPort &) override { events += "closed"; }
    std::function<void()> onTimeout;
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
    EXPECT_TRUE(m_port->sendRequest(request("c", "end")));
    EXPECT_EQ(m_port->pendingRequest(), first);
    EXPECT_EQ(m_port->queuedRequests().size(), 3);

    EXPECT_EQ(m_terminal.take(1), "a");
    m_terminal.send("..o");
    runEventLoopFor(20ms);
    m_terminal.send("k!o"); // ends the first answer and begins the second, around a packet
    EXPECT_EQ(m_terminal.take(1), "b");
    m_terminal.send("k!");
    EXPECT_EQ(m_terminal.take(17), "no answer wantedc");
    m_terminal.send("endend"); // the second answer belongs to no request
    expect(delegate, {"a=ok!", "packet k!o", "b=ok!", "c=end"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, MovesOnAfterATimeoutWhetherOrNotTheDelegateImplementsIt)
{
    FullDelegate implementing;
    open(implementing);
    const auto first = request("a", "ok", ORSSerialRequest::TimeInterval(1e-10)); // below 1 ns
    const auto second = request("b", "ok");
    implementing.onTimeout = [&] {
        std::this_thread::sleep_for(20ms); // the queue waits for the callback
        EXPECT_EQ(m_port->pendingRequest(), first);
        m_port->cancelQueuedRequest(second); // in time, since its turn comes after the callback
    };
    for (const auto &sent : {first, second, request("c", "ok")})
        m_port->sendRequest(sent);
    EXPECT_EQ(m_terminal.take(2), "ac");
    m_terminal.send("ok");
    expect(implementing, {"timeout a", "c=ok"});

    RequestDelegate other;
    m_port->setDelegate(&other);
    m_port->sendRequest(request("d", "ok", 50ms));
    m_port->sendRequest(request("e", "ok"));
    EXPECT_EQ(m_terminal.take(2), "de");
    m_terminal.send("ok");
    expect(other, {"e=ok"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, CancelsQueuedRequestsButNotThePendingOne)
{
    RequestDelegate delegate;
    open(delegate);
    const auto pending = request("a", "ok");
    const auto twice = request("b", "ok");
    const auto other = request("c", "ok");
    for (const auto &sent : {pending, twice, other, twice, pending})
        m_port->sendRequest(sent);
    for (const auto &cancelled : {twice, pending, request("unknown", "ok"), ORSSerialRequestPtr()})
        m_port->cancelQueuedRequest(cancelled);
    const QList<ORSSerialRequestPtr> left = {other, twice, pending};
    EXPECT_TRUE(eventually([&] { return m_port->queuedRequests() == left; }));
    m_port->cancelAllQueuedRequests();
    EXPECT_TRUE(eventually([&] { return m_port->queuedRequests().isEmpty(); }));
    EXPECT_EQ(m_port->pendingRequest(), pending);
    m_terminal.send("ok");
    expect(delegate, {"a=ok"});
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(m_terminal.take(), "a");
}

TEST_F(RequestQueueOnAPort, AnAnswerWhileItsTimeoutIsReportedAdvancesTheQueueTwice)
{
    FullDelegate delegate;
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
    FullDelegate delegate;
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
    FullDelegate delegate;
    m_port->setDelegate(&delegate);
    EXPECT_FALSE(m_port->sendRequest(request("a", "ok", 50ms))); // the port is closed
    EXPECT_TRUE(m_port->sendRequest(request("b", "ok", 50ms)));
    expect(delegate, {"timeout a", "timeout b"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, RequestsSurviveACloseUnlessTheDelegateImplementsIt)
{
    RequestDelegate other;
    open(other);
    m_port->sendRequest(request("a", "ok"));
    m_port->sendRequest(request("b", "ok"));
    m_port->close();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    runEventLoopFor(20ms);
    EXPECT_TRUE(m_port->pendingRequest());
    EXPECT_EQ(m_port->queuedRequests().size(), 1);

    FullDelegate implementing;
    open(implementing);
    EXPECT_EQ(m_port->queuedRequests().size(), 1);
    m_terminal.unplug();
    expect(implementing, {"closed"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, RequestsSentAfterTheCloseAreKept)
{
    const auto again = request("a", "ok"); // the same request before and after
    FullDelegate delegate;
    open(delegate);
    // The signal comes before serialPortWasClosed().
    QObject::connect(m_port.get(), &ORSSerialPort::fileDescriptorChanged, m_port.get(), [&] {
        if (m_port->isOpen())
            return;
        m_port->open();
        m_port->sendRequest(again);
        m_port->sendRequest(request("b", {}));
    });
    for (const bool wasBusy : {true, false}) {
        if (wasBusy) {
            m_port->sendRequest(again);
            m_port->sendRequest(request("forgotten", "ok"));
            EXPECT_EQ(m_terminal.take(1), "a");
        }
        m_port->close();
        EXPECT_EQ(m_terminal.take(1), "a");
        expect(delegate, {"closed"});
        runEventLoopFor(20ms); // for requests that would be dropped after the callback
        m_terminal.send("ok");
        EXPECT_EQ(m_terminal.take(1), "b");
        expect(delegate, {"closed", "a=ok"});
        EXPECT_TRUE(isIdle());
        delegate.events.clear();
    }
}

struct SilentHost : RequestQueueHost
{
    Lifetime::Token lifetime() override { return life.token(); }
    bool writeRequest(QByteArrayView) override { return true; }
    void requestWasAnswered(const ORSSerialRequestPtr &, const QByteArray &) override {}
    bool reportsTimeouts() override { return false; }
    void requestTimedOut(const ORSSerialRequestPtr &) override {}
    void pendingRequestDidChange() override {}
    void requestsQueueDidChange() override {}
    Lifetime life;
};

TEST(RequestQueue, AnAnswerStopsTheTimer)
{
    SerialQueue queue;
    SilentHost host;
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

// Every operation from several threads while the port closes and opens.
TEST_F(RequestQueueOnAPort, SurvivesManyThreadsThatSendCancelCloseAndOpen)
{
    struct CountingDelegate : FullDelegate
    {
        void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &,
                                                   const ORSSerialRequestPtr &answered) override
        {
            EXPECT_FALSE(answered->userInfo().toBool()) << "answered twice";
            answered->setUserInfo(true);
            ++count;
        }
        int count = 0;
    };
    CountingDelegate delegate;
    open(delegate);
    const auto answer = std::make_shared<ORSSerialPacketDescriptor>(QByteArray("\xAF"));
    std::vector<std::jthread> threads;
    const auto repeat = [&](std::chrono::microseconds pause, const std::function<void(int)> &job) {
        threads.emplace_back([pause, job](const std::stop_token &ended) {
            for (int turn = 0; !ended.stop_requested(); ++turn) {
                job(turn);
                std::this_thread::sleep_for(pause);
            }
        });
    };
    for (int sender = 0; sender < 4; ++sender)
        repeat(0us, [&](int) {
            m_port->sendRequest(ORSSerialRequest::requestWithDataToSend("x", false, 5ms, answer));
        });
    repeat(100us, [&](int turn) {
        m_port->cancelQueuedRequest(m_port->queuedRequests().value(turn % 8));
        if (turn % 200 == 0)
            m_port->cancelAllQueuedRequests();
        m_port->setNumberOfStopBits(turn % 2 ? 1 : 2);
    });
    repeat(1ms, [&](int turn) {
        m_port->setRTS(turn % 2 == 0);
        m_port->setBaudRate(turn % 3 ? 9600 : 2000000);
        m_port->setParity(turn % 2 ? 1 : 2);
        m_port->startListeningForPacketsMatchingDescriptor(answer);
        m_port->sendData("y");
        m_port->stopListeningForPacketsMatchingDescriptor(answer);
        if (turn % 64 == 0)
            m_port->setUsesRTSCTSFlowControl(turn % 128 == 0);
        m_port->open();
    });
    repeat(100us, [&](int) { // the device answers every byte
        const QByteArray answers(m_terminal.take().size(), '\xAF');
        std::ignore = ::write(m_terminal.master(), answers.constData(), size_t(answers.size()));
    });
    for (int turn = 0; turn < 60 || (delegate.count < 100 && turn < 6000); ++turn) {
        runEventLoopFor(20ms);
        m_port->close();
        m_port->open();
    }
    threads.clear();
    EXPECT_GE(delegate.count, 100);

    // In the end it works as before.
    m_port->close();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    m_terminal.take();
    m_port->open();
    EXPECT_TRUE(m_port->sendData("z"));
    EXPECT_TRUE(eventually([&] { return m_terminal.take().contains('z'); }));
}

} // namespace
} // namespace vorn
