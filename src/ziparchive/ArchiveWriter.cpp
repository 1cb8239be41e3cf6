#include "ziparchive/ArchiveWriter.h"

#include "ziparchive/TraditionalCipher.h"

#include <QFile>
#include <QRandomGenerator>

#include <array>
#include <span>
#include <utility>

namespace vorn {

namespace {

constexpr uLong kEncryptedFlag = 1U << 0;
constexpr uLong kUtf8Flag = 1U << 11;
constexpr qsizetype kMaxNameLength = 0xFFFF;
// Just below 4 GiB: incompressible data grow a little when deflated, and must still fit.
constexpr qsizetype kMaxSize = 0xFFF00000;
constexpr int kMemoryLevel = 8;

const Bytef *zlibBytes(const char *bytes)
{
    return reinterpret_cast<const Bytef *>(bytes);
}

} // namespace

std::unique_ptr<ArchiveWriter> ArchiveWriter::open(const QString &path, bool append)
{
    std::unique_ptr<ArchiveWriter> writer(new ArchiveWriter);
    fill_fopen64_filefunc(&writer->m_stdio);
    zlib_filefunc64_def functions = writer->m_stdio;
    functions.zwrite_file = writeStream;
    functions.opaque = writer.get();
    writer->m_handle =
        zipOpen2_64(QFile::encodeName(path).constData(),
                    append ? APPEND_STATUS_ADDINZIP : APPEND_STATUS_CREATE, nullptr, &functions);
    return writer->m_handle ? std::move(writer) : nullptr;
}

ArchiveWriter::~ArchiveWriter()
{
    m_isAbandoned = true;
    if (m_handle)
        zipClose(m_handle, nullptr);
}

uLong ArchiveWriter::writeStream(voidpf self, voidpf stream, const void *buffer, uLong size)
{
    const auto &writer = *static_cast<ArchiveWriter *>(self);
    if (writer.m_isAbandoned)
        return size;
    return writer.m_stdio.zwrite_file(writer.m_stdio.opaque, stream, buffer, size);
}

bool ArchiveWriter::add(const NewEntry &entry, QByteArrayView data)
{
    const QByteArray &name = entry.name.bytes;
    if (name.isEmpty() || name.size() > kMaxNameLength || name.contains('\0') ||
        data.size() > kMaxSize)
        return false;
    const auto size = static_cast<unsigned>(data.size());
    if (entry.password.isEmpty())
        return openEntry(entry, false) &&
               zipWriteInFileInZip(m_handle, data.data(), size) == ZIP_OK &&
               zipCloseFileInZip(m_handle) == ZIP_OK;

    const uLong crc = crc32(crc32(0, nullptr, 0), zlibBytes(data.data()), size);
    return openEntry(entry, true) && writeEncrypted(entry, data, crc) &&
           zipCloseFileInZipRaw64(m_handle, size, crc) == ZIP_OK;
}

bool ArchiveWriter::openEntry(const NewEntry &entry, bool isEncrypted)
{
    zip_fileinfo info = {};
    info.tmz_date = entry.date;
    const uLong flags = (isEncrypted ? kEncryptedFlag : 0) | (entry.name.isUtf8 ? kUtf8Flag : 0);
    return zipOpenNewFileInZip4_64(m_handle, entry.name.bytes.constData(), &info, nullptr, 0,
                                   nullptr, 0, nullptr, Z_DEFLATED, entry.level,
                                   isEncrypted ? 1 : 0, -MAX_WBITS, kMemoryLevel,
                                   Z_DEFAULT_STRATEGY, nullptr, 0, 0, flags, 0) == ZIP_OK;
}

bool ArchiveWriter::writeEncrypted(const NewEntry &entry, QByteArrayView data, uLong crc)
{
    TraditionalCipher cipher(entry.password);
    const auto put = [&](std::span<char> bytes) {
        cipher.encrypt(bytes);
        return zipWriteInFileInZip(m_handle, bytes.data(), static_cast<unsigned>(bytes.size())) ==
               ZIP_OK;
    };

    std::array<char, TraditionalCipher::kHeaderSize> header = {};
    for (char &byte : header)
        byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
    header.back() = static_cast<char>(crc >> 24);
    if (!put(header))
        return false;

    z_stream stream = {};
    if (deflateInit2(&stream, entry.level, Z_DEFLATED, -MAX_WBITS, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK)
        return false;
    const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, &deflateEnd);
    stream.next_in = zlibBytes(data.data());
    stream.avail_in = static_cast<uInt>(data.size());
    std::array<char, 16384> packed = {};
    int result = Z_OK;
    while (result == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef *>(packed.data());
        stream.avail_out = static_cast<uInt>(packed.size());
        result = deflate(&stream, Z_FINISH);
        if (!put(std::span(packed).first(packed.size() - stream.avail_out)))
            return false;
    }
    return result == Z_STREAM_END;
}

bool ArchiveWriter::close()
{
    return zipClose(std::exchange(m_handle, nullptr), nullptr) == ZIP_OK;
}

} // namespace vorn
