#include "simulator/BootLoader.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace vorn {

namespace {

using Verdict = BootEvent::Verdict;

constexpr int kImageBytesPerFrame = 250;
constexpr int kCommandCount = 3; // count, code, complement of the code
constexpr int kHeaderCount = 9;  // count, load address, image length
constexpr std::uint32_t kLoadAddress = 0x08001800;

std::uint32_t bigEndian(std::span<const std::uint8_t, 4> bytes)
{
    return (std::uint32_t{bytes[0]} << 24U) | (std::uint32_t{bytes[1]} << 16U) |
           (std::uint32_t{bytes[2]} << 8U) | std::uint32_t{bytes[3]};
}

QString hex(std::uint32_t value, int digits = 2)
{
    return QString::number(value, 16).toUpper().rightJustified(digits, u'0');
}

QLatin1String nameOf(BootStep step)
{
    constexpr std::array<const char *, 6> kNames{"a sync byte",         "the connect command",
                                                 "the version query",   "the download command",
                                                 "the download header", "a data frame"};
    return QLatin1String(kNames.at(static_cast<std::size_t>(step)));
}

} // namespace

void BootLoader::powerOff()
{
    m_due = BootStep::Sync;
    m_released = false;
    m_filled = 0;
}

int BootLoader::dueCount() const
{
    if (m_due == BootStep::Header)
        return kHeaderCount;
    if (m_due != BootStep::Frame)
        return kCommandCount;
    return static_cast<int>(std::min<qint64>(m_declared - m_received, kImageBytesPerFrame)) + 1;
}

BootLoader::Taken BootLoader::take(std::span<const std::uint8_t> bytes)
{
    const std::uint8_t first = bytes.front();
    if (m_due == BootStep::Sync && first != boot::kSync) {
        const auto sync = std::find(bytes.begin(), bytes.end(), boot::kSync);
        const auto count = static_cast<std::size_t>(sync - bytes.begin());
        return {count, BootEvent{BootStep::Sync, Verdict::Ignored,
                                 QStringLiteral("%1 bytes before a sync byte, the first one %2")
                                     .arg(count)
                                     .arg(hex(first))}};
    }
    if (m_filled == 0) {
        if (first == boot::kSync && (m_due == BootStep::Sync || !m_released || dueCount() != first))
            return {1, beginExchange()};
        if (first == 0) {
            return {1, BootEvent{m_due, Verdict::Refused,
                                 QStringLiteral("a frame with the count 0 where %1 was due")
                                     .arg(nameOf(m_due))}};
        }
        m_frame[0] = first;
        m_early = !m_released;
    }

    const std::size_t length = std::size_t{m_frame[0]} + 1;
    const std::size_t count = std::min(bytes.size(), length - m_filled);
    std::copy_n(bytes.begin(), count, m_frame.begin() + static_cast<std::ptrdiff_t>(m_filled));
    m_filled += count;
    if (m_filled < length)
        return {count, std::nullopt};
    return {count, judge()};
}

BootEvent BootLoader::silence()
{
    const bool isSync = m_frame[m_filled - 1] == boot::kSync;
    QString error;
    if (m_filled > 1 || !isSync) {
        error = QStringLiteral("a frame with the count %1 stopped after %2 bytes, where %3 was due")
                    .arg(m_frame[0])
                    .arg(m_filled)
                    .arg(nameOf(m_due));
    }
    m_filled = 0;
    BootEvent event = isSync ? beginExchange() : BootEvent{m_due, Verdict::Ignored};
    event.error = error;
    return event;
}

BootEvent BootLoader::beginExchange()
{
    powerOff();
    m_due = BootStep::Connect;
    return {BootStep::Sync};
}

BootEvent BootLoader::judge()
{
    const QString problem = frameProblem();
    m_filled = 0;
    m_released = false;
    if (!problem.isEmpty())
        return {m_due, Verdict::Refused, problem};
    const QLatin1String name = nameOf(m_due);
    BootEvent event = accept();
    if (m_early)
        event.error = QStringLiteral("%1 came before it was released").arg(name);
    return event;
}

QString BootLoader::frameProblem() const
{
    const std::uint8_t count = m_frame[0];
    const std::uint8_t sum = std::accumulate(m_frame.begin(), m_frame.begin() + count,
                                             std::uint8_t{0}, std::bit_xor<std::uint8_t>());
    if (m_frame[count] != sum) {
        return QStringLiteral("the checksum %1 instead of %2 at the end of a frame with the count "
                              "%3, where %4 was due")
            .arg(hex(m_frame[count]), hex(sum))
            .arg(count)
            .arg(nameOf(m_due));
    }
    if (count != dueCount()) {
        return QStringLiteral("a frame with the count %1 where %2 with the count %3 was due")
            .arg(count)
            .arg(nameOf(m_due))
            .arg(dueCount());
    }
    if (m_due == BootStep::Header)
        return headerProblem();
    const auto code = static_cast<std::uint8_t>(m_due); // BootStep has the commands' codes
    if (m_due != BootStep::Frame && (m_frame[1] != code || m_frame[2] != 0xFF - code)) {
        return QStringLiteral("the command %1 %2 where %3 was due")
            .arg(hex(m_frame[1]), hex(m_frame[2]), nameOf(m_due));
    }
    return {};
}

QString BootLoader::headerProblem() const
{
    const std::span frame(m_frame);
    const std::uint32_t address = bigEndian(frame.subspan<1, 4>());
    const std::uint32_t length = bigEndian(frame.subspan<5, 4>());
    if (address != kLoadAddress)
        return QStringLiteral("the load address %1").arg(hex(address, 8));
    if (length == 0 || length > static_cast<std::uint64_t>(m_flashSize)) {
        return QStringLiteral("an image of %1 bytes for a flash of %2")
            .arg(length)
            .arg(m_flashSize);
    }
    return {};
}

BootEvent BootLoader::accept()
{
    BootEvent event{m_due};
    if (m_due == BootStep::Frame) {
        if (m_frame[0] <= kImageBytesPerFrame) {
            event.step = BootStep::Last;
            m_due = BootStep::Sync;
        }
        event.data = std::span(m_frame).subspan(1, m_frame[0] - std::size_t{1});
        event.frame = ++m_frames;
        m_received += static_cast<qint64>(event.data.size());
        return event;
    }
    if (m_due == BootStep::Header) {
        m_declared = bigEndian(std::span(m_frame).subspan<5, 4>());
        m_frames = 0;
        m_received = 0;
    }
    m_due = static_cast<BootStep>(static_cast<int>(m_due) + 1); // they are declared in their order
    return event;
}

} // namespace vorn
