#include "ziparchive/CentralDirectory.h"

#include "ziparchive/ArchiveFile.h"

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <numeric>

namespace vorn {

namespace {

constexpr QByteArrayView kEntrySignature("PK\x01\x02", 4);
constexpr QByteArrayView kEndSignature("PK\x05\x06", 4);
constexpr QByteArrayView kEnd64Signature("PK\x06\x06", 4);
constexpr QByteArrayView kLocator64Signature("PK\x06\x07", 4);
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocator64Size = 20;
// How far from the end of the file minizip looks for the end record.
constexpr quint64 kEndSearch = 0xFFFF;
// In place of a size that is in a zip64 field; such entries cannot be opened.
constexpr quint32 kUnknownSize = 0xFFFFFFFF;

struct EndRecord
{
    quint64 position = 0;
    quint64 count = 0;
    quint64 directorySize = 0;
    quint64 directoryOffset = 0;
};

template <typename Number>
Number numberAt(QByteArrayView record, qsizetype offset)
{
    return qFromLittleEndian<Number>(record.data() + offset);
}

template <std::size_t Size>
std::optional<std::array<char, Size>> recordAt(ArchiveFile &file, quint64 position,
                                               QByteArrayView signature)
{
    std::array<char, Size> record = {};
    file.seek(position);
    if (file.read(record) != Size || !QByteArrayView(record).startsWith(signature))
        return std::nullopt;
    return record;
}

// Archives written to a pipe have a 64-bit end record, however small they are; it takes precedence
// over the ordinary one. Its locator is looked for wherever minizip finds it, even in a comment:
// the directory that is checked must be the one that is unpacked.
std::optional<EndRecord> findEnd64(ArchiveFile &file, QByteArrayView tail, quint64 tailPosition)
{
    const qsizetype found = tail.lastIndexOf(kLocator64Signature);
    if (found < 0)
        return std::nullopt;
    const auto locator = recordAt<kLocator64Size>(file, tailPosition + static_cast<quint64>(found),
                                                  kLocator64Signature);
    if (!locator || numberAt<quint32>(*locator, 4) != 0 || numberAt<quint32>(*locator, 16) != 1)
        return std::nullopt;
    const auto position = numberAt<quint64>(*locator, 8);
    const auto record = recordAt<kEnd64Size>(file, position, kEnd64Signature);
    if (!record)
        return std::nullopt;
    return EndRecord{.position = position,
                     .count = numberAt<quint64>(*record, 32),
                     .directorySize = numberAt<quint64>(*record, 40),
                     .directoryOffset = numberAt<quint64>(*record, 48)};
}

std::optional<EndRecord> findEnd(ArchiveFile &file)
{
    const quint64 start = file.size() - std::min(file.size(), kEndSearch);
    QByteArray tail(static_cast<qsizetype>(file.size() - start), Qt::Uninitialized);
    file.seek(start);
    if (file.read({tail.data(), static_cast<std::size_t>(tail.size())}) !=
        static_cast<std::size_t>(tail.size()))
        return std::nullopt;
    const qsizetype found = tail.lastIndexOf(kEndSignature);
    if (found < 0 || static_cast<std::size_t>(tail.size() - found) < kEndSize)
        return std::nullopt;
    const quint64 position = start + static_cast<quint64>(found);
    if (const auto end64 = findEnd64(file, tail, start))
        return end64;
    const QByteArrayView record = QByteArrayView(tail).sliced(found);
    return EndRecord{.position = position,
                     .count = numberAt<quint16>(record, 10),
                     .directorySize = numberAt<quint32>(record, 12),
                     .directoryOffset = numberAt<quint32>(record, 16)};
}

std::vector<quint64> dataEnds(const std::vector<quint64> &starts, quint64 directoryStart)
{
    std::vector<std::size_t> order(starts.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t left, std::size_t right) { return starts[left] < starts[right]; });
    std::vector<quint64> ends(starts.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const quint64 start = starts[order[i]];
        const bool shared = i > 0 && starts[order[i - 1]] == start;
        const quint64 next = i + 1 < order.size() ? starts[order[i + 1]] : directoryStart;
        ends[order[i]] = shared ? start : next;
    }
    return ends;
}

} // namespace

std::optional<CentralDirectory> CentralDirectory::read(ArchiveFile &file, quint64 maxEntries,
                                                       QString &reason)
{
    const auto end = findEnd(file);
    if (!end || end->directoryOffset > end->position ||
        end->directorySize > end->position - end->directoryOffset) {
        reason = QStringLiteral("no valid end record");
        return std::nullopt;
    }
    if (end->count > maxEntries) {
        reason =
            QStringLiteral("%1 entries, more than the %2 allowed").arg(end->count).arg(maxEntries);
        return std::nullopt;
    }
    // Offsets do not count what may precede the archive in its file.
    const quint64 before = end->position - end->directorySize - end->directoryOffset;
    const quint64 directoryStart = before + end->directoryOffset;

    CentralDirectory directory;
    std::vector<quint64> starts;
    quint64 position = directoryStart;
    while (position < end->position) {
        const auto header = recordAt<kEntrySize>(file, position, kEntrySignature);
        if (!header || starts.size() == end->count)
            break;
        position += kEntrySize + numberAt<quint16>(*header, 28) + numberAt<quint16>(*header, 30) +
                    numberAt<quint16>(*header, 32);
        directory.m_sizes.push_back(numberAt<quint32>(*header, 24));
        if (directory.m_sizes.back() != kUnknownSize)
            directory.m_totalSize += directory.m_sizes.back();
        starts.push_back(before + numberAt<quint32>(*header, 42));
    }
    if (starts.size() != end->count || position != end->position) {
        reason = QStringLiteral("the directory does not hold the %1 entries of its end record")
                     .arg(end->count);
        return std::nullopt;
    }
    directory.m_dataEnds = dataEnds(starts, directoryStart);
    return directory;
}

} // namespace vorn
