#pragma once

#include "ziparchive/ArchiveFailure.h"
#include "ziparchive/ArchiveLimits.h"
#include "ziparchive/ZipArchiveDelegate.h"
#include "ziparchive/ZipFileManager.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vorn {
class ArchiveReader;
class ArchiveWriter;
class EntryNameCodec;
class EntrySink;
} // namespace vorn

// A zip archive: one open for reading, one open for writing, or both. The three ways to read one
// (list it, unpack it into a folder, unpack it into memory) each start at the first entry and can
// be repeated. Nothing is thrown; the delegate is told a text for each error:
//
// - "Failed": there is no first entry. The walk goes on.
// - "Error occurs" (unpacking), "Error occured" (listing): an entry could not be opened: it is
//   damaged, overlaps another one, or has a compression method other than stored and deflated; or,
//   when unpacking, it is encrypted and the password missing or wrong, or the archive claims more
//   bytes than the limits allow. The walk stops.
// - "Error occurs while getting file info": an entry's headers are unusable; or the archive's
//   directory contradicts its end record or has more entries than the limits allow, and then no
//   entry can be opened. The walk stops.
// - "Failed to read zip file": an entry's data are damaged or too short. The walk stops.
// - "file was unzipped but failed crc check": an entry's CRC is wrong. The walk stops.
// - "Failed to open output file for writing": a file could not be written. The walk goes on; but
//   when the disk lacks the space for the whole archive, it stops before the first file.
// - "Error while closing current file %d", "Error while going to next file %d": listing only, with
//   minizip's code. The walk stops.
//
// firstFailure() gives the same as a fact, and the log has the details. An object is used from one
// thread at a time, and calls its delegate and its progress block on that thread.
class ZipArchive
{
public:
    // Called after each entry, skipped ones included: `percentage` of the entries processed, how
    // many that is, and how many there are.
    using ProgressBlock =
        std::function<void(qint32 percentage, quint32 filesProcessed, quint64 numFiles)>;

    ZipArchive();
    explicit ZipArchive(std::shared_ptr<vorn::ZipFileManager> fileManager);
    ZipArchive(const ZipArchive &) = delete;
    ZipArchive &operator=(const ZipArchive &) = delete;
    // Closes what is open.
    ~ZipArchive();

    // --- Reading ---

    // Opens the archive at `path`; false when it cannot be read, is no archive, or has no entries.
    // An archive that is already open is not closed before this object is destroyed.
    bool UnzipOpenFile(const QString &path);
    bool UnzipOpenFile(const QString &path, const QString &Password);
    // The names of the entries in archive order, up to the first error, with "/" between their
    // components and at the end of a folder's. Needs no password.
    QStringList getZipFileContents();
    // Unpacks every entry below the folder `path`, which is created when missing; an empty path is
    // the current folder. Without `overWrite` the delegate is asked before an existing file is
    // replaced. A file is replaced atomically, when the new one is complete and its CRC correct;
    // after an error it is as it was. Nothing is written outside `path`: an entry whose name leads
    // out of it, or that would pass through a symbolic link in it, is reported as a file that could
    // not be written. False after any error but a file whose name is taken by a folder (or the
    // reverse).
    bool UnzipFileTo(const QString &path, bool overWrite);
    // The bytes of every non-empty entry under its name; of several entries with one name, the
    // last.
    QHash<QString, QByteArray> UnzipFileToMemory();
    // Closes the archive and forgets the password; true when that succeeded or none is open.
    bool UnzipCloseFile();

    // The number of entries of the archive opened last, according to its end record.
    quint64 numFiles() const { return m_numFiles; }
    // The full paths of the files unpacked since the archive was opened.
    QStringList unzippedFiles() const { return m_unzippedFiles; }
    // The first error of the last listing or unpacking: the one that the later ones follow from.
    const vorn::ArchiveFailure &firstFailure() const { return m_firstFailure; }

    // --- Writing ---

    // Creates an archive at `path`, or opens the existing one to `append` to it. An archive already
    // open for writing is abandoned without a directory, which makes it unreadable.
    bool CreateZipFile2(const QString &path) { return CreateZipFile2(path, false); }
    bool CreateZipFile2(const QString &path, bool append);
    bool CreateZipFile2(const QString &path, const QString &Password, bool append = false);
    // For a string literal, which would convert to `append` otherwise.
    bool CreateZipFile2(const QString &path, const char *Password)
    {
        return CreateZipFile2(path, QString::fromUtf8(Password));
    }
    // Adds the regular file at `file`, symbolic links followed, with its modification date.
    bool addFileToZip(const QString &file, const QString &newname);
    // Adds an entry dated by `fileAttributes`, or now without a date there. The date is stored one
    // month late, deliberately. A name that `stringEncoding` cannot represent is stored as UTF-8
    // and flagged so. False when `data` is missing, no archive is open, the password is not ASCII,
    // or the entry cannot be written.
    bool addDataToZip(const std::optional<QByteArrayView> &data,
                      const std::optional<vorn::FileAttributes> &fileAttributes,
                      const QString &newname);
    // Writes the directory, closes the archive and forgets the password; false when that fails or
    // no archive is open.
    bool CloseZipFile2();

    // --- For both ---

    // For encrypted entries, in ASCII; empty means none. Only the traditional cipher is supported.
    const QString &password() const { return m_password; }
    void setPassword(const QString &password) { m_password = password; }
    const std::shared_ptr<ZipArchiveDelegate> &delegate() const { return m_delegate; }
    void setDelegate(const std::shared_ptr<ZipArchiveDelegate> &it) { m_delegate = it; }
    const ProgressBlock &progressBlock() const { return m_progressBlock; }
    void setProgressBlock(const ProgressBlock &block) { m_progressBlock = block; }
    // The encoding of entry names, as iconv(3) calls it; "GBK" by default. A name that is flagged
    // as UTF-8, or is valid UTF-8 and not valid in this encoding, is read as UTF-8; one that is
    // valid in neither is read as ISO 8859-1.
    const QByteArray &stringEncoding() const { return m_stringEncoding; }
    void setStringEncoding(const QByteArray &encoding);
    // zlib's level for added entries: 0 to 9, or -1 (the initial value) for zlib's default.
    qint64 compression() const { return m_compression; }
    void setCompression(qint64 compression) { m_compression = compression; }
    const vorn::ArchiveLimits &limits() const { return m_limits; }
    void setLimits(const vorn::ArchiveLimits &limits) { m_limits = limits; }

    // Hands a text to the delegate.
    void OutputErrorMessage(const QString &msg);
    // Asks the delegate whether `file` may be replaced; true without one.
    bool OverWrite(const QString &file);
    // 1 January 1980, 00:00 local time: the earliest date of an entry.
    static std::chrono::system_clock::time_point Date1980();

private:
    std::shared_ptr<vorn::ArchiveReader> startWalk();
    bool openEntry(vorn::ArchiveReader *reader, const QString &failureText);
    QString entryName(const vorn::ArchiveReader &reader) const;
    bool unpack(vorn::EntrySink &sink);
    int unpackEntry(vorn::ArchiveReader &reader, vorn::EntrySink &sink);
    void reportBadEntry(const vorn::ArchiveReader *reader, const QString &text);
    void reportSinkFailure(const vorn::ArchiveFailure &failure);
    void report(const vorn::ArchiveFailure &failure, const QString &text);
    std::optional<QByteArray> passwordBytes() const;

    std::unique_ptr<vorn::ArchiveWriter> m_zipFile;
    // Shared with the walk in progress: a callback may close the archive.
    std::shared_ptr<vorn::ArchiveReader> m_unzFile;
    int m_openError = 0; // errno, if that kept the archive from being opened
    std::vector<std::shared_ptr<vorn::ArchiveReader>> m_leftOpen;
    quint64 m_numFiles = 0;
    QString m_password;
    std::shared_ptr<ZipArchiveDelegate> m_delegate;
    ProgressBlock m_progressBlock;
    QStringList m_unzippedFiles;
    vorn::ArchiveFailure m_firstFailure;
    bool m_hasWalkFailed = false;
    std::shared_ptr<vorn::ZipFileManager> m_fileManager;
    QByteArray m_stringEncoding;
    std::unique_ptr<vorn::EntryNameCodec> m_nameCodec;
    qint64 m_compression = -1;
    vorn::ArchiveLimits m_limits;
};
