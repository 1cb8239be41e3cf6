#include "demo/StatusPrinter.h"

#include <QAbstractEventDispatcher>

#include <cstdio>

namespace vorn {

StatusPrinter::StatusPrinter(const QWidget &window)
{
    m_clock.start();
    const auto labels = window.findChildren<QLabel *>();
    for (const QLabel *label : labels)
        if (!label->accessibleDescription().isEmpty())
            m_shown.insert(label, QString());
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &StatusPrinter::printChanges);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
            &StatusPrinter::printChanges);
}

void StatusPrinter::printChanges()
{
    for (auto shown = m_shown.begin(); shown != m_shown.end(); ++shown) {
        const QString text = shown.key()->text();
        if (text == shown.value())
            continue;
        shown.value() = text;
        std::printf("%8.3f s  %-18s %s\n", static_cast<double>(m_clock.elapsed()) / 1000.0,
                    qPrintable(shown.key()->accessibleDescription() + QLatin1Char(':')),
                    qPrintable(text));
    }
    std::fflush(stdout);
}

} // namespace vorn
