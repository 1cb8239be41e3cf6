#pragma once

#include "app/ViewController.h"
#include "platform/Directories.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "simulator/SimulatedDevice.h"
#include "tests/support/Eventually.h"
#include "tests/support/TestImage.h"
#include "tests/ziparchive/Tree.h"
#include "window/MainWindow.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace vorn {

using namespace std::chrono_literals;

inline QString firmwareFolder()
{
    return cachesDirectory() + "/VornUpdate2";
}

inline QByteArray writeFirmware(const QString &name, qsizetype size)
{
    writeFile(firmwareFolder() + QLatin1Char('/') + name, imageOf(size));
    return imageOf(size);
}

inline const QString kImage = "VORN_PLATINA-1.bin";
inline const QString kOtherModelsImage = "VORN_I-1.bin";
inline const QStringList kTitles{"No firmware selected",
                                 kImage}; // once the device has told its model

// The window with its controller, on simulated devices.
struct WindowTest : testing::Test
{
    static void SetUpTestSuite()
    {
        SerialDeviceRegistry::setSystem(
            std::make_unique<DirectoryDeviceRegistry>(kDeviceDirectory.path()));
        // Before any device is there, so that each one's coming is told of.
        ORSSerialPortManager::sharedSerialPortManager();
    }
    void SetUp() override
    {
        QDir(firmwareFolder()).removeRecursively();
        image = writeFirmware(kImage, 65536);
        writeFirmware(kOtherModelsImage, 10);
    }

    // The devices of one test must be gone before the next one plugs in its own.
    void TearDown() override
    {
        device.reset();
        EXPECT_TRUE(eventually([] {
            return ORSSerialPortManager::sharedSerialPortManager().availablePorts().isEmpty();
        }));
    }

    void show()
    {
        BootParameters parameters = kVornBoot;
        parameters.answerLimit = 800ms;
        parameters.eraseLimit = 5s;
        controller = std::make_unique<ViewController>(window, packages, parameters);
        controller->viewDidLoad();
        window.show();
    }
    static DeviceOptions deviceNamed(const QString &name)
    {
        DeviceOptions options;
        options.directory = kDeviceDirectory.path();
        options.name = name;
        return options;
    }
    void plugIn(const DeviceOptions &options = deviceNamed("usbserial-one"))
    {
        device = std::make_unique<SimulatedDevice>(options);
        QString problem;
        ASSERT_TRUE(device->start(&problem)) << qPrintable(problem);
        show();
        ASSERT_TRUE(eventually(
            [&] { return connection->text() == "Prompt:usbserial-one Selected,not opened"; }));
    }
    void open()
    {
        press(openButton);
        ASSERT_TRUE(eventually([&] { return says(connection, "opened successfully"); }));
    }
    void choose()
    {
        firmware->setFocus();
        QTest::keyClick(firmware, Qt::Key_Down);
        ASSERT_EQ(firmware->currentText(), kImage);
        ASSERT_EQ(choice->text(), "Prompt:Firmware selected");
    }
    // A device that is open, and the file for it chosen.
    void openAndChoose(const char *fault = nullptr)
    {
        DeviceOptions options = deviceNamed("usbserial-one");
        if (fault)
            options.faults = {*parseFault(fault, nullptr)};
        ASSERT_NO_FATAL_FAILURE(plugIn(options));
        open();
        // The list follows the device half a second after the opening; a choice before is lost.
        ASSERT_TRUE(eventually([&] { return titles(firmware) == kTitles; }));
        choose();
    }
    // Null before the first question.
    QMessageBox *question() const { return window.findChild<QMessageBox *>(); }
    // Presses the second, destructive button of the question that is shown.
    void confirm() const
    {
        for (QAbstractButton *button : question()->buttons()) {
            if (question()->buttonRole(button) == QMessageBox::DestructiveRole)
                QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    static void press(QPushButton *button) { QTest::mouseClick(button, Qt::LeftButton); }
    static bool says(const QLabel *line, const char *text)
    {
        return line->text().contains(QLatin1StringView(text));
    }
    // What the line below the status says; `line` is "connection", "firmware" or "update".
    bool explains(const char *line, const char *text) const
    {
        return says(window.findChild<QLabel *>(QLatin1StringView(line) + "Details"), text);
    }
    static QStringList titles(const QComboBox *list)
    {
        QStringList all;
        for (int i = 0; i < list->count(); ++i)
            all.append(list->itemText(i));
        return all;
    }

    static inline const QTemporaryDir kDeviceDirectory;
    PackageLocation packages;
    MainWindow window;
    std::unique_ptr<ViewController> controller;
    std::unique_ptr<SimulatedDevice> device;
    QByteArray image;
    StatusLine *const connection = window.findChild<StatusLine *>("connectText_1001");
    StatusLine *const choice = window.findChild<StatusLine *>("perText_1012");
    StatusLine *const status = window.findChild<StatusLine *>("updateText_1015");
    QComboBox *const firmware = window.findChild<QComboBox *>("firmwareList_1002");
    QComboBox *const devices = window.findChild<QComboBox *>("deviceList_1010");
    QPushButton *const openButton = window.findChild<QPushButton *>("openButton_1011");
    QPushButton *const updateButton = window.findChild<QPushButton *>("updateButton_2001");
    QPushButton *const downloadButton = window.findChild<QPushButton *>("downloadButton_2002");
    QProgressBar *const progress = window.findChild<QProgressBar *>("updateProgress");
};

} // namespace vorn
