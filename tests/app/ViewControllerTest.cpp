// The whole window on simulated devices, pressed through its own controls.
#include "app/ViewController.h"
#include "app/MainWindow.h"
#include "platform/Directories.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "simulator/SimulatedDevice.h"
#include "tests/support/Eventually.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>

namespace vorn {
namespace {

using namespace std::chrono_literals;

// The directory whose entries are the devices of this process's port manager.
const QString &deviceDirectory()
{
    static const QTemporaryDir directory;
    static const QString path = [] {
        SerialDeviceRegistry::setSystem(
            std::make_unique<DirectoryDeviceRegistry>(directory.path()));
        return directory.path();
    }();
    return path;
}

QString firmwareFolder()
{
    return cachesDirectory() + "/VornUpdate2";
}

QByteArray writeFirmware(const QString &name, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    QDir().mkpath(firmwareFolder());
    QFile file(firmwareFolder() + QLatin1Char('/') + name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == size);
    return bytes;
}

DeviceOptions deviceNamed(const QString &name, int modelCode = 8)
{
    DeviceOptions options;
    options.directory = deviceDirectory();
    options.name = name;
    options.modelCode = modelCode;
    return options;
}

class WindowTest : public ::testing::Test
{
protected:
    WindowTest()
    {
        QDir(firmwareFolder()).removeRecursively();
        deviceDirectory();
        // Before any device is there, so that each one's coming is told of.
        ORSSerialPortManager::sharedSerialPortManager();
    }

    // The devices of one test must be gone before the next one plugs in its own.
    void TearDown() override
    {
        EXPECT_TRUE(eventually([] {
            return ORSSerialPortManager::sharedSerialPortManager().availablePorts().isEmpty();
        }));
    }

    void show()
    {
        UpdateTimings timings;
        timings.answer = 500ms;
        timings.erase = 1000ms;
        controller = std::make_unique<ViewController>(window, PackageLocation(), timings);
        controller->viewDidLoad();
        window.show();
    }
    void plugIn(SimulatedDevice &device)
    {
        QString problem;
        ASSERT_TRUE(device.start(&problem)) << qPrintable(problem);
    }
    void open()
    {
        press(openButton);
        ASSERT_TRUE(eventually([&] { return says(connection, "opened successfully"); }));
    }
    void choose(const QString &file)
    {
        ASSERT_TRUE(eventually([&] { return firmware->findText(file) > 0; }));
        firmware->setFocus();
        while (firmware->currentText() != file)
            QTest::keyClick(firmware, Qt::Key_Down);
        ASSERT_EQ(choice->text(), "Prompt:Firmware selected");
    }
    void plugInAndSelect(SimulatedDevice &device)
    {
        plugIn(device);
        if (!controller)
            show();
        ASSERT_TRUE(eventually([&] { return says(connection, "not opened"); }));
    }
    // The list follows the device half a second after the opening; a choice made before is lost.
    void openAndChoose(SimulatedDevice &device, const QString &file)
    {
        ASSERT_NO_FATAL_FAILURE(plugInAndSelect(device));
        open();
        const QStringList all = titles(firmware);
        ASSERT_TRUE(eventually([&] {
            return controller->targetVersion() == device.report().modelCode &&
                   titles(firmware) != all;
        }));
        choose(file);
    }
    static void press(QPushButton *button) { QTest::mouseClick(button, Qt::LeftButton); }
    static bool says(const QLabel *line, const char *text)
    {
        return line->text().contains(QLatin1StringView(text));
    }
    static QStringList titles(const QComboBox *list)
    {
        QStringList all;
        for (int i = 0; i < list->count(); ++i)
            all.append(list->itemText(i));
        return all;
    }
    template <typename Control>
    Control *control(const char *name)
    {
        return window.findChild<Control *>(QLatin1StringView(name));
    }

    MainWindow window;
    std::unique_ptr<ViewController> controller;
    QLabel *const connection = control<QLabel>("connectText_1001");
    QLabel *const choice = control<QLabel>("perText_1012");
    QLabel *const status = control<QLabel>("updateText_1015");
    QComboBox *const firmware = control<QComboBox>("firmwareList_1002");
    QComboBox *const devices = control<QComboBox>("deviceList_1010");
    QPushButton *const openButton = control<QPushButton>("openButton_1011");
    QPushButton *const updateButton = control<QPushButton>("updateButton_2001");
    QPushButton *const downloadButton = control<QPushButton>("downloadButton_2002");
    QProgressBar *const progress = control<QProgressBar>("updateProgress");
};

const QString kImage = "VORN_PLATINA-1.bin";

TEST_F(WindowTest, WithoutADeviceOrFirmwareEveryPressSaysWhatIsMissing)
{
    show();
    EXPECT_EQ(titles(devices), QStringList{"No device selected"});
    EXPECT_EQ(connection->text(), "Prompt:No device selected");
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_EQ(firmware->count(), 0);
    EXPECT_FALSE(downloadButton->isEnabled());
    EXPECT_FALSE(downloadButton->toolTip().isEmpty());

    press(openButton);
    EXPECT_EQ(connection->text(), "Prompt:No device selected");
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:No device selected");
}

TEST_F(WindowTest, AnUpdateFromTheButtonsPutsTheChosenFileIntoTheDevice)
{
    const QByteArray image = writeFirmware(kImage, 65536);
    writeFirmware("VORN_I-1.bin", 10);
    SimulatedDevice device(deviceNamed("usbserial-one"));
    plugIn(device);
    show();
    ASSERT_TRUE(eventually(
        [&] { return connection->text() == "Prompt:usbserial-one Selected,not opened"; }));
    EXPECT_EQ(titles(devices), QStringList(2, "usbserial-one"));
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:Device not opened");

    ASSERT_TRUE(eventually([&] { return firmware->count() == 3; }));
    open();
    EXPECT_EQ(openButton->text(), "Close");
    ASSERT_TRUE(eventually([&] {
        return titles(firmware) == QStringList{"No firmware selected", kImage};
    }));
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:No firmware selected");
    choose(kImage);
    EXPECT_EQ(device.report().exchanges, 1); // the version query

    press(updateButton);
    press(updateButton); // does nothing more
    ASSERT_TRUE(eventually([&] { return says(status, "successfully update"); }));
    EXPECT_EQ(status->text(), "Prompt:100% progress,successfully update");
    EXPECT_EQ(progress->value(), 100);
    EXPECT_EQ(device.report().image, image);
    EXPECT_EQ(device.report().updates, 1);
    EXPECT_EQ(device.report().exchanges, 2);
    EXPECT_EQ(device.report().errors, QStringList());

    press(openButton);
    ASSERT_TRUE(eventually(
        [&] { return connection->text() == "Prompt:usbserial-one Selected,close successfully"; }));
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_FALSE(controller->serialPort()->isOpen());
}

TEST_F(WindowTest, FirmwareThatAKilledProgramHadSetAsideIsBackAtTheStart)
{
    const QString leftover = cachesDirectory() + "/.VornUpdate2-staging-a";
    writeFirmware("VORN-1.bin", 10);
    ASSERT_TRUE(QDir().mkpath(leftover + "/set-aside"));
    ASSERT_TRUE(QDir().rename(firmwareFolder(), leftover + "/set-aside/VornUpdate2"));
    show();
    EXPECT_TRUE(eventually([&] { return firmware->findText("VORN-1.bin") > 0; }));
    EXPECT_FALSE(QFile::exists(leftover));
}

TEST_F(WindowTest, AFileThatCannotServeLeavesTheDeviceAlone)
{
    writeFirmware(kImage, 500);
    writeFirmware("VORN_I-1.bin", 10);
    SimulatedDevice device(deviceNamed("usbserial-one"));
    ASSERT_NO_FATAL_FAILURE(openAndChoose(device, kImage));
    const auto refused = [&] {
        status->clear();
        press(updateButton);
        return status->text() == "Prompt:Firmware update failed,please try again";
    };
    writeFirmware(kImage, 0);
    EXPECT_TRUE(refused());
    QFile::remove(firmwareFolder() + QLatin1Char('/') + kImage);
    EXPECT_TRUE(refused());
    EXPECT_FALSE(controller->serialPort()->RTS());
    EXPECT_EQ(device.report().exchanges, 1);
}

TEST_F(WindowTest, AfterACablePulledOutDuringAnUpdateTheNextOneSucceeds)
{
    const QByteArray image = writeFirmware(kImage, 5000);
    writeFirmware("VORN_I-1.bin", 10);
    SimulatedDevice device(deviceNamed("usbserial-one"));
    device.setFaults({*parseFault("frame:3=unplug,times=1", nullptr)});
    ASSERT_NO_FATAL_FAILURE(openAndChoose(device, kImage));
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return says(connection, "No device selected"); }));
    ASSERT_TRUE(eventually(
        [&] { return status->text() == "Prompt:Firmware update failed,please try again"; }));
    EXPECT_EQ(openButton->text(), "Open");

    ASSERT_TRUE(device.replug());
    ASSERT_TRUE(eventually([&] { return says(connection, "not opened"); }));
    open();
    ASSERT_TRUE(eventually([&] { return device.report().exchanges == 3; }));
    runEventLoopFor(600ms); // the list is filled again for the device, half a second after opening
    choose(kImage);
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return says(status, "successfully update"); }));
    EXPECT_EQ(device.report().image, image);
}

TEST_F(WindowTest, ClosingThePortDuringAnUpdateEndsItAndSaysSo)
{
    writeFirmware(kImage, 65536);
    writeFirmware("VORN_I-1.bin", 10);
    SimulatedDevice device(deviceNamed("usbserial-one"));
    device.setFaults({*parseFault("frame:20=silence,times=1", nullptr)});
    ASSERT_NO_FATAL_FAILURE(openAndChoose(device, kImage));
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return device.report().downloadFrames == 20; }));
    press(openButton);
    ASSERT_TRUE(eventually([&] { return says(connection, "close successfully"); }));
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); }));
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_LT(progress->value(), 100);
}

TEST_F(WindowTest, ClosingTheWindowDuringAnUpdateAsksFirst)
{
    writeFirmware(kImage, 65536);
    writeFirmware("VORN_I-1.bin", 10);
    SimulatedDevice device(deviceNamed("usbserial-one"));
    device.setFaults({*parseFault("frame:20=silence,times=2", nullptr)});
    ASSERT_NO_FATAL_FAILURE(openAndChoose(device, kImage));
    const auto *question = window.findChild<QMessageBox *>();
    const auto closeDuringUpdate = [&] {
        press(updateButton);
        ASSERT_TRUE(eventually([&] { return says(status, "progress,updating"); }));
        EXPECT_FALSE(window.close());
        EXPECT_TRUE(question->isVisible());
    };

    ASSERT_NO_FATAL_FAILURE(closeDuringUpdate());
    QTest::keyClick(question->defaultButton(), Qt::Key_Return);
    EXPECT_FALSE(question->isVisible());
    EXPECT_FALSE(window.close());
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); }));
    EXPECT_TRUE(eventually([&] { return !question->isVisible(); }));
    EXPECT_TRUE(window.isVisible());

    ASSERT_NO_FATAL_FAILURE(closeDuringUpdate());
    for (QAbstractButton *button : question->buttons()) {
        if (question->buttonRole(button) == QMessageBox::DestructiveRole)
            QTest::mouseClick(button, Qt::LeftButton);
    }
    EXPECT_FALSE(window.isVisible());
}

TEST_F(WindowTest, ADeviceThatTellsItsModelLateGetsItsListLate)
{
    writeFirmware(kImage, 500);
    writeFirmware("VORN_I-1.bin", 10);
    DeviceOptions options = deviceNamed("usbserial-one", 2);
    options.answerDelay = 300ms; // sync and connect together take longer than the first filling
    SimulatedDevice device(options);
    ASSERT_NO_FATAL_FAILURE(plugInAndSelect(device));
    open();
    EXPECT_TRUE(eventually([&] {
        return titles(firmware) == QStringList{"No firmware selected", "VORN_I-1.bin"};
    }));
}

TEST_F(WindowTest, APortThatAnotherProgramHoldsFailsToOpen)
{
    SimulatedDevice device(deviceNamed("usbserial-one"));
    ASSERT_NO_FATAL_FAILURE(plugInAndSelect(device));
    const FileDescriptor other(
        ::open(QFile::encodeName(device.slavePath()).constData(), O_RDWR | O_NOCTTY));
    ASSERT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
    press(openButton);
    EXPECT_EQ(connection->text(), "Prompt:usbserial-one Selected,failed to open,please try again");
    EXPECT_EQ(openButton->text(), "Open");
}

TEST_F(WindowTest, AnotherDeviceThatComesClosesTheOpenPortAndKeepsTheButton)
{
    SimulatedDevice first(deviceNamed("usbserial-one"));
    ASSERT_NO_FATAL_FAILURE(plugInAndSelect(first));
    open();
    const ORSSerialPortPtr port = controller->serialPort();
    SimulatedDevice other(deviceNamed("x"));
    plugIn(other);
    ASSERT_TRUE(eventually([&] { return says(connection, "usbserial-one Selected,not opened"); }));
    ASSERT_TRUE(eventually([&] { return !port->isOpen(); }));
    EXPECT_EQ(openButton->text(), "Close");
    press(openButton);
    EXPECT_FALSE(port->isOpen());
    EXPECT_EQ(titles(devices), QStringList(2, "usbserial-one"));
}

TEST_F(WindowTest, TheFirstControlWithATagIsFoundParentsBeforeTheirChildren)
{
    QWidget view;
    QWidget branch(&view);
    QWidget leaf(&branch);
    QWidget later(&view);
    leaf.setProperty("tag", 7);
    later.setProperty("tag", 7);
    EXPECT_EQ(getSub(&view, 1, 7), &leaf);
    branch.setProperty("tag", 7);
    EXPECT_EQ(getSub(&view, 1, 7), &branch);
    EXPECT_EQ(getSub(&view, 1, 8), nullptr);
}

} // namespace
} // namespace vorn
