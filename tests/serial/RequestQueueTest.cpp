// Requests through a port on a pseudo-terminal, and the queue against a plain model of it.
#include "serial/RequestQueue.h"

#include "serial/ORSSerialRequest.h"
#include "tests/serial/SerialPortFixture.h"

#include <deque>
#include <random>

namespace vorn {
namespace {

using namespace std::chrono_literals;

// Keeps what a port told of its requests, by the requests' user information.
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
    void serialPortWasClosed(ORSSerialPort &) override { events += "closed"; }
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
        port->setDelegate(&delegate);
        port->open();
        ASSERT_TRUE(port->isOpen());
    }
    static void expect(RequestDelegate &delegate, const QByteArrayList &expected)
    {
        eventually([&] { return delegate.events.size() >= expected.size(); });
        EXPECT_EQ(delegate.events.join(", ").toStdString(), expected.join(", ").toStdString());
    }
    bool isIdle() const
    {
        return eventually(
            [&] { return !port->pendingRequest() && port->queuedRequests().isEmpty(); });
    }

    TestTerminal terminal;
    ORSSerialPortPtr port = ORSSerialPort::serialPortWithDevice(terminal.device());
};

TEST_F(RequestQueueOnAPort, SendsOneAfterTheOtherWhateverPiecesTheAnswersComeIn)
{
    RequestDelegate delegate;
    open(delegate);
    port->startListeningForPacketsMatchingDescriptor(
        std::make_shared<ORSSerialPacketDescriptor>(QByteArray("k!o")));
    const auto first = request("a", "ok!");
    EXPECT_TRUE(port->sendRequest(first));
    EXPECT_TRUE(port->sendRequest(request("b", "ok!")));
    EXPECT_TRUE(port->sendRequest(request("no answer wanted", {})));
    EXPECT_TRUE(port->sendRequest(request("c", "ok!")));
    EXPECT_EQ(port->pendingRequest(), first);
    EXPECT_EQ(port->queuedRequests().size(), 3);

    EXPECT_EQ(terminal.take(1), "a");
    terminal.send("..o");
    runEventLoopFor(20ms);
    terminal.send("k!o"); // ends the first answer and begins the second, around a packet
    EXPECT_EQ(terminal.take(1), "b");
    terminal.send("k!");
    EXPECT_EQ(terminal.take(17), "no answer wantedc");
    terminal.send("ok!ok!"); // answered twice: the second one is nobody's
    expect(delegate, {"a=ok!", "packet k!o", "b=ok!", "packet k!o", "c=ok!", "packet k!o"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, MovesOnAfterATimeoutWithAndWithoutSomebodyWhoHears)
{
    TimeoutDelegate hears;
    open(hears);
    port->sendRequest(request("a", "ok", 50ms));
    port->sendRequest(request("b", "ok"));
    expect(hears, {"timeout a"});
    EXPECT_EQ(terminal.take(2), "ab");
    terminal.send("ok");
    expect(hears, {"timeout a", "b=ok"});

    RequestDelegate doesNot;
    port->setDelegate(&doesNot);
    port->sendRequest(request("c", "ok", 50ms));
    port->sendRequest(request("d", "ok"));
    EXPECT_EQ(terminal.take(2), "cd");
    terminal.send("ok");
    expect(doesNot, {"d=ok"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, AnAnswerWhileItsTimeoutIsToldOfMovesTheQueueOnTwice)
{
    TimeoutDelegate delegate;
    open(delegate);
    const auto second = request("b", "ok");
    delegate.onTimeout = [&] {
        terminal.send("ok"); // late, but before the queue has moved on
        while (port->pendingRequest() != second)
            std::this_thread::yield();
    };
    port->sendRequest(request("a", "ok", 20ms));
    port->sendRequest(second);
    port->sendRequest(request("c", "ok"));
    EXPECT_EQ(terminal.take(3), "abc");
    terminal.send("ok");
    expect(delegate, {"timeout a", "a=ok", "c=ok"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, ATimerOutlivesARequestThatExpectsNoAnswer)
{
    TimeoutDelegate delegate;
    open(delegate);
    port->sendRequest(request("a", {}, 50ms));
    EXPECT_TRUE(isIdle());
    expect(delegate, {"timeout none"});
    port->sendRequest(request("b", {}, 50ms));
    port->sendRequest(request("c", "ok"));
    expect(delegate, {"timeout none", "timeout c"});
    EXPECT_TRUE(isIdle());
}

TEST_F(RequestQueueOnAPort, AFailedWriteStaysPendingUntilItsTimeout)
{
    TimeoutDelegate delegate;
    port->setDelegate(&delegate);
    const auto second = request("b", "ok");
    EXPECT_FALSE(port->sendRequest(request("a", "ok", 50ms))); // the port is closed
    EXPECT_TRUE(port->sendRequest(second));
    expect(delegate, {"timeout a"});
    EXPECT_TRUE(eventually([&] { return port->pendingRequest() == second; }));
}

TEST_F(RequestQueueOnAPort, RequestsSurviveACloseUnlessTheDelegateHearsOfIt)
{
    RequestDelegate deaf;
    open(deaf);
    port->sendRequest(request("a", "ok"));
    port->sendRequest(request("b", "ok"));
    port->close();
    EXPECT_TRUE(eventually([&] { return !port->isOpen(); }));
    runEventLoopFor(20ms);
    EXPECT_TRUE(port->pendingRequest());
    EXPECT_EQ(port->queuedRequests().size(), 1);

    ClosingDelegate hears;
    open(hears);
    EXPECT_EQ(port->queuedRequests().size(), 1);
    terminal.unplug();
    expect(hears, {"closed"});
    EXPECT_TRUE(isIdle());
}

// The queue's world without a line: writes succeed or fail as told.
class ModelHost : public RequestQueueHost
{
public:
    std::weak_ptr<const void> lifetime() override { return m_life; }
    bool writeRequest(QByteArrayView) override { return true; }
    void requestWasAnswered(const ORSSerialRequestPtr &answered, const QByteArray &) override
    {
        answers.push_back(answered);
    }
    bool hearsOfTimeouts() override { return false; }
    void requestTimedOut(const ORSSerialRequestPtr &, std::function<void()>) override {}
    void pendingRequestDidChange() override {}
    void requestsQueueDidChange() override {}

    std::vector<ORSSerialRequestPtr> answers;

private:
    const std::shared_ptr<const char> m_life = std::make_shared<char>();
};

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
    int sent = 0;
    while (sent < 100000) {
        const auto dice = static_cast<unsigned>(random() % 100);
        if (dice < 45) {
            const auto next = ORSSerialRequest::requestWithDataToSend(
                "x", {}, dice % 2 ? 3600s : 0s, dice < 38 ? answer : nullptr);
            ++sent;
            all.push_back(next);
            EXPECT_TRUE(requests.reallySendRequest(next));
            model.push_back(next);
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
            if (!model.empty())
                model.resize(1);
        }
        ASSERT_EQ(requests.pendingRequest(), model.empty() ? nullptr : model.front());
        ASSERT_EQ(static_cast<size_t>(requests.queuedRequests().size()),
                  model.empty() ? 0 : model.size() - 1);
    }
    EXPECT_EQ(host.answers, expected);
}

TEST_F(RequestQueueOnAPort, SurvivesManyThreadsThatSendCancelCloseAndOpen)
{
    class CountingDelegate : public ORSSerialPortDelegate
    {
    public:
        void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
        void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &,
                                                   const ORSSerialRequestPtr &answered) override
        {
            EXPECT_FALSE(answered->userInfo().toBool()) << "answered twice";
            answered->setUserInfo(true);
            ++count;
        }
        void serialPortRequestDidTimeout(ORSSerialPort &, const ORSSerialRequestPtr &) override {}
        void serialPortWasClosed(ORSSerialPort &) override {}
        int count = 0;
    };
    CountingDelegate delegate;
    open(delegate);
    std::atomic<bool> done = false;
    const auto answer = std::make_shared<ORSSerialPacketDescriptor>(QByteArray("\xAF"));
    std::mutex lastMutex;
    ORSSerialRequestPtr last;

    std::vector<std::thread> threads;
    const auto repeat = [&](int threadCount, const std::function<void(int)> &job) {
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back([&done, job] {
                for (int turn = 0; !done; ++turn)
                    job(turn);
            });
        }
    };
    repeat(4, [&](int) {
        const auto next = ORSSerialRequest::requestWithDataToSend("x", false, 5ms, answer);
        {
            const std::lock_guard lock(lastMutex);
            last = next;
        }
        port->sendRequest(next);
    });
    repeat(2, [&](int turn) {
        ORSSerialRequestPtr victim;
        {
            const std::lock_guard lock(lastMutex);
            victim = last;
        }
        port->cancelQueuedRequest(victim);
        if (turn % 200 == 0)
            port->cancelAllQueuedRequests();
        std::this_thread::sleep_for(100us);
    });
    repeat(1, [&](int) { // the device, which answers every byte
        std::array<char, 256> bytes{};
        pollfd waiting{terminal.master(), POLLIN, 0};
        if (::poll(&waiting, 1, 10) <= 0)
            return;
        const ssize_t got = ::read(terminal.master(), bytes.data(), bytes.size());
        for (ssize_t n = 0; n < got; ++n)
            std::ignore = ::write(terminal.master(), "\xAF", 1);
        if (got <= 0) // nobody has the terminal open
            std::this_thread::sleep_for(1ms);
    });
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (std::chrono::steady_clock::now() < end) {
        runEventLoopFor(50ms);
        port->close();
        EXPECT_TRUE(eventually([&] { return !port->isOpen(); }));
        port->open();
        EXPECT_TRUE(port->isOpen());
    }
    done = true;
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_GT(delegate.count, 100);
}

} // namespace
} // namespace vorn
