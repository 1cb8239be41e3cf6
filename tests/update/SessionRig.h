#pragma once

#include "simulator/SimulatedDevice.h"
#include "tests/support/Eventually.h"
#include "tests/support/PatientParameters.h"
#include "tests/support/QtPrinting.h"
#include "tests/support/TestImage.h"
#include "tests/ziparchive/Tree.h"
#include "update/DeviceSession.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace vorn {

using namespace std::chrono_literals;

// A simulated device and an open session on its terminal whose version query has ended.
class SessionRig final : public DeviceSessionObserver
{
public:
    explicit SessionRig(const DeviceOptions &options = {},
                        const BootParameters &parameters = patientParameters())
        : device(options), m_parameters(parameters)
    {
        EXPECT_TRUE(device.start());
        open();
    }
    ~SessionRig() { session.reset(); }

    // A new session on the device's present terminal, whose version query has ended.
    void open()
    {
        const int queriesBefore = queries;
        const auto framesBefore = device.report().frames;
        SerialDevice record;
        record.calloutDevice = device.slavePath();
        record.ttyDevice = "usbserial-test";
        session = std::make_unique<DeviceSession>(
            ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(record)), *this,
            m_parameters);
        // An earlier session's port may be closing still.
        EXPECT_TRUE(eventually([&] { return session->open(); }));
        // Nobody waits for the query's last answer, and an update must not take it for its first.
        EXPECT_TRUE(eventually([&] {
            const DeviceReport report = device.report();
            return queries > queriesBefore &&
                   (report.frames >= framesBefore + 2 || report.replay.entries > 0);
        }));
        device.awaitReader();
    }
    void update(qsizetype length)
    {
        image = imageOf(length);
        writeFile(imagePath, image);
        session->startUpdate(imagePath);
    }
    // The result of the so-many-th update.
    UpdateResult result(std::size_t number = 1)
    {
        EXPECT_TRUE(eventually([&] { return results.size() >= number; })) << "no end";
        return results.size() < number ? UpdateResult() : results[number - 1];
    }
    // The so-many-th update puts the image into the device.
    void expectUpdated(std::size_t number = 1)
    {
        const UpdateResult end = result(number);
        EXPECT_TRUE(end.succeeded()) << "failure " << static_cast<int>(end.failure.kind)
                                     << " at step " << static_cast<int>(end.step);
        EXPECT_TRUE(device.report().image == image);
        EXPECT_EQ(device.report().errors, QStringList());
    }

    // DeviceSessionObserver
    void deviceDidReopen() override { ++reopenings; }
    void deviceDidClose(bool onRequest) override
    {
        closings.push_back(onRequest);
        onClose();
    }
    void deviceDidReportError(const ORSSerialPortError &) override { onError(); }
    void targetVersionDidArrive(qint32 version) override { targetVersion = version; }
    void versionQueryDidEnd(const UpdateResult &result) override
    {
        ++queries;
        queryResult = result;
    }
    void updateDidProgress(const UpdateProgress &progress) override { onProgress(progress); }
    void updateDidEnd(const UpdateResult &result) override
    {
        EXPECT_FALSE(session->isUpdating());
        results.push_back(result);
    }

    const QTemporaryDir folder;
    const QString imagePath = folder.filePath("VORN-image.bin");
    QByteArray image; // of the latest update
    SimulatedDevice device;

    std::vector<UpdateResult> results;
    std::vector<bool> closings;
    UpdateResult queryResult;
    qint32 targetVersion = -1;
    int queries = 0;
    int reopenings = 0;
    std::function<void()> onClose = [] {};
    std::function<void()> onError = [] {};
    std::function<void(const UpdateProgress &)> onProgress = [](const auto &) {};
    std::unique_ptr<DeviceSession> session;

private:
    const BootParameters m_parameters;
};

} // namespace vorn
