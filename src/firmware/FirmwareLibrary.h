#pragma once

#include "firmware/FirmwareFolder.h"
#include "platform/Lifetime.h"

#include <optional>

namespace vorn {

// Told of the firmware for the connected device. Called on the main thread.
class FirmwareLibraryObserver
{
public:
    // The names of the files to offer, for the model code that was asked for.
    virtual void firmwareListDidChange(const QStringList &files) = 0;
    // A scan in the background found the folder missing, unreadable or empty.
    virtual void firmwareFolderIsEmpty() {}

protected:
    virtual ~FirmwareLibraryObserver() = default;
};

// The firmware files of the firmware folder, sorted by the model prefixes of their names. Main
// thread only.
class FirmwareLibrary
{
public:
    // `observer` outlives the library.
    explicit FirmwareLibrary(FirmwareLibraryObserver &observer) : m_observer(observer) {}

    // Scans the folder, rebuilds the lists, and tells the observer from the event loop which files
    // this model takes. True when the folder has at least one entry. A folder that is missing,
    // unreadable or empty leaves the lists by prefix as they were, and the observer is not called.
    bool readFirmWare(qint32 modelCode);
    // The same with the folder read on a background thread. The result is dropped when a scan that
    // started later has been taken over meanwhile.
    void readFirmWareInBackground(qint32 modelCode);

    bool hasStartedScan() const { return m_lastStarted > 0; }
    // Every firmware file, in folder order; no value when the folder could not be read.
    const std::optional<QStringList> &allFileArray() const { return m_allFileArray; }
    // Why it could not, by the latest scan: an errno, 0 when it could.
    int scanError() const { return m_scanError; }
    // Names that begin "VORN_I-".
    const QStringList &vorn_I_fileArray() const { return m_vorn_I_fileArray; }
    // Names that begin "VORN-". Each scan adds to this list and none empties it; no model shows it.
    const QStringList &vorn_fileArray() const { return m_vorn_fileArray; }
    // Names that begin "VORN_PLATINA-".
    const QStringList &vorn_platina_fileArray() const { return m_vorn_platina_fileArray; }

private:
    bool takeOver(const FirmwareScan &scan, quint64 number);

    FirmwareLibraryObserver &m_observer;
    std::optional<QStringList> m_allFileArray;
    int m_scanError = 0;
    QStringList m_vorn_I_fileArray;
    QStringList m_vorn_fileArray;
    QStringList m_vorn_platina_fileArray;
    // Scans are numbered as they start.
    quint64 m_lastStarted = 0;
    quint64 m_lastTakenOver = 0;
    Lifetime m_lifetime;
};

} // namespace vorn
