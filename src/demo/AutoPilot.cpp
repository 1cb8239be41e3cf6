#include "demo/AutoPilot.h"

#include <QAbstractEventDispatcher>
#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QPixmap>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace vorn {
namespace {

// Far more than any step takes, even on a slow machine.
constexpr int kStepLimitMs = 60000;

} // namespace

template <typename Control>
Control *AutoPilot::control(const char *name) const
{
    auto *found = m_window.findChild<Control *>(QLatin1StringView(name));
    Q_ASSERT(found);
    return found;
}

AutoPilot::AutoPilot(MainWindow &window, const DemoStage &stage)
    : m_window(window), m_stage(stage), m_connectText(control<QLabel>("connectText_1001")),
      m_perText(control<QLabel>("perText_1012")), m_updateText(control<QLabel>("updateText_1015")),
      m_firmwareList(control<QComboBox>("firmwareList_1002"))
{
}

bool AutoPilot::run(const QString &screenshot)
{
    return download() && openDevice() && chooseFirmware() && update(screenshot) &&
           deviceHoldsTheFile();
}

bool AutoPilot::waitFor(const char *what, const std::function<bool()> &condition)
{
    // Checks whenever the event loop is about to sleep: a timer's interval would miss short states.
    QEventLoop loop;
    QTimer::singleShot(kStepLimitMs, &loop, [&] { loop.exit(1); });
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &loop, [&] {
                         if (condition())
                             loop.quit();
                     });
    if (condition() || loop.exec() == 0)
        return true;
    std::fprintf(stderr, "Timed out: %s\n", what);
    return false;
}

void AutoPilot::press(QPushButton *button) const
{
    std::printf("            [%s]\n", qPrintable(button->text().remove(QLatin1Char('&'))));
    QTest::mouseClick(button, Qt::LeftButton);
}

bool AutoPilot::download()
{
    press(control<QPushButton>("downloadButton_2002"));
    return waitFor("waiting for the latest package to be installed", [this] {
        return m_perText->text().contains(QLatin1StringView("Successfully downloaded"));
    });
}

bool AutoPilot::openDevice()
{
    press(control<QPushButton>("openButton_1011"));
    return waitFor("waiting for the device to be open", [this] {
        return m_connectText->text().endsWith(QLatin1StringView("opened successfully"));
    });
}

bool AutoPilot::chooseFirmware()
{
    const auto firstPlatinaFile = [this] {
        return m_firmwareList->findText(QStringLiteral("VORN_PLATINA-"), Qt::MatchStartsWith);
    };
    const auto showsThisModelOnly = [&] {
        return firstPlatinaFile() > 0 &&
               m_firmwareList->findText(QStringLiteral("VORN_I-"), Qt::MatchStartsWith) < 0;
    };
    if (!waitFor("waiting for the list of the firmware for the device's model", showsThisModelOnly))
        return false;
    m_firmwareList->setFocus();
    while (m_firmwareList->currentIndex() < firstPlatinaFile())
        QTest::keyClick(m_firmwareList, Qt::Key_Down);
    std::printf("            [%s]\n", qPrintable(m_firmwareList->currentText()));
    return waitFor("waiting for the firmware file to be chosen", [this] {
        return m_perText->text().endsWith(QLatin1StringView("Firmware selected"));
    });
}

bool AutoPilot::update(const QString &screenshot)
{
    press(control<QPushButton>("updateButton_2001"));
    bool pictured = false;
    const auto ended = [&] {
        const QString text = m_updateText->text();
        if (!pictured && text.contains(QLatin1StringView("progress,updating")) &&
            text.section(QLatin1Char(':'), 1).section(QLatin1Char('%'), 0, 0).toInt() >= 50)
            pictured = m_window.grab().save(screenshot);
        return text.contains(QLatin1StringView("successfully update")) ||
               text.contains(QLatin1StringView("try again")) ||
               text.contains(QLatin1StringView("does not respond"));
    };
    if (!waitFor("waiting for the end of the update", ended))
        return false;
    if (!pictured)
        std::fprintf(stderr, "Cannot save a picture of the window as %s\n", qPrintable(screenshot));
    return pictured && m_updateText->text().contains(QLatin1StringView("successfully update"));
}

bool AutoPilot::deviceHoldsTheFile() const
{
    // Lets the last text be printed before the outcome.
    QCoreApplication::processEvents();
    QFile file(QDir(m_stage.firmwareFolder()).filePath(m_firmwareList->currentText()));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(file.fileName()),
                     qPrintable(file.errorString()));
        return false;
    }
    const QByteArray image = file.readAll();
    const DeviceReport report = m_stage.device().report();
    const QByteArray hash = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
    std::printf("\nfile    %s  %lld bytes\ndevice  %s  %lld bytes, %d protocol errors\n",
                hash.constData(), static_cast<long long>(image.size()),
                qPrintable(report.imageSha256()), static_cast<long long>(report.image.size()),
                report.errorCount);
    const bool equal = image == report.image && report.errorCount == 0;
    std::puts(equal ? "The device holds exactly that file."
                    : "The device does NOT hold that file.");
    return equal;
}

} // namespace vorn
