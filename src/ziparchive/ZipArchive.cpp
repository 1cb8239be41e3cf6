#include "ziparchive/ZipArchive.h"

#include "ziparchive/ArchiveReader.h"
#include "ziparchive/ArchiveWriter.h"
#include "ziparchive/EntryDate.h"
#include "ziparchive/EntryNameCodec.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(logArchive, "vorn.ziparchive")

// The bytes of a regular file; nothing for anything else and for a file that cannot be read.
std::optional<QByteArray> contentsOf(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray contents = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return contents;
}

} // namespace

ZipArchive::ZipArchive() : ZipArchive(std::make_shared<vorn::ZipFileManager>()) {}

ZipArchive::ZipArchive(std::shared_ptr<vorn::ZipFileManager> fileManager)
    : m_fileManager(std::move(fileManager))
{
    setStringEncoding(QByteArrayLiteral("GBK"));
}

ZipArchive::~ZipArchive()
{
    CloseZipFile2();
    UnzipCloseFile();
}

bool ZipArchive::UnzipOpenFile(const QString &path)
{
    m_unzippedFiles.clear();
    if (m_unzFile)
        m_leftOpen.push_back(std::move(m_unzFile));
    m_unzFile = vorn::ArchiveReader::open(path, m_openError);
    if (!m_unzFile)
        return false;
    m_numFiles = m_unzFile->entryCount();
    qCInfo(logArchive, "%llu entries in the zip file", m_numFiles);
    return true;
}

bool ZipArchive::UnzipOpenFile(const QString &path, const QString &Password)
{
    m_password = Password;
    return UnzipOpenFile(path);
}

bool ZipArchive::UnzipCloseFile()
{
    m_password.clear();
    const auto reader = std::move(m_unzFile);
    return !reader || reader->close();
}

bool ZipArchive::CreateZipFile2(const QString &path, bool append)
{
    m_zipFile.reset();
    m_zipFile = vorn::ArchiveWriter::open(path, append);
    return m_zipFile != nullptr;
}

bool ZipArchive::CreateZipFile2(const QString &path, const QString &Password, bool append)
{
    m_password = Password;
    return CreateZipFile2(path, append);
}

bool ZipArchive::addFileToZip(const QString &file, const QString &newname)
{
    const auto contents = contentsOf(file);
    if (!contents)
        return false;
    return addDataToZip(*contents, m_fileManager->_attributesOfItemAtPath(file, true, nullptr),
                        newname);
}

bool ZipArchive::addDataToZip(const std::optional<QByteArrayView> &data,
                              const std::optional<vorn::FileAttributes> &fileAttributes,
                              const QString &newname)
{
    constexpr qint64 kHighestLevel = 9;
    const auto password = passwordBytes();
    if (!data || !m_zipFile || (!password && !m_password.isEmpty()) || m_compression < -1 ||
        m_compression > kHighestLevel)
        return false;
    const auto now = std::chrono::system_clock::now();
    const auto date = fileAttributes ? fileAttributes->modificationDate.value_or(now) : now;
    return m_zipFile->add({.name = m_nameCodec->encode(newname),
                           .date = vorn::toEntryDate(date),
                           .level = static_cast<int>(m_compression),
                           .password = password.value_or(QByteArray())},
                          *data);
}

bool ZipArchive::CloseZipFile2()
{
    m_password.clear();
    const auto writer = std::move(m_zipFile);
    return writer && writer->close();
}

void ZipArchive::setStringEncoding(const QByteArray &encoding)
{
    m_stringEncoding = encoding;
    m_nameCodec = std::make_unique<vorn::EntryNameCodec>(encoding);
}

void ZipArchive::OutputErrorMessage(const QString &msg)
{
    if (m_delegate)
        m_delegate->ErrorMessage(msg);
}

bool ZipArchive::OverWrite(const QString &file)
{
    return !m_delegate || m_delegate->OverWriteOperation(file);
}

std::chrono::system_clock::time_point ZipArchive::Date1980()
{
    return vorn::firstEntryDate();
}

std::optional<QByteArray> ZipArchive::passwordBytes() const
{
    const bool isAscii = std::all_of(m_password.begin(), m_password.end(),
                                     [](QChar character) { return character.unicode() < 0x80; });
    if (m_password.isEmpty() || !isAscii)
        return std::nullopt;
    return m_password.toLatin1();
}
