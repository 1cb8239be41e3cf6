#include "update/Transcript.h"

#include <QByteArray>

#include <algorithm>

namespace vorn {
namespace {

// In the order of Transcript::Kind.
constexpr std::array kNames{" >", " <", " RTS high", " RTS low", " silence", " gone"};

} // namespace

void Transcript::add(Kind kind, Time when, QByteArrayView bytes)
{
    const std::lock_guard lock(m_mutex);
    if (m_entries.empty())
        m_began = when;
    qsizetype &kept = m_keptBytes[kind == Kind::Received ? 1 : 0];
    const bool isKept = kept + bytes.size() <= kKeptBytes;
    m_entries.push_back({std::chrono::duration_cast<decltype(Entry::at)>(when - m_began),
                         static_cast<quint32>(bytes.size()), kind, isKept});
    if (!isKept)
        return;
    kept += bytes.size();
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
}

bool Transcript::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_entries.empty();
}

QString Transcript::text() const
{
    // The sequence may continue while the text is made.
    std::unique_lock lock(m_mutex);
    const std::deque<Entry> entries = m_entries;
    const std::deque<char> bytes = m_bytes;
    lock.unlock();

    constexpr qint64 kPerSecond = 1'000'000;
    constexpr qsizetype kLongestStart = 24;
    QByteArray text;
    text.reserve(static_cast<qsizetype>(bytes.size()) * 3 +
                 static_cast<qsizetype>(entries.size()) * kLongestStart);
    auto next = bytes.begin();
    for (const Entry &entry : entries) {
        const qint64 at = entry.at.count();
        text += QByteArray::number(at / kPerSecond) + '.' +
                QByteArray::number(at % kPerSecond).rightJustified(6, '0') +
                kNames.at(static_cast<std::size_t>(entry.kind));
        if (!entry.isKept) {
            text += " (" + QByteArray::number(entry.length) + " bytes)";
        } else if (entry.length > 0) {
            QByteArray chunk(static_cast<qsizetype>(entry.length), Qt::Uninitialized);
            std::copy_n(next, entry.length, chunk.begin());
            next += entry.length;
            text += ' ' + chunk.toHex(' ').toUpper();
        }
        text += '\n';
    }
    return QString::fromLatin1(text);
}

} // namespace vorn
