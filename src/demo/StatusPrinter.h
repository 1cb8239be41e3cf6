#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QLabel>
#include <QObject>
#include <QWidget>

namespace vorn {

// Prints every status text that a window shows, with the time since this object was made, to the
// standard output. It looks whenever the event loop has done its work, so it sees all texts but
// those that are replaced within one event.
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
