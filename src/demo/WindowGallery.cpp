// window_gallery FOLDER: pictures of the window in every state, light and dark, to look at after a
// change. QT_SCALE_FACTOR=2 doubles their resolution; LC_ALL=de_DE.UTF-8 is German; -style NAME
// takes another style.

#include "app/Causes.h"
#include "app/Translations.h"
#include "window/MainWindow.h"
#include "window/StatusLine.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <QTranslator>

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
    QString details = {};
    vorn::Cause cause = vorn::Cause::None; // else the details are its text
    QStringList places = {};
};

// The window as it opens, with its least and its most width, with the log (and its least size), or
// with texts as long as another language's.
enum class Shape { Usual, Smallest, Widest, Log, SmallestLog, LongTexts };

struct State
{
    const char *name;
    QString device;
    Status connection;
    Status firmware = {};
    Status update = {};
    Shape shape = Shape::Usual;
};

const QString kNone = "No device selected";
const QString kDevice = "usbserial-FT4XYZ12";
const Status kNoDevice{.text = "Prompt:%1", .cause = vorn::Cause::NoDevice};
const Status kUnopened{"Prompt:%1 Selected,not opened"};
const Status kSecond{.text = "Prompt:%1 Selected,not opened",
                     .cause = vorn::Cause::SecondDevice,
                     .places = {"usbserial-FT4ABC99", kDevice}};
const Status kOpen{"Prompt:%1 Selected,opened successfully", StatusTone::Good};
const Status kForbidden{.text = "Prompt:%1 Selected,failed to open,please try again",
                        .tone = StatusTone::Bad,
                        .cause = vorn::Cause::NodeNotPermitted,
                        .places = {"/dev/ttyUSB0", "dialout"}};
const Status kHeld{.text = "Prompt:%1 Selected,failed to open,please try again",
                   .tone = StatusTone::Bad,
                   .cause = vorn::Cause::MayBeHeldByModemManager,
                   .places = {"/dev/ttyUSB0"}};
const Status kNoFiles{.cause = vorn::Cause::NoFirmware, .places = {"~/.cache/VornUpdate2"}};
const Status kReady{"Prompt:Firmware selected"};
const Status kDownloading{"Prompt:Progress42%", StatusTone::Neutral,
                          [](MainWindow &window) { window.showDownloadProgress(42); },
                          "3.91 MiB of 9.31 MiB. 4 s elapsed, about 6 s left."};
const Status kUnknownLength{"Prompt:Progress--%", StatusTone::Neutral,
                            [](MainWindow &window) { window.showDownloadBusy(); },
                            "3.91 MiB so far. 4 s elapsed."};
const Status kNotDownloaded{.text = "Prompt:Failed to download the latest firmware",
                            .tone = StatusTone::Bad,
                            .cause = vorn::Cause::Certificate,
                            .places = {"packages.example", "The certificate has expired"}};
const Status kNoServer{.showMore =
                           [](MainWindow &window) {
                               window.setDownloadAvailable(false,
                                                           "No package server is configured");
                           },
                       .cause = vorn::Cause::NoFirmwareNoServer,
                       .places = {"~/.cache/VornUpdate2"}};
const Status kErasing{.showMore =
                          [](MainWindow &window) {
                              window.setUpdateRuns(true);
                              window.showUpdateBusy();
                          },
                      .details =
                          "Waiting for the device to erase, 3 s of at most 30 s. 4 s elapsed."};
const Status kUpdating{"Prompt:42%progress,updating firmware", StatusTone::Neutral,
                       [](MainWindow &window) {
                           window.setUpdateRuns(true);
                           window.showUpdateProgress(42);
                       },
                       "6 s elapsed, about 8 s left."};
const Status kUpdated{"Prompt:100% progress,successfully update", StatusTone::Good,
                      [](MainWindow &window) { window.showUpdateProgress(100); },
                      "The update took 14 s; the image was sent at 168 KiB/s."};
const Status kFailed{.text =
                         "Prompt:Failed to erase the fixed phone of the device ,please try again",
                     .tone = StatusTone::Bad,
                     .cause = vorn::Cause::SilentAndErased,
                     .places = {"the erase", "30"}};
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
    {"01-no-device", kNone, kNoDevice, kNoFiles},
    {"02-device-chosen", kDevice, kUnopened},
    {"03-second-device", kDevice, kSecond},
    {"04-open", kDevice, kOpen},
    {"05-not-permitted", kDevice, kForbidden},
    {"06-held-by-another-program", kDevice, kHeld},
    {"07-very-long-name", "usbserial-" + QString("ABCDEFGH-").repeated(20), kHeld},
    {"08-ready", kDevice, kOpen, kReady},
    {"09-erasing", kDevice, kOpen, kReady, kErasing},
    {"10-updating-42", kDevice, kOpen, kReady, kUpdating},
    {"11-success", kDevice, kOpen, kReady, kUpdated},
    {"12-failure", kDevice, kOpen, kReady, kFailed},
    {"13-downloading", kDevice, kOpen, kDownloading},
    {"14-download-unknown-length", kDevice, kOpen, kUnknownLength},
    {"15-download-failed", kDevice, kOpen, kNotDownloaded},
    {"16-no-package-server", kNone, kNoDevice, kNoServer},
    {"17-closing-the-window", kDevice, kOpen, kReady, kClosingWindow},
    {"18-closing-the-port", kDevice, kOpen, kReady, kClosingPort},
    {"19-update-ended-meanwhile", kDevice, kOpen, kReady, kEndedBehindQuestion},
    {"20-update-button-in-focus", kDevice, kOpen, kReady, kButtonInFocus},
    {"21-smallest", kDevice, kHeld, kNotDownloaded, kFailed, Shape::Smallest},
    {"22-widest", kDevice, kHeld, kNotDownloaded, kFailed, Shape::Widest},
    {"23-log", kDevice, kOpen, kReady, kFailed, Shape::Log},
    {"24-smallest-log", kDevice, kOpen, kReady, kFailed, Shape::SmallestLog},
    {"25-long-texts", kDevice, kForbidden, kNotDownloaded, kFailed, Shape::LongTexts},
    {"26-long-question", kDevice, kOpen, kReady, kClosingWindow, Shape::LongTexts},
};

// Makes each text 40 % longer, as a translation may.
class LongTexts : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *text, const char *, int) const override
    {
        const QString given = QString::fromUtf8(text);
        return given + QString("äöü ").repeated(given.size()).left(given.size() * 2 / 5);
    }
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

void fillLog(MainWindow &window)
{
    for (const char *line :
         {"12:00:04.110  usbserial-FT4XYZ12 (/dev/ttyUSB0): plugged in",
          "12:00:07.202  usbserial-FT4XYZ12 (/dev/ttyUSB0): open",
          "12:00:07.311  Version query: OK, 0.1 s",
          "12:00:12.480  Update of usbserial-FT4XYZ12 with VORN_PLATINA-2.4.1.bin: START",
          "12:00:12.530  Erase: START", "12:00:42.531  Erase: FAILED, 30 s",
          "12:00:42.531  Update: FAILED, 30 s"})
        window.appendLog(line);
    window.findChild<QPushButton *>("logButton")->click();
    window.showLogNotice("Saved to /home/user/Documents/vornupdater-log.txt.");
}

bool paint(const State &state, const QString &file)
{
    LongTexts longTexts; // uninstalls itself at its end
    if (state.shape == Shape::LongTexts)
        QCoreApplication::installTranslator(&longTexts);
    MainWindow window;
    const auto list = [&](const char *name, const QStringList &items, int current) {
        auto *box = window.findChild<QComboBox *>(name);
        box->addItems(items);
        box->setCurrentIndex(current);
    };
    const auto line = [&](const char *name, auto showDetails, Status status) {
        window.findChild<StatusLine *>(name)->show(status.text.replace("%1", state.device),
                                                   status.tone);
        (window.*showDetails)(status.cause == vorn::Cause::None
                                  ? status.details
                                  : vorn::explain(status.cause, status.places).text());
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
    line("connectText_1001", &MainWindow::showConnectionDetails, state.connection);
    line("perText_1012", &MainWindow::showFirmwareDetails, state.firmware);
    line("updateText_1015", &MainWindow::showUpdateDetails, state.update);
    if (state.shape >= Shape::Log)
        fillLog(window);
    if (state.shape == Shape::Widest)
        window.resize(1280, 800);
    else if (state.shape != Shape::Usual && state.shape != Shape::Log)
        window.resize(window.minimumSizeHint());
    QCoreApplication::processEvents();
    QWidget *inFront = QApplication::activeModalWidget();
    return (inFront ? inFront : &window)->grab().save(file);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    vorn::installTranslations();
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
