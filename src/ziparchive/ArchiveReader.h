#pragma once

#include "ziparchive/ArchiveFile.h"
#include "ziparchive/EncryptedEntry.h"

#include <QByteArray>

#include <minizip/unzip.h>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>
#include <vector>

namespace vorn {

// An archive open for reading: minizip's cursor over the entries, with the checks that minizip
// leaves out. It rejects data shorter than the entry's size, compression methods other than stored
// and deflated, encrypted entries without the right password, names that contain a NUL, sizes that
// only a zip64 field could hold, entries whose data overlap, and an end record with a wrong entry
// count. Result codes are minizip's: 0 is success, a negative number an error.
class ArchiveReader
{
public:
    enum class Opened { Yes, No, BadInformation };

    struct EntryInfo
    {
        QByteArray name;
        bool isUtf8 = false;
        quint64 size = 0;
        tm_unz date = {};
    };

    // Null when `path` cannot be read, for the errno in `error`, is no archive, or has no entries.
    static std::unique_ptr<ArchiveReader> open(const QString &path, int &error);
    // The errno of the last read that failed, or 0.
    int readError() const { return m_file->error(); }

    // The number of entries according to the archive's end record.
    quint64 entryCount() const;
    // The sum of all entries' uncompressed sizes; known from goToFirstEntry() on.
    quint64 totalSize() const { return m_totalSize; }

    // Moves the cursor. The whole directory is checked first; when it contradicts its end record or
    // has more than `maxEntries` entries, no entry can be opened.
    int goToFirstEntry(quint64 maxEntries);
    int goToNextEntry();

    // Opens the entry under the cursor by its headers, which needs no password.
    Opened openEntry();
    // Makes the open entry's data readable; false when it is encrypted and the password is missing
    // or wrong, or its encryption not supported.
    bool unlock(const std::optional<QByteArray> &password);
    // The entry opened last; its name is empty when that failed before the name was read.
    const EntryInfo &entry() const { return m_entry; }
    // The number of bytes read, 0 at the entry's end.
    int readEntry(std::span<char> target);
    // An error when the entry was read to its end and its CRC is wrong.
    int closeEntry();

    // Closes the archive; false when that failed. Every later call fails.
    bool close();

private:
    struct CloseHandle
    {
        void operator()(unzFile handle) const { unzClose(handle); }
    };
    using Handle = std::unique_ptr<std::remove_pointer_t<unzFile>, CloseHandle>;

    ArchiveReader(std::unique_ptr<ArchiveFile> file, Handle handle);
    bool survey();
    Opened examineEntry();
    bool isEncrypted() const;

    std::unique_ptr<ArchiveFile> m_file;
    Handle m_handle;
    quint64 m_totalSize = 0;
    // For each entry, the file position where its data must end at the latest; empty when the
    // directory was rejected.
    std::vector<quint64> m_dataEnds;
    std::size_t m_index = 0;
    EntryInfo m_entry;
    unz_file_info64 m_info = {};
    quint64 m_sizeRead = 0;
    std::unique_ptr<EncryptedEntry> m_encrypted;
    // The longest name that a 16-bit length allows, and its terminator.
    std::array<char, 65536> m_nameBuffer = {};
};

} // namespace vorn
