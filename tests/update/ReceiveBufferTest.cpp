#include "update/ReceiveBuffer.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

using namespace std::chrono_literals;

const QByteArray kAck = QByteArray::fromHex("af");

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
