#pragma once

#include "update/BootLoaderLink.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>

namespace vorn {

// One update of a device, from the sync byte to the final acknowledgement, on a background thread.
// The device was reset by a pulse on RTS just before. Failures end the run; there are no retries.
class UpdateRun
{
public:
    // `imagePath` is null when no firmware file was chosen. The device's model code goes into
    // `targetVersion`.
    UpdateRun(BootLoaderLink link, QString imagePath,
              std::shared_ptr<std::atomic<qint32>> targetVersion);

    // Returns when the update has ended.
    UpdateResult run();

private:
    // Each step is true when the run goes on, and else has left its end in m_result.
    bool handshake();
    bool readImage();
    bool startDownload();
    bool waitForErase();
    bool sendData();
    bool sendLastData();
    bool finish();

    // Ends the run at this step because of the link's last verdict; always false.
    bool failAt(UpdateStep step, qint64 frame = -1);
    bool send(const QByteArray &frame, UpdateStep step, qint64 index = -1);
    void showProgress(qint64 frame);

    BootLoaderLink m_link;
    const QString m_imagePath;
    const std::shared_ptr<std::atomic<qint32>> m_targetVersion;
    QByteArray m_image;
    qint64 m_fullFrames = 0;
    int m_shownPercent = -1;
    UpdateResult m_result;
};

} // namespace vorn
