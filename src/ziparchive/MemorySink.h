#pragma once

#include "ziparchive/EntrySink.h"

#include <QByteArray>
#include <QHash>

namespace vorn {

// Keeps the bytes of every non-empty file entry under the entry's name.
class MemorySink : public EntrySink
{
public:
    explicit MemorySink(quint64 maxBytes) : m_maxBytes(maxBytes) {}

    ArchiveFailure prepare(quint64 bytes) override
    {
        if (bytes <= m_maxBytes)
            return {};
        return {.kind = ArchiveFailureKind::TooLarge};
    }
    bool begin(const EntryHead &entry) override
    {
        m_entry = entry;
        m_bytes.clear();
        return true;
    }
    bool write(QByteArrayView bytes) override
    {
        m_bytes.append(bytes);
        return true;
    }
    void end(bool isIntact) override
    {
        if (isIntact && !m_entry.isFolder() && !m_bytes.isEmpty())
            m_contents.insert(m_entry.name, m_bytes);
    }

    const QHash<QString, QByteArray> &contents() const { return m_contents; }

private:
    quint64 m_maxBytes;
    EntryHead m_entry;
    QByteArray m_bytes;
    QHash<QString, QByteArray> m_contents;
};

} // namespace vorn
