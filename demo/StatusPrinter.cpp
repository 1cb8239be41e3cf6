#include "demo/StatusPrinter.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QLabel>

#include <cstdio>

namespace vorn {
namespace {

const QElapsedTimer &clockSinceStart()
{
    static const QElapsedTimer clock = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return clock;
}

void printUpdate(QAccessibleEvent *event)
{
    const auto *label = qobject_cast<const QLabel *>(event->object());
    if (event->type() != QAccessible::NameChanged || !label ||
        label->accessibleDescription().isEmpty())
        return;
    std::printf("%8.3f s  %-18s %s\n", static_cast<double>(clockSinceStart().elapsed()) / 1000.0,
                qPrintable(label->accessibleDescription() + QLatin1Char(':')),
                qPrintable(label->text()));
    std::fflush(stdout);
}

} // namespace

void printStatusTexts()
{
    clockSinceStart();
    QAccessible::installUpdateHandler(printUpdate);
    QAccessible::setActive(true);
}

} // namespace vorn
