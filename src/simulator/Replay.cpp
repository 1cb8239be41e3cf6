#include "simulator/Replay.h"

#include <QRegularExpression>

#include <algorithm>

namespace vorn {

Replay::Replay(const QString &text)
{
    // RTS does not reach a pseudo-terminal, and silence needs no action. Without going back over
    // the bytes ("++"), for which the expression engine lacks the memory in a line of 100,000 of
    // them.
    static const QRegularExpression form(
        QStringLiteral("^(\\d{1,9})\\.(\\d{6}) (?:([<>])((?: [0-9A-F]{2})++)|> \\((\\d{1,9}) "
                       "bytes\\)|gone)\\r?$"),
        QRegularExpression::MultilineOption);
    for (auto matches = form.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const std::chrono::microseconds at = std::chrono::seconds(match.captured(1).toInt()) +
                                             std::chrono::microseconds(match.captured(2).toInt());
        Entry entry{at, Entry::Kind::Sent, QByteArray::fromHex(match.captured(4).toLatin1()), 0};
        entry.length = entry.bytes.size();
        if (match.captured(3) == u"<")
            entry.kind = Entry::Kind::Received;
        else if (match.hasCaptured(5))
            entry.length = match.captured(5).toInt();
        else if (!match.hasCaptured(3))
            entry.kind = Entry::Kind::Gone;
        // The device never speaks first.
        if (!m_entries.empty() || entry.kind == Entry::Kind::Sent)
            m_entries.push_back(entry);
    }
    m_report.entries = static_cast<int>(m_entries.size());
}

Replay::Taken Replay::take(QByteArrayView bytes)
{
    Taken taken;
    while (!bytes.isEmpty()) {
        if (beginsAgain(bytes)) {
            rewind();
            taken.answers.clear();
        }
        if (m_next == m_entries.size()) {
            ++m_report.differences;
            break;
        }
        taken.begins = taken.begins || (m_next == 0 && m_taken == 0);
        const Entry &sent = m_entries[m_next];
        const qsizetype count = std::min(bytes.size(), sent.length - m_taken);
        m_differs = m_differs || (!sent.bytes.isEmpty() &&
                                  sent.bytes.sliced(m_taken, count) != bytes.first(count));
        m_taken += count;
        bytes = bytes.sliced(count);
        if (m_taken < sent.length)
            break;
        m_report.differences += m_differs ? 1 : 0;
        m_differs = false;
        m_taken = 0;
        countEntry();
        for (++m_next; m_next < m_entries.size(); ++m_next) {
            const Entry &entry = m_entries[m_next];
            if (entry.kind == Entry::Kind::Sent)
                break;
            taken.answers.push_back({.bytes = entry.bytes,
                                     .after = entry.at - sent.at,
                                     .unplugs = entry.kind == Entry::Kind::Gone});
        }
    }
    return taken;
}

bool Replay::beginsAgain(QByteArrayView bytes) const
{
    if (m_entries.empty())
        return false;
    const QByteArray &first = m_entries.front().bytes;
    return bytes == first &&
           (m_next == m_entries.size() || !m_entries[m_next].bytes.mid(m_taken).startsWith(first));
}

void Replay::answered()
{
    countEntry();
}

void Replay::rewind()
{
    m_next = 0;
    m_taken = 0;
    m_differs = false;
    m_replayed = 0;
}

void Replay::countEntry()
{
    m_report.replayed = std::max(m_report.replayed, ++m_replayed);
}

} // namespace vorn
