#include "firmware/FirmwareLibrary.h"

#include "firmware/PackageLog.h"
#include "platform/Directories.h"
#include "platform/MainQueue.h"

#include <QFile>

#include <dirent.h>

#include <cerrno>
#include <cstring>

namespace vorn {

namespace {

struct DirCloser
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

// The names in a folder, in the order the file system gives them (which Qt's own listing does not
// promise); no value when the folder cannot be read.
std::optional<QList<QByteArray>> folderEntries(const QString &path)
{
    const std::unique_ptr<DIR, DirCloser> folder(::opendir(QFile::encodeName(path).constData()));
    if (!folder) {
        qCDebug(packagesLog, "%s: %s", qUtf8Printable(path), std::strerror(errno));
        return std::nullopt;
    }
    QList<QByteArray> names;
    for (;;) {
        errno = 0;
        const dirent *entry = ::readdir(folder.get());
        if (!entry)
            break;
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    if (errno != 0) {
        qCWarning(packagesLog, "%s: %s", qUtf8Printable(path), std::strerror(errno));
        return std::nullopt;
    }
    return names;
}

bool isFirmwareFile(const QByteArray &name)
{
    return name.mid(name.lastIndexOf('.') + 1) == "bin";
}

QStringList firmwareFiles(const QList<QByteArray> &entries)
{
    QStringList names;
    for (const QByteArray &entry : entries) {
        if (!isFirmwareFile(entry))
            continue;
        const QString name = QFile::decodeName(entry);
        // A name that does not survive as text could be listed but never opened.
        if (QFile::encodeName(name) == entry)
            names.append(name);
        else
            qCWarning(packagesLog) << "left out, the name is not text:" << entry;
    }
    return names;
}

} // namespace

FirmwareLibrary::FirmwareLibrary(Refill refill)
    : m_refill(std::make_shared<const Refill>(std::move(refill)))
{
}

bool FirmwareLibrary::readFirmWare(qint32 modelCode)
{
    // Held to the end, so that refills are queued in the order of their scans.
    const std::lock_guard lock(m_mutex);
    const auto entries = folderEntries(cachesDirectory() + u'/' + firmwareFolderName);
    if (!entries) {
        m_allFileArray.reset();
        return false;
    }
    m_allFileArray = firmwareFiles(*entries);
    if (entries->isEmpty())
        return false;

    m_vorn_I_fileArray.clear();
    m_vorn_platina_fileArray.clear();
    for (const QString &name : std::as_const(*m_allFileArray))
        if (name.startsWith(u"VORN_I-"))
            m_vorn_I_fileArray.append(name);
        else if (name.startsWith(u"VORN-"))
            m_vorn_fileArray.append(name);
        else if (name.startsWith(u"VORN_PLATINA-"))
            m_vorn_platina_fileArray.append(name);

    MainQueue::instance().post(
        [refill = std::weak_ptr(m_refill), modelCode, titles = titlesForModel(modelCode)] {
            if (const auto call = refill.lock(); call && *call)
                (*call)(modelCode, titles);
        });
    return true;
}

QStringList FirmwareLibrary::titlesForModel(qint32 modelCode) const
{
    switch (modelCode) {
    case -1:
    case 0:
        return m_allFileArray.value_or(QStringList());
    case 1:
    case 2: // shows the same list as 1; vorn_fileArray is kept but never shown
        return m_vorn_I_fileArray;
    case 8:
        return m_vorn_platina_fileArray;
    default:
        return {};
    }
}

std::optional<QStringList> FirmwareLibrary::allFileArray() const
{
    const std::lock_guard lock(m_mutex);
    return m_allFileArray;
}

QStringList FirmwareLibrary::vorn_I_fileArray() const
{
    const std::lock_guard lock(m_mutex);
    return m_vorn_I_fileArray;
}

QStringList FirmwareLibrary::vorn_fileArray() const
{
    const std::lock_guard lock(m_mutex);
    return m_vorn_fileArray;
}

QStringList FirmwareLibrary::vorn_platina_fileArray() const
{
    const std::lock_guard lock(m_mutex);
    return m_vorn_platina_fileArray;
}

} // namespace vorn
