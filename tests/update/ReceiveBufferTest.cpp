#include "update/ReceiveBuffer.h"

#include <gtest/gtest.h>

#include <thread>

namespace vorn {
namespace {

using namespace std::chrono_literals;

const QByteArray kAck = QByteArray::fromHex("af");
const QByteArray kNak = QByteArray::fromHex("fc");

class ReceiveBufferTest : public testing::Test
{
protected:
    Verdict wait(std::chrono::milliseconds limit = 0ms)
    {
        buffer.clearReceiveByte();
        return buffer.waitForVerdict(sequence, limit);
    }

    ReceiveBuffer buffer;
    const ReceiveBuffer::Sequence sequence = buffer.beginSequence();
};

TEST_F(ReceiveBufferTest, EachAnswerCountsOnceAndForTheFrameBeforeItOnly)
{
    for (const QByteArray &chunk : {QByteArray(), QByteArray("noise"), kAck + kNak, kAck})
        buffer.receive(chunk);
    ASSERT_EQ(wait(), Verdict::Ack);
    buffer.splitChunk();
    EXPECT_EQ(wait(), Verdict::Nak) << "before what came later";
    buffer.splitChunk();
    EXPECT_EQ(wait(), Verdict::Ack);
    EXPECT_EQ(wait(), Verdict::Timeout);
    buffer.receive(kAck);
    EXPECT_TRUE(buffer.frameGoesOut(sequence));
    EXPECT_EQ(wait(), Verdict::Timeout);
}

TEST_F(ReceiveBufferTest, AnAnswerThatStaysShortIsNotCompletedByTheOneBefore)
{
    for (const char *piece : {"af", "00", "000807"})
        buffer.receive(QByteArray::fromHex(piece));
    ASSERT_EQ(wait(), Verdict::Ack);
    EXPECT_TRUE(buffer.completeChunk(sequence, 4, 0ms));
    EXPECT_EQ(buffer.byteAt(3), 8);
    buffer.receive(kAck);
    ASSERT_EQ(wait(), Verdict::Ack);
    EXPECT_FALSE(buffer.completeChunk(sequence, 4, 1ms));
    EXPECT_EQ(buffer.byteAt(3), 0);
}

TEST_F(ReceiveBufferTest, ANewSequenceAbandonsTheOneThatWaits)
{
    std::thread successor([&] { buffer.beginSequence(); });
    EXPECT_EQ(wait(20s), Verdict::Abandoned);
    successor.join();
    EXPECT_FALSE(buffer.frameGoesOut(sequence));
    buffer.unlessSucceeded(sequence, [] { ADD_FAILURE() << "the line is another one's"; });

    const auto last = buffer.beginSequence();
    buffer.abandonSequence();
    EXPECT_FALSE(buffer.isCurrent(last));
    bool acted = false;
    buffer.unlessSucceeded(last, [&] { acted = true; });
    EXPECT_TRUE(acted) << "nobody else puts the line back";
}

TEST_F(ReceiveBufferTest, ALostLinkEndsTheWaitBehindWhatArrivedBefore)
{
    buffer.receive(kAck);
    std::thread unplug([&] { buffer.linkWasLost(); });
    EXPECT_EQ(wait(20s), Verdict::Ack);
    EXPECT_EQ(wait(20s), Verdict::LinkLost);
    unplug.join();

    const auto next = buffer.beginSequence();
    EXPECT_EQ(buffer.waitForVerdict(next, 0ms), Verdict::Timeout) << "the next one has a new link";
}

TEST_F(ReceiveBufferTest, BytesBeyondItsSizeAreDropped)
{
    buffer.receive(kAck + QByteArray(400, '\7'));
    ASSERT_EQ(wait(), Verdict::Ack);
    EXPECT_EQ(buffer.byteAt(ReceiveBuffer::kSize - 1), 7);
    buffer.splitChunk();
    buffer.receive(kAck);
    EXPECT_EQ(wait(), Verdict::Ack);
    EXPECT_EQ(buffer.byteAt(1), 0);
    buffer.clearReceiveByte();
    EXPECT_EQ(buffer.byteAt(0), 0);
}

} // namespace
} // namespace vorn
