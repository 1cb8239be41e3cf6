#include "firmware/FirmwareLibrary.h"

#include "firmware/FirmwareModels.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

namespace vorn {

bool FirmwareLibrary::readFirmWare(qint32 modelCode)
{
    if (!takeOver(scanFirmwareFolder(), ++m_lastStarted))
        return false;
    MainQueue::instance().post(m_lifetime.token(),
                               [this, files = firmwareForModel(*m_allFileArray, modelCode)] {
                                   m_observer.firmwareListDidChange(files);
                               });
    return true;
}

void FirmwareLibrary::readFirmWareInBackground(qint32 modelCode)
{
    GlobalQueue::instance().post([this, modelCode, number = ++m_lastStarted,
                                  token = m_lifetime.token()] {
        MainQueue::instance().post(token, [this, modelCode, number, scan = scanFirmwareFolder()] {
            if (number <= m_lastTakenOver)
                return;
            if (takeOver(scan, number))
                m_observer.firmwareListDidChange(firmwareForModel(scan.files, modelCode));
            else
                m_observer.firmwareFolderIsEmpty();
        });
    });
}

bool FirmwareLibrary::takeOver(const FirmwareScan &scan, quint64 number)
{
    m_lastTakenOver = number;
    m_scanError = scan.error;
    m_allFileArray.reset();
    if (scan.error != 0)
        return false;
    m_allFileArray = scan.files;
    if (scan.isEmpty)
        return false;

    m_vorn_I_fileArray.clear();
    m_vorn_platina_fileArray.clear();
    for (const QString &name : scan.files)
        if (name.startsWith(u"VORN_I-"))
            m_vorn_I_fileArray.append(name);
        else if (name.startsWith(u"VORN-"))
            m_vorn_fileArray.append(name);
        else if (name.startsWith(u"VORN_PLATINA-"))
            m_vorn_platina_fileArray.append(name);
    return true;
}

} // namespace vorn
