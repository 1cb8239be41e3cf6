#include "simulator/StoredZip.h"

#include "simulator/SampleFirmware.h"

#include <zlib.h>

namespace vorn {

namespace {

// The format's signatures and the few fields that are not zero here.
constexpr quint32 LocalHeader = 0x04034B50;
constexpr quint32 DirectoryHeader = 0x02014B50;
constexpr quint32 DirectoryEnd = 0x06054B50;
constexpr quint16 NeededVersion = 20;
constexpr quint16 MadeByUnix = (3U << 8U) | NeededVersion;
constexpr quint32 FileAttributes = 0100644U << 16U;
constexpr quint32 FolderAttributes = (040755U << 16U) | 0x10U;
constexpr quint16 Time = 12U << 11U;                                 // 12:00:00
constexpr quint16 Date = ((2025U - 1980U) << 9U) | (1U << 5U) | 15U; // 15 January 2025

void put16(QByteArray &out, quint32 value)
{
    out += static_cast<char>(value & 0xFFU);
    out += static_cast<char>((value >> 8U) & 0xFFU);
}

void put32(QByteArray &out, quint32 value)
{
    put16(out, value & 0xFFFFU);
    put16(out, value >> 16U);
}

} // namespace

void StoredZip::addFolder(const QByteArray &name)
{
    addEntry(name, {}, FolderAttributes);
}

void StoredZip::addFile(const QByteArray &name, const QByteArray &bytes)
{
    addEntry(name, bytes, FileAttributes);
}

void StoredZip::addEntry(const QByteArray &name, const QByteArray &bytes, quint32 attributes)
{
    const auto size = static_cast<quint32>(bytes.size());
    const auto sum =
        static_cast<quint32>(::crc32(0, reinterpret_cast<const Bytef *>(bytes.constData()), size));

    QByteArray common; // what both headers of the entry hold, from the needed version on
    put16(common, NeededVersion);
    put16(common, 0); // flags
    put16(common, 0); // stored
    put16(common, Time);
    put16(common, Date);
    put32(common, sum);
    put32(common, size); // compressed
    put32(common, size);
    put16(common, static_cast<quint32>(name.size()));
    put16(common, 0); // extra field

    const auto offset = static_cast<quint32>(m_entries.size());
    put32(m_entries, LocalHeader);
    m_entries += common + name + bytes;

    put32(m_directory, DirectoryHeader);
    put16(m_directory, MadeByUnix);
    m_directory += common;
    put16(m_directory, 0); // comment
    put16(m_directory, 0); // disk
    put16(m_directory, 0); // internal attributes
    put32(m_directory, attributes);
    put32(m_directory, offset);
    m_directory += name;
    ++m_count;
}

QByteArray StoredZip::archive() const
{
    QByteArray all = m_entries + m_directory;
    put32(all, DirectoryEnd);
    put32(all, 0); // disks
    put16(all, m_count);
    put16(all, m_count);
    put32(all, static_cast<quint32>(m_directory.size()));
    put32(all, static_cast<quint32>(m_entries.size()));
    put16(all, 0); // comment
    return all;
}

QByteArray samplePackage()
{
    StoredZip zip;
    zip.addFolder("VornUpdate2/");
    for (const SampleImage &image : sampleFirmware(SampleRelease::Latest))
        zip.addFile("VornUpdate2/" + image.name.toLatin1(), image.bytes);
    return zip.archive();
}

} // namespace vorn
