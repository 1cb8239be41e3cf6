#include "ziparchive/ArchiveReader.h"
#include "ziparchive/EntryDate.h"
#include "ziparchive/EntryNameCodec.h"
#include "ziparchive/FolderSink.h"
#include "ziparchive/MemorySink.h"
#include "ziparchive/ZipArchive.h"

#include <array>

using vorn::ArchiveReader;

namespace {

constexpr std::size_t kReadSize = 4096;

} // namespace

QStringList ZipArchive::getZipFileContents()
{
    const auto reader = m_unzFile;
    QStringList names;
    constexpr qsizetype kUsualCount = 40;
    names.reserve(kUsualCount);
    goToFirstEntry(reader.get());
    while (openEntry(reader.get(), "Error occured")) {
        names.append(entryName(*reader));
        const int closing = reader->closeEntry();
        if (closing != UNZ_OK) {
            OutputErrorMessage(QStringLiteral("Error while closing current file %1").arg(closing));
            break;
        }
        const int moving = reader->goToNextEntry();
        if (moving != UNZ_OK && moving != UNZ_END_OF_LIST_OF_FILE)
            OutputErrorMessage(QStringLiteral("Error while going to next file %1").arg(moving));
        if (moving != UNZ_OK)
            break;
    }
    return names;
}

bool ZipArchive::UnzipFileTo(const QString &path, bool overWrite)
{
    vorn::FolderSink::Options options;
    options.path = path;
    options.maxBytes = m_limits.bytesOnDisk;
    if (!overWrite)
        options.mayReplace = [this](const QString &file) { return OverWrite(file); };
    options.report = [this](const QString &message) { OutputErrorMessage(message); };
    options.written = [this](const QString &file) { m_unzippedFiles.append(file); };
    vorn::FolderSink sink(*m_fileManager, std::move(options));
    return unpack(sink) && !sink.hasFailed();
}

QHash<QString, QByteArray> ZipArchive::UnzipFileToMemory()
{
    vorn::MemorySink sink(m_limits.bytesInMemory);
    unpack(sink);
    return sink.contents();
}

bool ZipArchive::unpack(vorn::EntrySink &sink)
{
    const auto reader = m_unzFile;
    quint32 counter = 0;
    goToFirstEntry(reader.get());
    while (openEntry(reader.get(), "Error occurs")) {
        if (counter == 0) {
            if (const auto objection = sink.objectionTo(reader->totalSize())) {
                reader->closeEntry();
                OutputErrorMessage(*objection);
                return false;
            }
        }
        const int result = unpackEntry(*reader, sink);
        ++counter;
        if (m_progressBlock && m_numFiles != 0)
            m_progressBlock(static_cast<qint32>(quint64{counter} * 100 / m_numFiles), counter,
                            m_numFiles);
        if (result != UNZ_OK)
            return result == UNZ_END_OF_LIST_OF_FILE;
    }
    return false;
}

int ZipArchive::unpackEntry(ArchiveReader &reader, vorn::EntrySink &sink)
{
    const QString name = entryName(reader);
    bool isWanted = sink.begin({.name = name,
                                .isFolder = name.endsWith(u'/'),
                                .date = vorn::fromEntryDate(reader.entry().date)});
    int count = 0;
    if (isWanted) {
        std::array<char, kReadSize> buffer = {};
        do {
            count = reader.readEntry(buffer);
            if (count >= 0)
                isWanted = sink.write({buffer.data(), count});
        } while (isWanted && count > 0);
    }
    const int closing = reader.closeEntry();
    if (count < 0)
        OutputErrorMessage(QStringLiteral("Failed to read zip file"));
    else if (closing != UNZ_OK)
        OutputErrorMessage(QStringLiteral("file was unzipped but failed crc check"));
    int result = count < 0 ? count : closing;
    sink.end(isWanted && result == UNZ_OK);
    if (result != UNZ_OK)
        return result;

    result = reader.goToNextEntry();
    if (result != UNZ_OK && result != UNZ_END_OF_LIST_OF_FILE)
        OutputErrorMessage(QStringLiteral("Error occurs while getting file info"));
    return result;
}

void ZipArchive::goToFirstEntry(ArchiveReader *reader)
{
    if (!reader || reader->goToFirstEntry(m_limits.entries) != UNZ_OK)
        OutputErrorMessage(QStringLiteral("Failed"));
}

bool ZipArchive::openEntry(ArchiveReader *reader, const char *failureText)
{
    const auto opened = reader ? reader->openEntry(passwordBytes()) : ArchiveReader::Opened::No;
    if (opened == ArchiveReader::Opened::No)
        OutputErrorMessage(QString::fromLatin1(failureText));
    if (opened == ArchiveReader::Opened::BadInformation)
        OutputErrorMessage(QStringLiteral("Error occurs while getting file info"));
    return opened == ArchiveReader::Opened::Yes;
}

QString ZipArchive::entryName(const ArchiveReader &reader) const
{
    const ArchiveReader::Entry &entry = reader.entry();
    QString name = m_nameCodec->decode(entry.name, entry.isUtf8);
    // Separators are looked for in the text: in GBK, "\" is also the second byte of letters.
    return name.replace(u'\\', u'/');
}
