// window_gallery FOLDER: pictures of the window in every state, light and dark, to look at after a
// change. QT_SCALE_FACTOR=2 doubles their resolution; -style NAME takes another style.

#include "window/MainWindow.h"
#include "window/StatusLine.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QPushButton>

#include <cstdio>

namespace {

using vorn::MainWindow;
using vorn::StatusLine;
using vorn::StatusTone;

// A status line's text and tone, and what else the window shows then.
struct Status
{
    QString text = {}; // %1 is the device's name
    StatusTone tone = StatusTone::Neutral;
    void (*showMore)(MainWindow &) = [](MainWindow &) {};
};

struct State
{
    const char *name;
    QString device;
    Status connection;
    Status firmware = {};
    Status update = {};
};

const QString kNone = "No device selected";
const QString kDevice = "usbserial-FT4XYZ12";
const Status kNoDevice{"Prompt:%1"};
const Status kUnopened{"Prompt:%1 Selected,not opened"};
const Status kOpen{"Prompt:%1 Selected,opened successfully", StatusTone::Good};
const Status kOpenFailed{"Prompt:%1 Selected,failed to open,please try again", StatusTone::Bad};
const Status kReady{"Prompt:Firmware selected"};
const Status kDownloading{"Prompt:Progress42%", StatusTone::Neutral,
                          [](MainWindow &window) { window.showDownloadProgress(42); }};
const Status kUnknownLength{"Prompt:Progress--%", StatusTone::Neutral,
                            [](MainWindow &window) { window.showDownloadBusy(); }};
const Status kNoServer{.showMore = [](MainWindow &window) {
    window.setDownloadAvailable(false, "No package server is configured");
}};
const Status kErasing{.showMore = [](MainWindow &window) { window.showUpdateBusy(); }};
const Status kUpdating{"Prompt:42%progress,updating firmware", StatusTone::Neutral,
                       [](MainWindow &window) { window.showUpdateProgress(42); }};
const Status kUpdated{"Prompt:100% progress,successfully update", StatusTone::Good,
                      [](MainWindow &window) { window.showUpdateProgress(100); }};
const Status kFailed{"Prompt:Failed to erase the fixed phone of the device ,please try again",
                     StatusTone::Bad};
const Status kClosingWindow{.showMore = [](MainWindow &window) {
    window.setUpdateRuns(true);
    window.close();
}};
const Status kClosingPort{.showMore = [](MainWindow &window) {
    window.setUpdateRuns(true);
    window.askToClosePort();
}};
const Status kEndedBehindQuestion{.showMore = [](MainWindow &window) {
    window.setUpdateRuns(true);
    window.askToClosePort();
    window.setUpdateRuns(false);
}};
const Status kButtonInFocus{.showMore = [](MainWindow &window) {
    window.findChild<QPushButton *>("updateButton_2001")->setFocus(Qt::TabFocusReason);
}};

const State kStates[] = {
    {"01-no-device", kNone, kNoDevice},
    {"02-device-chosen", kDevice, kUnopened},
    {"03-open", kDevice, kOpen},
    {"04-open-failed", kDevice, kOpenFailed},
    {"05-very-long-name", "usbserial-" + QString("ABCDEFGH-").repeated(20), kOpenFailed},
    {"06-ready", kDevice, kOpen, kReady},
    {"07-erasing", kDevice, kOpen, kReady, kErasing},
    {"08-updating-42", kDevice, kOpen, kReady, kUpdating},
    {"09-success", kDevice, kOpen, kReady, kUpdated},
    {"10-failure", kDevice, kOpen, kReady, kFailed},
    {"11-downloading", kDevice, kOpen, kDownloading},
    {"12-download-unknown-length", kDevice, kOpen, kUnknownLength},
    {"13-no-package-server", kNone, kNoDevice, kNoServer},
    {"14-closing-the-window", kDevice, kOpen, kReady, kClosingWindow},
    {"15-closing-the-port", kDevice, kOpen, kReady, kClosingPort},
    {"16-update-ended-meanwhile", kDevice, kOpen, kReady, kEndedBehindQuestion},
    {"17-update-button-in-focus", kDevice, kOpen, kReady, kButtonInFocus},
};

QPalette darkPalette()
{
    QPalette palette(QColor(0x32, 0x32, 0x36), QColor(0x2a, 0x2a, 0x2e));
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, QColor(0xee, 0xee, 0xf0));
        palette.setColor(QPalette::Disabled, role, QColor(0x88, 0x88, 0x8c));
    }
    for (const auto role : {QPalette::Base, QPalette::ToolTipBase})
        palette.setColor(role, QColor(0x1e, 0x1e, 0x20));
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xd8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

bool paint(const State &state, const QString &file)
{
    MainWindow window;
    const auto list = [&](const char *name, const QStringList &items, int current) {
        auto *box = window.findChild<QComboBox *>(name);
        box->addItems(items);
        box->setCurrentIndex(current);
    };
    const auto line = [&](const char *name, Status status) {
        window.findChild<StatusLine *>(name)->show(status.text.replace("%1", state.device),
                                                   status.tone);
        status.showMore(window);
    };
    window.setDownloadAvailable(true, {});
    window.show();
    window.activateWindow();
    list("deviceList_1010", {state.device}, 0);
    list("firmwareList_1002", {"No firmware selected", "VORN_PLATINA-2.4.1.bin"},
         state.firmware.text == kReady.text ? 1 : 0);
    if (state.connection.text == kOpen.text)
        window.findChild<QPushButton *>("openButton_1011")->setText("Close");
    line("connectText_1001", state.connection);
    line("perText_1012", state.firmware);
    line("updateText_1015", state.update);
    QCoreApplication::processEvents();
    QWidget *inFront = QApplication::activeModalWidget();
    return (inFront ? inFront : &window)->grab().save(file);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "usage: window_gallery FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const qreal scale = application.devicePixelRatio();
    const QString ending = scale > 1 ? QString("@%1x.png").arg(scale) : QString(".png");
    const QPalette light = QApplication::palette();
    for (const auto &[palette, suffix] : {std::pair(light, ""), {darkPalette(), "-dark"}}) {
        QApplication::setPalette(palette);
        for (const State &state : kStates) {
            if (!paint(state, folder.filePath(state.name + (suffix + ending)))) {
                std::fprintf(stderr, "cannot write to %s\n", argv[1]);
                return 1;
            }
        }
    }
    return 0;
}
