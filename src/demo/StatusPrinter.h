#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QLabel>
#include <QObject>
#include <QWidget>

namespace vorn {

// Prints every status text that a window shows to standard output, with the time since this object
// was created. It checks after each round of the event loop, so it misses only texts that are
// replaced within a round.
class StatusPrinter : public QObject
{
    Q_OBJECT

public:
    explicit StatusPrinter(const QWidget &window);

    void printChanges();

private:
    QElapsedTimer m_clock;
    QHash<const QLabel *, QString> m_shown;
};

} // namespace vorn
