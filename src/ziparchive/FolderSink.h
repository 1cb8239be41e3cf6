#pragma once

#include "ziparchive/EntrySink.h"
#include "ziparchive/SafeDestination.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace vorn {

class ZipFileManager;

// Unpacks entries as files below a folder, which is created when missing. An entry that cannot be
// written is skipped.
class FolderSink : public EntrySink
{
public:
    using Question = std::function<bool(const QString &)>;

    // `mayReplace` is asked with the full path before an existing file is replaced. `fileManager`
    // and `written`, to which the full path of each new file is added, outlive the sink.
    FolderSink(const ZipFileManager &fileManager, const QString &path, quint64 maxBytes,
               Question mayReplace, QStringList &written);

    ArchiveFailure prepare(quint64 bytes) override;
    bool begin(const EntryHead &entry) override;
    bool write(QByteArrayView bytes) override;
    void end(bool isIntact) override;

private:
    bool openOutput();
    bool fail(ArchiveFailure failure);

    const ZipFileManager &m_fileManager;
    const QString m_path;
    const quint64 m_maxBytes;
    const Question m_mayReplace;
    QStringList &m_written;
    SafeDestination m_destination;
    ArchiveFailure m_destinationFailure; // why it could not be opened
    // The current entry.
    EntryHead m_entry;
    QString m_fullPath;
    QByteArray m_fileName; // empty for a folder and for the destination itself
    ArchiveFailure m_folderFailure;
    std::unique_ptr<OutputFile> m_output;
};

} // namespace vorn
