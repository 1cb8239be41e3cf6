#pragma once

#include "ziparchive/EntryNameCodec.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <minizip/zip.h>

#include <memory>

namespace vorn {

// An archive open for writing.
class ArchiveWriter
{
public:
    struct NewEntry
    {
        EncodedEntryName name;
        tm_zip date = {};
        // zlib's level: 0 to 9, or -1 for its default.
        int level = Z_DEFAULT_COMPRESSION;
        // Empty: not encrypted.
        QByteArray password;
    };

    // Creates the archive, replacing a file at `path`, or opens the one there to add to it. Null
    // when that fails.
    static std::unique_ptr<ArchiveWriter> open(const QString &path, bool append);
    ArchiveWriter(const ArchiveWriter &) = delete;
    ArchiveWriter &operator=(const ArchiveWriter &) = delete;
    // Without close(), the file is left without the directory that would make it an archive.
    ~ArchiveWriter();

    // Adds an entry; false when that fails or the format cannot hold it: a name that is empty,
    // contains a NUL or exceeds 65,535 bytes, or data of about 4 GiB or more.
    bool add(const NewEntry &entry, QByteArrayView data);
    // Writes the directory and closes the file.
    bool close();

private:
    ArchiveWriter() = default;
    bool openEntry(const NewEntry &entry, bool isEncrypted);
    bool writeEncrypted(const NewEntry &entry, QByteArrayView data, uLong crc);

    static uLong writeStream(voidpf self, voidpf stream, const void *buffer, uLong size);

    // minizip's own file functions, which writeStream() wraps.
    zlib_filefunc64_def m_stdio = {};
    bool m_isAbandoned = false;
    zipFile m_handle = nullptr;
};

} // namespace vorn
