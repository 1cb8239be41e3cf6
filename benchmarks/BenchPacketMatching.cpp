// In how many bytes a second of processor time packets are looked for, one byte at a time, in
// streams that are hard on each kind of descriptor. A line at 2 Mbaud brings 200,000.
#include "serial/PacketMatcher.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using vorn::PacketMatcher;

constexpr double LineRate = 200'000; // bytes/s at 2 Mbaud, 10 bits for a byte
constexpr std::chrono::milliseconds RunTime(100);
constexpr int Runs = 3;

struct Case
{
    const char *kind;
    const char *packet;
    const char *stream;
    QByteArray repeated;
    ORSSerialPacketDescriptorPtr (*descriptor)(quint64 maximumLength);
};

template <const char *Pattern>
ORSSerialPacketDescriptorPtr expression(quint64 maximumLength)
{
    return std::make_shared<const ORSSerialPacketDescriptor>(
        QRegularExpression(QString::fromLatin1(Pattern)), maximumLength);
}

ORSSerialPacketDescriptorPtr enclosed(quint64 maximumLength)
{
    return std::make_shared<const ORSSerialPacketDescriptor>(
        ORSSerialPacketDescriptor::PrefixSuffix{"!pos", ";"}, maximumLength);
}

// As long as the row's maximum length.
ORSSerialPacketDescriptorPtr exact(quint64 maximumLength)
{
    return std::make_shared<const ORSSerialPacketDescriptor>(
        QByteArray(static_cast<qsizetype>(maximumLength) - 1, 'A') + ';');
}

constexpr char Position[] = "!pos\\d+;";
constexpr char Line[] = "\\$.*\\r\\n";
constexpr char Setting[] = "^\\w+=\\d+\\r\\n$";
constexpr char Answer[] = ".*(OK|ERROR)\\r\\n";
constexpr char Block[] = "\\x02[^\\x03]{1,1000}\\x03";
constexpr char LookAhead[] = "!pos\\d+(?=;)";

std::vector<Case> cases()
{
    const QByteArray text = "The quick brown fox jumps over the lazy dog 0123456789 times! ";
    return {
        {"exact", "AA..A;", "nearly the packet", "A", exact},
        {"prefix/suffix", "!pos ;", "text", text, enclosed},
        {"prefix/suffix", "!pos ;", "suffixes only", ";", enclosed},
        {"prefix/suffix", "!pos ;", "prefixes' ends", "!s;", enclosed},
        {"prefix/suffix", "!pos ;", "packets", "!pos42;", enclosed},
        {"expression", Position, "text", text, expression<Position>},
        {"expression", Position, "digits after a start", "!pos1234567890123456789012345678901234",
         expression<Position>},
        {"expression", Position, "packets", "!pos42;", expression<Position>},
        {"expression", Line, "starts only", "$", expression<Line>},
        {"expression", Setting, "digits only", "1", expression<Setting>},
        {"expression", Answer, "text", text, expression<Answer>},
        {"expression", Block, "one start", '\x02' + QByteArray(5000, 'A'), expression<Block>},
        {"expression", Block, "starts only", "\x02", expression<Block>},
        {"look-ahead", LookAhead, "text", text, expression<LookAhead>},
    };
}

// The processor time of this thread: matching does nothing but compute.
std::chrono::nanoseconds processorTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

double bytesPerSecond(const Case &row, quint64 maximumLength)
{
    PacketMatcher matcher(row.descriptor(maximumLength));
    const QByteArray stream = row.repeated.repeated(2048 / row.repeated.size() + 1);
    for (const char byte : stream)
        matcher.append(byte); // the buffer is full from here on
    double best = 0;
    for (int run = 0; run < Runs; ++run) {
        qint64 bytes = 0;
        const auto start = processorTime();
        auto now = start;
        for (; now - start < RunTime; now = processorTime()) {
            for (const char byte : stream)
                matcher.append(byte);
            bytes += stream.size();
        }
        const std::chrono::duration<double> taken = now - start;
        best = std::max(best, static_cast<double>(bytes) / taken.count());
    }
    return best;
}

} // namespace

int main()
{
    std::printf("Packets looked for, one byte at a time, per second of processor time,\n"
                "against the rate of a line at 2 Mbaud\n\n");
    std::printf("%-14s %-24s %-22s %8s %12s %9s\n", "kind", "packet", "stream", "maximum",
                "bytes/s", "x line");
    for (const Case &row : cases()) {
        for (const quint64 maximumLength : {64, 256, 1024}) {
            const double rate = bytesPerSecond(row, maximumLength);
            std::printf("%-14s %-24s %-22s %8llu %12.0f %9.1f\n", row.kind, row.packet, row.stream,
                        maximumLength, rate, rate / LineRate);
        }
    }
}
