#pragma once

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
// be repeated. Nothing is thrown; an error is a text to the delegate:
//
// - "Failed": going to the first entry failed. The work goes on.
// - "Error occurs" (unpacking), "Error occured" (listing): an entry could not be opened. It is
//   damaged, or encrypted and the password missing or wrong, or overlaps another, or is of a
//   compression method other than stored and deflated; or the archive claims more bytes than the
//   limits allow. The work stops.
// - "Error occurs while getting file info": an entry's information is unusable; or the archive's
//   directory is not what its end record says, or has more entries than the limits allow, and then
//   none of them opens. The work stops.
// - "Failed to read zip file": an entry's data is damaged or short. The work stops.
// - "file was unzipped but failed crc check": an entry's data is not what was packed. The work
//   stops.
// - "Failed to open output file for writing": a file could not be written. The work goes on; but
//   when the disk has not enough space for the whole archive, it stops before the first file.
// - "Error while closing current file %d", "Error while going to next file %d": listing only, with
//   minizip's code. The work stops.
//
// The log has the reason behind each. An object is used from one thread at a time, and calls its
// delegate and its progress block on that thread.
class ZipArchive
{
public:
    // `percentage` is of the number of entries; `filesProcessed` counts them, skipped ones
    // included.
    using ProgressBlock =
        std::function<void(qint32 percentage, quint32 filesProcessed, quint64 numFiles)>;

    ZipArchive();
    explicit ZipArchive(std::shared_ptr<vorn::ZipFileManager> fileManager);
    ZipArchive(const ZipArchive &) = delete;
    ZipArchive &operator=(const ZipArchive &) = delete;
    // Closes what is open.
    ~ZipArchive();

    // --- Reading ---

    // Opens the archive at `path`; false when it cannot be read or is none (one without
    // any entries counts as none). An archive already open stays open, out of reach, as long as
    // this object.
    bool UnzipOpenFile(const QString &path);
    bool UnzipOpenFile(const QString &path, const QString &Password);
    // The names of the entries in the archive's order, with "/" between their parts and at the end
    // of a folder's; up to the first error.
    QStringList getZipFileContents();
    // Unpacks every entry below the folder `path`, which is made when needed; an empty one is the
    // current folder. Without `overWrite` the delegate is asked before an existing file is
    // replaced. An existing file is replaced at once and whole, when the new one is complete and
    // its CRC right; until then, and after any error, it is as it was. Nothing is written outside
    // of `path`: an entry whose name leads out of it, or that would pass through a symbolic link in
    // it, is reported as a file that could not be written. False after any error, but for a file
    // whose name is taken by a folder (or the reverse).
    bool UnzipFileTo(const QString &path, bool overWrite);
    // The bytes of every entry that has any, under its name (the last one's, of several with one
    // name).
    QHash<QString, QByteArray> UnzipFileToMemory();
    // Closes the archive and forgets the password; true when that went well or none is open.
    bool UnzipCloseFile();

    // The number of entries of the archive opened last, by its own account.
    quint64 numFiles() const { return m_numFiles; }
    // The full paths of the files unpacked since the archive was opened.
    QStringList unzippedFiles() const { return m_unzippedFiles; }

    // --- Writing ---

    // Makes an archive at `path`, or opens the one there to `append` to it. An archive
    // already open for writing is left without its directory, so that it is none.
    bool CreateZipFile2(const QString &path);
    bool CreateZipFile2(const QString &path, bool append);
    bool CreateZipFile2(const QString &path, const QString &Password);
    bool CreateZipFile2(const QString &path, const QString &Password, bool append);
    // A password in plain quotes, which would be taken for `append` otherwise.
    bool CreateZipFile2(const QString &path, const char *Password)
    {
        return CreateZipFile2(path, QString::fromUtf8(Password));
    }
    // Adds the regular file at the path `file`, or what a symbolic link there leads to, with its
    // modification date.
    bool addFileToZip(const QString &file, const QString &newname);
    // Adds an entry with the modification date of `fileAttributes`, or the current one. The date in
    // the archive is a month late, and is meant to be. A name that `stringEncoding` cannot say is
    // written in UTF-8 and flagged so. False when `data` is missing, no archive is open, or the
    // entry cannot be written; a password that is not ASCII can encrypt nothing.
    bool addDataToZip(const std::optional<QByteArrayView> &data,
                      const std::optional<vorn::FileAttributes> &fileAttributes,
                      const QString &newname);
    // Finishes and closes the archive and forgets the password; false when that fails or none is
    // open.
    bool CloseZipFile2();

    // --- For both ---

    // Of encrypted entries, in ASCII; empty means none. Only the format's traditional cipher is
    // known.
    const QString &password() const { return m_password; }
    void setPassword(const QString &password) { m_password = password; }
    const std::shared_ptr<ZipArchiveDelegate> &delegate() const { return m_delegate; }
    void setDelegate(std::shared_ptr<ZipArchiveDelegate> delegate);
    const ProgressBlock &progressBlock() const { return m_progressBlock; }
    void setProgressBlock(ProgressBlock progressBlock);
    // The encoding of entry names in the archive, as iconv(3) names it; "GBK" at first. A name that
    // is flagged as UTF-8, or is not valid in this encoding but in UTF-8, is read as UTF-8; one
    // that is valid in neither is read byte by byte.
    const QByteArray &stringEncoding() const { return m_stringEncoding; }
    void setStringEncoding(const QByteArray &encoding);
    // zlib's level for added entries: 0 to 9, or -1 for its default, as at first.
    qint64 compression() const { return m_compression; }
    void setCompression(qint64 compression) { m_compression = compression; }
    const vorn::ArchiveLimits &limits() const { return m_limits; }
    void setLimits(const vorn::ArchiveLimits &limits) { m_limits = limits; }

    // Hands a text to the delegate.
    void OutputErrorMessage(const QString &msg);
    // Asks the delegate; true without one.
    bool OverWrite(const QString &file);
    // 1 January 1980, 00:00 local time: where the dates of archives begin.
    static std::chrono::system_clock::time_point Date1980();

private:
    void goToFirstEntry(vorn::ArchiveReader *reader);
    bool openEntry(vorn::ArchiveReader *reader, const char *failureText);
    QString entryName(const vorn::ArchiveReader &reader) const;
    bool unpack(vorn::EntrySink &sink);
    int unpackEntry(vorn::ArchiveReader &reader, vorn::EntrySink &sink);
    std::optional<QByteArray> passwordBytes() const;

    std::unique_ptr<vorn::ArchiveWriter> m_zipFile;
    // Shared with the work on it, which a callback may end by closing the archive.
    std::shared_ptr<vorn::ArchiveReader> m_unzFile;
    std::vector<std::shared_ptr<vorn::ArchiveReader>> m_leftOpen;
    quint64 m_numFiles = 0;
    QString m_password;
    std::shared_ptr<ZipArchiveDelegate> m_delegate;
    ProgressBlock m_progressBlock;
    QStringList m_unzippedFiles;
    std::shared_ptr<vorn::ZipFileManager> m_fileManager;
    QByteArray m_stringEncoding;
    std::unique_ptr<vorn::EntryNameCodec> m_nameCodec;
    qint64 m_compression = -1;
    vorn::ArchiveLimits m_limits;
};
