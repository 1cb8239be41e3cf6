#include "demo/AutoPilot.h"

#include <QAbstractEventDispatcher>
#include <QComboBox>
#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <functional>

namespace vorn {
namespace {

// Far more than any step takes, even on a slow machine.
constexpr int kStepLimitMs = 60000;

bool waitFor(const char *what, const std::function<bool()> &condition)
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

void press(const QWidget &window, const char *name)
{
    auto *button = window.findChild<QPushButton *>(QLatin1StringView(name));
    std::printf("            [%s]\n", qPrintable(button->text().remove(QLatin1Char('&'))));
    QTest::mouseClick(button, Qt::LeftButton);
}

bool waitForText(const char *what, const QLabel *label, const char *text)
{
    return waitFor(what, [=] { return label->text().contains(QLatin1StringView(text)); });
}

bool chooseFirmware(QComboBox *list)
{
    const auto firstPlatinaFile = [list] {
        return list->findText(QStringLiteral("VORN_PLATINA-"), Qt::MatchStartsWith);
    };
    const auto showsThisModelOnly = [&] {
        return firstPlatinaFile() > 0 &&
               list->findText(QStringLiteral("VORN_I-"), Qt::MatchStartsWith) < 0;
    };
    if (!waitFor("waiting for the list of the firmware for the device's model", showsThisModelOnly))
        return false;
    list->setFocus();
    while (list->currentIndex() < firstPlatinaFile())
        QTest::keyClick(list, Qt::Key_Down);
    std::printf("            [%s]\n", qPrintable(list->currentText()));
    return true;
}

bool waitForUpdate(QWidget &window, const QLabel *status, const QString &screenshot)
{
    bool pictured = false;
    const auto ended = [&] {
        const QString text = status->text();
        if (!pictured && text.contains(QLatin1StringView("progress,updating")) &&
            text.section(QLatin1Char(':'), 1).section(QLatin1Char('%'), 0, 0).toInt() >= 50)
            pictured = window.grab().save(screenshot);
        return text.contains(QLatin1StringView("successfully update")) ||
               text.contains(QLatin1StringView("try again")) ||
               text.contains(QLatin1StringView("does not respond"));
    };
    if (!waitFor("waiting for the end of the update", ended))
        return false;
    if (!pictured)
        std::fprintf(stderr, "Cannot save a picture of the window as %s\n", qPrintable(screenshot));
    return pictured && status->text().contains(QLatin1StringView("successfully update"));
}

} // namespace

std::optional<QString> updateInWindow(QWidget &window, const QString &screenshot)
{
    const auto label = [&](const char *name) {
        return window.findChild<QLabel *>(QLatin1StringView(name));
    };
    auto *list = window.findChild<QComboBox *>(QStringLiteral("firmwareList_1002"));
    press(window, "downloadButton_2002");
    if (!waitForText("waiting for the latest package to be installed", label("perText_1012"),
                     "Successfully downloaded"))
        return std::nullopt;
    press(window, "openButton_1011");
    if (!waitForText("waiting for the device to be open", label("connectText_1001"),
                     "opened successfully") ||
        !chooseFirmware(list) ||
        !waitForText("waiting for the firmware file to be chosen", label("perText_1012"),
                     "Firmware selected"))
        return std::nullopt;
    press(window, "updateButton_2001");
    if (!waitForUpdate(window, label("updateText_1015"), screenshot))
        return std::nullopt;
    // Lets the last text be printed.
    QCoreApplication::processEvents();
    return list->currentText();
}

} // namespace vorn
