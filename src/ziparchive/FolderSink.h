#pragma once

#include "ziparchive/EntrySink.h"
#include "ziparchive/SafeDestination.h"

#include <functional>
#include <memory>

namespace vorn {

class ZipFileManager;

// Unpacks entries as files below a folder, which is made when it is not there. What it cannot write
// is reported and left out, and the entries after it go on.
class FolderSink : public EntrySink
{
public:
    struct Options
    {
        QString path;
        quint64 maxBytes = 0;
        // Asked before an existing file is replaced, with its full path; when empty, it is
        // replaced.
        std::function<bool(const QString &)> mayReplace;
        std::function<void(const QString &)> report;
        // Told the full path of each file written.
        std::function<void(const QString &)> written;
    };

    // `fileManager` outlives the sink.
    FolderSink(const ZipFileManager &fileManager, Options options);

    std::optional<QString> objectionTo(quint64 bytes) override;
    bool begin(const EntryHead &entry) override;
    bool write(QByteArrayView bytes) override;
    void end(bool isIntact) override;

    // Whether a file was not written for another reason than that its name is taken by something of
    // another kind.
    bool hasFailed() const { return m_hasFailed; }

private:
    bool openOutput();
    void reportNotWritten(Place place);

    const ZipFileManager &m_fileManager;
    Options m_options;
    SafeDestination m_destination;
    // The entry at hand.
    QString m_fullPath;
    QByteArray m_name;
    bool m_isFolder = false;
    std::optional<std::chrono::system_clock::time_point> m_date;
    Place m_folderPlace = Place::Free;
    int m_errno = 0;
    std::unique_ptr<OutputFile> m_output;

    bool m_hasFailed = false;
};

} // namespace vorn
