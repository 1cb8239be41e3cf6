#pragma once

#include "ziparchive/ArchiveFile.h"
#include "ziparchive/CentralDirectory.h"
#include "ziparchive/EncryptedEntry.h"

#include <QByteArray>

#include <minizip/unzip.h>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>

namespace vorn {

// An archive open for reading: minizip's cursor over the entries, and the checks that minizip
// leaves out. What it would pass off as success fails here: data shorter than the entry claims,
// compression methods it cannot undo, encrypted entries read without a password, names with a NUL
// inside, sizes that only a zip64 field would tell, entries whose data overlap, an end record that
// counts other entries than there are. Result codes are minizip's: 0 is success, below 0 an error.
class ArchiveReader
{
public:
    enum class Opened { Yes, No, BadInformation };

    struct Entry
    {
        QByteArray name;
        bool isUtf8 = false;
        quint64 size = 0;
        tm_unz date = {};
    };

    // Null when `path` is no archive or cannot be read; an archive without entries counts as none.
    static std::unique_ptr<ArchiveReader> open(const QString &path);

    // The number of entries that the archive's end record gives.
    std::optional<quint64> entryCount() const;
    // The sum of the sizes that the entries claim; known once an entry has been opened.
    quint64 totalSize() const { return m_directory ? m_directory->totalSize() : 0; }

    // Places the cursor. The first call checks the directory as a whole; when that fails, no entry
    // opens.
    int goToFirstEntry(quint64 maxEntries);
    int goToNextEntry();

    // Opens the entry under the cursor. Without a password an encrypted entry does not open; plain
    // ones do with any.
    Opened openEntry(const std::optional<QByteArray> &password);
    const Entry &entry() const { return m_entry; }
    // The number of bytes read, 0 at the entry's end.
    int readEntry(std::span<char> target);
    // Fails when the entry was read to its end and its CRC is not the stored one.
    int closeEntry();

    // Closes the archive; false when that failed. Everything else fails afterwards.
    bool close();

private:
    struct CloseHandle
    {
        void operator()(unzFile handle) const { unzClose(handle); }
    };
    using Handle = std::unique_ptr<std::remove_pointer_t<unzFile>, CloseHandle>;

    ArchiveReader(std::unique_ptr<ArchiveFile> file, Handle handle);
    Opened examineEntry(const std::optional<QByteArray> &password, unz_file_info64 &info);
    bool isWithinBounds(const unz_file_info64 &info) const;

    std::unique_ptr<ArchiveFile> m_file;
    Handle m_handle;
    std::optional<CentralDirectory> m_directory;
    std::size_t m_index = 0;
    Entry m_entry;
    quint64 m_sizeRead = 0;
    std::unique_ptr<EncryptedEntry> m_encrypted;
    // The longest name that a 16-bit length allows, and its end.
    std::array<char, 65536> m_nameBuffer = {};
};

} // namespace vorn
