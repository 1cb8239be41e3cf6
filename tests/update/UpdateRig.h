#pragma once

#include "serial/ORSSerialPort.h"
#include "simulator/SimulatedDevice.h"
#include "tests/support/Eventually.h"
#include "tests/support/QtPrinting.h"
#include "update/UpdateTexts.h"
#include "update/Updater.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

namespace vorn {

using namespace std::chrono_literals;

inline const QString kRtsHigh = "RTS high";
inline const QString kRtsLow = "RTS low";
inline const QStringList kPulse{kRtsHigh, kRtsLow};

// Waits that only a hanging test reaches.
inline UpdateTimings patientTimings()
{
    return {
        .resetPulse = 2ms, .bootLoaderStart = 2ms, .answer = 20s, .erase = 20s, .answerGap = 2s};
}

// A device with one option that is not the default.
template <typename Value>
DeviceOptions with(Value DeviceOptions::*option, std::type_identity_t<Value> value)
{
    DeviceOptions options;
    options.*option = std::move(value);
    return options;
}

// A simulated device, a port on its terminal and an updater, as the program wires them, and what
// its user would see.
class UpdateRig final : public ORSSerialPortDelegate, public UpdateObserver
{
public:
    explicit UpdateRig(const DeviceOptions &options = {},
                       const UpdateTimings &timings = patientTimings())
        : device(options), updater(std::make_unique<Updater>(this, timings))
    {
        QString problem;
        EXPECT_TRUE(device.start(&problem)) << qPrintable(problem);
        openPort();
    }
    ~UpdateRig() override { closePort(); }

    // A new port on the device's present terminal.
    void openPort()
    {
        SerialDevice record;
        record.calloutDevice = device.slavePath();
        record.ttyDevice = "usbserial-test";
        port = ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(record));
        port->setDelegate(this);
        QObject::connect(port.get(), &ORSSerialPort::RTSChanged, &m_context,
                         [this, on = false]() mutable {
                             on = !on;
                             events.append(on ? kRtsHigh : kRtsLow);
                         });
        QObject::connect(port.get(), &ORSSerialPort::fileDescriptorChanged, &m_context, [this] {
            if (updater && port && !port->isOpen())
                updater->portWasClosed();
        });
        port->open();
        EXPECT_TRUE(port->isOpen());
    }
    void closePort()
    {
        if (port)
            port->close();
        EXPECT_TRUE(eventually([&] { return !port || !port->isOpen(); }));
    }

    void update(qsizetype length)
    {
        image.clear();
        for (qsizetype i = 0; i < length; ++i)
            image.append(static_cast<char>((i * 7 + i / 251) % 256));
        QFile file(imagePath);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(image) == length);
        file.close();
        updater->startUpdate(port, imagePath);
    }
    // The result of the so-many-th run.
    UpdateResult result(std::size_t run = 1)
    {
        EXPECT_TRUE(eventually([&] { return results.size() >= run; })) << "the run does not end";
        return results.size() < run ? UpdateResult() : results[run - 1];
    }
    // The so-many-th run puts the image into the device.
    void expectUpdated(std::size_t run = 1)
    {
        const UpdateResult end = result(run);
        EXPECT_TRUE(end.succeeded()) << qPrintable(end.description);
        EXPECT_EQ(end.description, QString());
        EXPECT_TRUE(device.report().image == image);
        EXPECT_EQ(device.report().errors, QStringList());
        EXPECT_EQ(progress.back(), 100);
    }
    // Time for a closing pulse or a late text.
    void settle() const { runEventLoopFor(50ms); }

    // ORSSerialPortDelegate
    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data) override
    {
        if (updater)
            updater->serialPortDidReceiveData(data);
        onChunk();
    }

    // UpdateObserver
    void showUpdateText(const QString &text) override { events.append(text); }
    void updateDidBegin() override { progress.clear(); }
    void updateDidProgress(int percent) override
    {
        EXPECT_GT(percent, progress.empty() ? -1 : progress.back());
        progress.push_back(percent);
    }
    void updateIsErasing() override
    {
        ++erasings;
        onErasing();
    }
    void updateDidEnd(const UpdateResult &result) override
    {
        EXPECT_FALSE(updater->isUpdating());
        results.push_back(result);
    }
    void versionQueryDidEnd() override { ++endedQueries; }

    const QTemporaryDir folder;
    const QString imagePath = folder.filePath("VORN-image.bin");
    QByteArray image; // of the latest run
    SimulatedDevice device;
    ORSSerialPortPtr port;
    std::unique_ptr<Updater> updater;

    QStringList events; // texts and changes of RTS
    std::vector<int> progress;
    std::vector<UpdateResult> results;
    int erasings = 0;
    int endedQueries = 0;
    std::function<void()> onChunk = [] {};
    std::function<void()> onErasing = [] {};

private:
    QObject m_context;
};

} // namespace vorn
