#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vorn {

// The folder that holds the firmware files, inside the caches directory. The scan always uses this
// name; it is also where a package without a top folder of its own is unpacked to.
inline constexpr QLatin1StringView firmwareFolderName("VornUpdate2");

// The firmware files of the local firmware folder, sorted by the model prefix of their names.
//
// readFirmWare() and the lists may be used on any thread; the object itself is destroyed on the
// main thread. Lists are handed out as copies.
class FirmwareLibrary
{
public:
    // Told, on the main thread, the names that a list of firmware for this model code shows behind
    // its placeholder item.
    using Refill = std::function<void(qint32 modelCode, const QStringList &titles)>;

    explicit FirmwareLibrary(Refill refill);

    // Scans the folder, rebuilds the lists and queues the refill on the main queue. True when at
    // least one entry was found. A folder that is missing, unreadable or empty queues no refill and
    // leaves the lists by model as they were.
    bool readFirmWare(qint32 modelCode);

    // Every firmware file, in folder order; no value when the folder could not be read.
    std::optional<QStringList> allFileArray() const;
    // Names that begin "VORN_I-".
    QStringList vorn_I_fileArray() const;
    // Names that begin "VORN-". A scan adds to this list and never empties it; no model shows it.
    QStringList vorn_fileArray() const;
    // Names that begin "VORN_PLATINA-".
    QStringList vorn_platina_fileArray() const;

private:
    QStringList titlesForModel(qint32 modelCode) const;

    // Held by the library alone: a refill that is still queued when it is gone does nothing.
    const std::shared_ptr<const Refill> m_refill;
    mutable std::mutex m_mutex;
    std::optional<QStringList> m_allFileArray;
    QStringList m_vorn_I_fileArray;
    QStringList m_vorn_fileArray;
    QStringList m_vorn_platina_fileArray;
};

} // namespace vorn
