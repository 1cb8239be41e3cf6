#include "update/ReceiveBuffer.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

using namespace std::chrono_literals;

const QByteArray kAck = QByteArray::fromHex("af");

TEST(ReceiveBuffer, AnAnswerThatStaysShortIsNotCompletedByTheOneBefore)
{
    ReceiveBuffer buffer;
    const auto sequence = buffer.beginSequence();
    for (const char *piece : {"af", "00", "000807"})
        buffer.receive(QByteArray::fromHex(piece));
    ASSERT_EQ(buffer.waitForVerdict(sequence, 0ms), Verdict::Ack);
    EXPECT_TRUE(buffer.completeChunk(sequence, 4, 0ms));
    EXPECT_EQ(buffer.byteAt(3), 8);
    buffer.receive(kAck);
    ASSERT_EQ(buffer.waitForVerdict(sequence, 0ms), Verdict::Ack);
    EXPECT_FALSE(buffer.completeChunk(sequence, 4, 1ms));
    EXPECT_EQ(buffer.byteAt(3), 0);
}

TEST(ReceiveBuffer, BytesBeyondItsSizeAreDropped)
{
    ReceiveBuffer buffer;
    const auto sequence = buffer.beginSequence();
    buffer.receive(kAck + QByteArray(400, '\7'));
    ASSERT_EQ(buffer.waitForVerdict(sequence, 0ms), Verdict::Ack);
    EXPECT_EQ(buffer.byteAt(ReceiveBuffer::kSize - 1), 7);
    buffer.splitChunk();
    buffer.receive(kAck);
    EXPECT_EQ(buffer.waitForVerdict(sequence, 0ms), Verdict::Ack);
    EXPECT_EQ(buffer.byteAt(1), 0);
    buffer.clearReceiveByte();
    EXPECT_EQ(buffer.byteAt(0), 0);
}

} // namespace
} // namespace vorn
