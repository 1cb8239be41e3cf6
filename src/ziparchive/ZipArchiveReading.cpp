#include "ziparchive/ArchiveReader.h"
#include "ziparchive/EntryDate.h"
#include "ziparchive/EntryNameCodec.h"
#include "ziparchive/FolderSink.h"
#include "ziparchive/MemorySink.h"
#include "ziparchive/ZipArchive.h"

#include <QLoggingCategory>

#include <array>
#include <cstring>

using vorn::ArchiveFailure;
using vorn::ArchiveReader;
using Kind = vorn::ArchiveFailureKind;

namespace {

Q_LOGGING_CATEGORY(logArchive, "vorn.ziparchive")

constexpr std::size_t kReadSize = 4096;

const QString kNotOpened = QStringLiteral("Error occurs");
const QString kBadInformation = QStringLiteral("Error occurs while getting file info");

} // namespace

QStringList ZipArchive::getZipFileContents()
{
    const auto reader = startWalk();
    QStringList names;
    while (openEntry(reader.get(), QStringLiteral("Error occured"))) {
        names.append(entryName(*reader));
        const int closing = reader->closeEntry();
        if (closing != UNZ_OK) {
            reportBadEntry(reader.get(),
                           QStringLiteral("Error while closing current file %1").arg(closing));
            break;
        }
        const int moving = reader->goToNextEntry();
        if (moving != UNZ_OK && moving != UNZ_END_OF_LIST_OF_FILE)
            reportBadEntry(reader.get(),
                           QStringLiteral("Error while going to next file %1").arg(moving));
        if (moving != UNZ_OK)
            break;
    }
    return names;
}

bool ZipArchive::UnzipFileTo(const QString &path, bool overWrite)
{
    const auto mayReplace = [&](const QString &file) { return overWrite || OverWrite(file); };
    vorn::FolderSink sink(*m_fileManager, path, m_limits.bytesOnDisk, mayReplace, m_unzippedFiles);
    return unpack(sink);
}

QHash<QString, QByteArray> ZipArchive::UnzipFileToMemory()
{
    vorn::MemorySink sink(m_limits.bytesInMemory);
    unpack(sink);
    return sink.contents();
}

bool ZipArchive::unpack(vorn::EntrySink &sink)
{
    const auto reader = startWalk();
    quint32 counter = 0;
    while (openEntry(reader.get(), kNotOpened)) {
        if (!reader->unlock(passwordBytes())) {
            reportBadEntry(reader.get(), kNotOpened);
            return false;
        }
        if (counter == 0) {
            if (const ArchiveFailure failure = sink.prepare(reader->totalSize())) {
                reader->closeEntry();
                reportSinkFailure(failure);
                return false;
            }
        }
        const int result = unpackEntry(*reader, sink);
        ++counter;
        if (m_progressBlock && m_numFiles != 0)
            m_progressBlock(static_cast<qint32>(quint64{counter} * 100 / m_numFiles), counter,
                            m_numFiles);
        if (result != UNZ_OK)
            return !m_hasWalkFailed && result == UNZ_END_OF_LIST_OF_FILE;
    }
    return false;
}

int ZipArchive::unpackEntry(ArchiveReader &reader, vorn::EntrySink &sink)
{
    const QString name = entryName(reader);
    bool isWanted = sink.begin({.name = name, .date = vorn::fromEntryDate(reader.entry().date)});
    int count = 0;
    if (isWanted) {
        std::array<char, kReadSize> buffer = {};
        do {
            count = reader.readEntry(buffer);
            if (count >= 0)
                isWanted = sink.write({buffer.data(), count});
        } while (isWanted && count > 0);
    }
    reportSinkFailure(sink.takeFailure());
    const int closing = reader.closeEntry();
    if (count < 0)
        reportBadEntry(&reader, QStringLiteral("Failed to read zip file"));
    else if (closing != UNZ_OK)
        reportBadEntry(&reader, QStringLiteral("file was unzipped but failed crc check"));
    int result = count < 0 ? count : closing;
    sink.end(isWanted && result == UNZ_OK);
    reportSinkFailure(sink.takeFailure());
    if (result != UNZ_OK)
        return result;

    result = reader.goToNextEntry();
    if (result != UNZ_OK && result != UNZ_END_OF_LIST_OF_FILE)
        reportBadEntry(&reader, kBadInformation);
    return result;
}

std::shared_ptr<ArchiveReader> ZipArchive::startWalk()
{
    m_firstFailure = {};
    m_hasWalkFailed = false;
    if (!m_unzFile || m_unzFile->goToFirstEntry(m_limits.entries) != UNZ_OK)
        report({.kind = Kind::NoArchive}, QStringLiteral("Failed"));
    return m_unzFile;
}

bool ZipArchive::openEntry(ArchiveReader *reader, const QString &failureText)
{
    const auto opened = reader ? reader->openEntry() : ArchiveReader::Opened::No;
    if (opened == ArchiveReader::Opened::No)
        reportBadEntry(reader, failureText);
    if (opened == ArchiveReader::Opened::BadInformation)
        reportBadEntry(reader, kBadInformation);
    return opened == ArchiveReader::Opened::Yes;
}

QString ZipArchive::entryName(const ArchiveReader &reader) const
{
    const ArchiveReader::EntryInfo &entry = reader.entry();
    QString name = m_nameCodec->decode(entry.name, entry.isUtf8);
    // Separators are looked for in the decoded text: in GBK, 0x5C is also a trail byte.
    return name.replace(u'\\', u'/');
}

void ZipArchive::reportBadEntry(const ArchiveReader *reader, const QString &text)
{
    report({.kind = Kind::BadEntry, .text = reader ? entryName(*reader) : QString()}, text);
}

void ZipArchive::reportSinkFailure(const ArchiveFailure &failure)
{
    if (failure)
        report(failure, failure.kind == Kind::TooLarge
                            ? kNotOpened
                            : QStringLiteral("Failed to open output file for writing"));
}

void ZipArchive::report(const ArchiveFailure &failure, const QString &text)
{
    if (!m_firstFailure)
        m_firstFailure = failure;
    // What cannot be read is not to be called damaged.
    const int readError = m_unzFile ? m_unzFile->readError() : m_openError;
    if (readError != 0 &&
        (m_firstFailure.kind == Kind::NoArchive || m_firstFailure.kind == Kind::BadEntry))
        m_firstFailure = {.kind = Kind::NotRead, .code = readError};
    // A name taken by something of another kind is reported, but leaves the result as it is.
    m_hasWalkFailed = m_hasWalkFailed || failure.kind != Kind::NameTaken;
    qCWarning(logArchive) << qUtf8Printable(text) << failure.text
                          << (failure.code != 0 ? std::strerror(failure.code) : "");
    OutputErrorMessage(text);
}
