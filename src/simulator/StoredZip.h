#pragma once

#include <QByteArray>

namespace vorn {

// Writes a zip archive in memory, without compression. Names are ASCII; the whole archive stays
// below 4 GiB. All entries carry one fixed date, so that the same entries make the same archive.
class StoredZip
{
public:
    void addFolder(const QByteArray &name); // ends in "/"
    void addFile(const QByteArray &name, const QByteArray &bytes);
    // The archive with all entries so far.
    QByteArray archive() const;

private:
    void addEntry(const QByteArray &name, const QByteArray &bytes, quint32 attributes);

    QByteArray m_entries;
    QByteArray m_directory;
    quint16 m_count = 0;
};

// The sample package: the folder VornUpdate2 with the latest sample firmware.
QByteArray samplePackage();

} // namespace vorn
