// window_gallery FOLDER: pictures of the window in every state, light and dark, for people to look
// at. QT_SCALE_FACTOR=2 makes them twice as fine, QT_QPA_PLATFORM chooses who draws the fonts.

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStyleFactory>

#include <array>
#include <cstdio>

#include "app/MainWindow.h"

namespace {

using vorn::MainWindow;
using vorn::Tone;

class Scene
{
public:
    Scene() { m_window.setDownloadAvailable(true, {}); }

    MainWindow &window() { return m_window; }

    void list(const char *name, const QStringList &items, int current)
    {
        auto *box = m_window.findChild<QComboBox *>(QLatin1String(name));
        box->addItems(items);
        box->setCurrentIndex(current);
    }
    void button(const QString &text)
    {
        m_window.findChild<QPushButton *>(QStringLiteral("openButton_1011"))->setText(text);
    }
    void connection(const QString &text, Tone tone = Tone::Neutral)
    {
        line("connectText_1001", MainWindow::Line::Connection, text, tone);
    }
    void firmware(const QString &text, Tone tone = Tone::Neutral)
    {
        line("perText_1012", MainWindow::Line::Firmware, text, tone);
    }
    void update(const QString &text, Tone tone = Tone::Neutral)
    {
        line("updateText_1015", MainWindow::Line::Update, text, tone);
    }

    void noDevice()
    {
        list("deviceList_1010", {QStringLiteral("No device selected")}, 0);
        list("firmwareList_1002", {QStringLiteral("No firmware selected")}, 0);
        connection(QStringLiteral("Prompt:No device selected"));
    }
    void chosen(const QString &name = QStringLiteral("usbserial-FT4XYZ12"))
    {
        list("deviceList_1010", {name, name}, 0);
        list("firmwareList_1002",
             {QStringLiteral("No firmware selected"), QStringLiteral("VORN_PLATINA-2.4.1.bin")}, 0);
        connection(QStringLiteral("Prompt:%1 Selected,not opened").arg(name));
    }
    void open()
    {
        chosen();
        button(QStringLiteral("Close"));
        connection(QStringLiteral("Prompt:usbserial-FT4XYZ12 Selected,opened successfully"),
                   Tone::Good);
    }
    void ready()
    {
        open();
        m_window.findChild<QComboBox *>(QStringLiteral("firmwareList_1002"))->setCurrentIndex(1);
        firmware(QStringLiteral("Prompt:Firmware selected"));
    }

private:
    void line(const char *name, MainWindow::Line which, const QString &text, Tone tone)
    {
        m_window.findChild<QLabel *>(QLatin1String(name))->setText(text);
        m_window.setStatusTone(which, tone);
    }

    MainWindow m_window;
};

struct State
{
    const char *name;
    void (*arrange)(Scene &);
};

const std::array states{
    State{"01-no-device", [](Scene &scene) { scene.noDevice(); }},
    State{"02-device-chosen", [](Scene &scene) { scene.chosen(); }},
    State{"03-open", [](Scene &scene) { scene.open(); }},
    State{"04-open-failed",
          [](Scene &scene) {
              scene.chosen();
              scene.connection(QStringLiteral("Prompt:usbserial-FT4XYZ12 Selected,failed to "
                                              "open,please try again"),
                               Tone::Bad);
          }},
    State{"05-very-long-name",
          [](Scene &scene) {
              const QString name =
                  QStringLiteral("usbserial-") + QStringLiteral("ABCDEFGH-").repeated(20);
              scene.chosen(name);
              scene.connection(
                  QStringLiteral("Prompt:%1 Selected,failed to open,please try again").arg(name),
                  Tone::Bad);
          }},
    State{"06-ready", [](Scene &scene) { scene.ready(); }},
    State{"07-erasing",
          [](Scene &scene) {
              scene.ready();
              scene.window().showUpdateBusy();
          }},
    State{"08-updating-42",
          [](Scene &scene) {
              scene.ready();
              scene.update(QStringLiteral("Prompt:42%progress,updating firmware"));
              scene.window().showUpdateProgress(42);
          }},
    State{"09-success",
          [](Scene &scene) {
              scene.ready();
              scene.update(QStringLiteral("Prompt:100% progress,successfully update"), Tone::Good);
              scene.window().showUpdateProgress(100);
          }},
    State{"10-failure",
          [](Scene &scene) {
              scene.ready();
              scene.update(QStringLiteral("Prompt:Failed to erase the fixed phone of the device "
                                          ",please try again"),
                           Tone::Bad);
          }},
    State{"11-downloading",
          [](Scene &scene) {
              scene.open();
              scene.firmware(QStringLiteral("Prompt:Progress42%"));
              scene.window().showDownloadProgress(42);
          }},
    State{"12-download-unknown-length",
          [](Scene &scene) {
              scene.open();
              scene.firmware(QStringLiteral("Prompt:Progress--%"));
              scene.window().showDownloadBusy();
          }},
    State{"13-no-package-server",
          [](Scene &scene) {
              scene.noDevice();
              scene.window().setDownloadAvailable(
                  false, QStringLiteral("No package server is configured"));
          }},
    State{"14-closing-during-an-update",
          [](Scene &scene) {
              scene.window().setUpdateRuns(true);
              scene.window().close();
          }},
};

QPalette darkPalette()
{
    QPalette palette(QColor(0x32, 0x32, 0x36), QColor(0x2a, 0x2a, 0x2e));
    const auto text = QColor(0xee, 0xee, 0xf0);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x20));
    palette.setColor(QPalette::ToolTipBase, QColor(0x1e, 0x1e, 0x20));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xd8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x88, 0x88, 0x8c));
    }
    return palette;
}

bool paint(const State &state, const QDir &folder, const QString &suffix)
{
    Scene scene;
    scene.window().show();
    state.arrange(scene);
    QCoreApplication::processEvents();
    const QString file =
        folder.filePath(QLatin1String(state.name) + suffix + QStringLiteral(".png"));
    QWidget *inFront = QApplication::activeModalWidget();
    return (inFront ? inFront : &scene.window())->grab().save(file);
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
    const QString scale = application.devicePixelRatio() > 1
                              ? QStringLiteral("@%1x").arg(application.devicePixelRatio())
                              : QString();
    const QPalette light = QApplication::palette();
    for (const auto &[palette, suffix] :
         {std::pair(light, QString()), std::pair(darkPalette(), QStringLiteral("-dark"))}) {
        QApplication::setPalette(palette);
        for (const State &state : states) {
            if (!paint(state, folder, suffix + scale)) {
                std::fprintf(stderr, "cannot write to %s\n", argv[1]);
                return 1;
            }
        }
    }
    return 0;
}
