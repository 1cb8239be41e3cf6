#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QMap>
#include <QTemporaryDir>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace vorn {

// What a fuzz target says of its results: a breach is a finding, like a sanitizer's.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

// A work folder that goes with the process.
class FuzzFolder : public QTemporaryDir
{
public:
    FuzzFolder() : QTemporaryDir(QStringLiteral("/dev/shm/vorn-fuzz-XXXXXX"))
    {
        require(isValid());
        QLoggingCategory::setFilterRules(QStringLiteral("vorn.*=false"));
    }
};

// Everything below a folder by its path from there; a folder's ends in "/".
using FuzzFiles = QMap<QString, QByteArray>;

inline void writeFile(const QString &path, QByteArrayView bytes)
{
    QFile file(path);
    require(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
            file.write(bytes.data(), bytes.size()) == bytes.size());
}

// There must be nothing but files and folders.
inline FuzzFiles filesIn(const QString &folder)
{
    FuzzFiles files;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo item(it.next());
        const QString name = item.filePath().mid(folder.size() + 1);
        QFile file(item.filePath());
        require(!item.isSymLink());
        if (item.isDir()) {
            files[name + u'/'];
            continue;
        }
        require(item.isFile() && file.open(QIODevice::ReadOnly));
        files[name] = file.readAll();
    }
    return files;
}

// Cuts a fuzzer's input into the arguments that a target needs. Behind its end come zeros.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : m_rest(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
    {
    }

    bool isAtEnd() const { return m_rest.isEmpty(); }
    int byte()
    {
        const QByteArrayView taken = bytes(1);
        return taken.isEmpty() ? 0 : static_cast<std::uint8_t>(taken.front());
    }
    // At most that many.
    QByteArrayView bytes(qsizetype count)
    {
        const QByteArrayView taken = m_rest.first(std::min(count, m_rest.size()));
        m_rest = m_rest.sliced(taken.size());
        return taken;
    }
    QByteArrayView rest() { return bytes(m_rest.size()); }

private:
    QByteArrayView m_rest;
};

} // namespace vorn
