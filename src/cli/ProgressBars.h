#pragma once

#include "cli/Console.h"

#include <QString>
#include <QTimer>

#include <vector>

namespace vorn {

// The last lines of the terminal on standard output: a progress bar for each device, in the order
// in which they began. Hidden while other lines are written. Main thread only.
class ProgressBars
{
public:
    // The console outlives the object.
    explicit ProgressBars(Console &console);
    ~ProgressBars();
    ProgressBars(const ProgressBars &) = delete;
    ProgressBars &operator=(const ProgressBars &) = delete;

    // Both begin a bar if the device has none. They are drawn soon, not at once.
    void setStep(const QString &device, const QString &title);
    void setPercent(const QString &device, int percent);
    void remove(const QString &device);

    void hide();
    void show();

private:
    struct Bar
    {
        QString device;
        QString step;
        int percent = 0;
    };
    Bar &barOf(const QString &device);

    Console &m_console;
    std::vector<Bar> m_bars;
    int m_shown = 0; // lines on the terminal
    QTimer m_redraw;
};

} // namespace vorn
