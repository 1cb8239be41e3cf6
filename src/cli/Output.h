#pragma once

#include "cli/Console.h"
#include "cli/Outcome.h"
#include "platform/SerialDeviceRegistry.h"

#include <QString>
#include <QStringList>

namespace vorn {

// Where something stands. Its word is for programs and never changes.
struct Step
{
    const char *word;
    QString title;
    int attempt = 1; // of the update, above 1 once it began again
};
Step stepOf(UpdateStep step);

// The program's exit code once its output is written, `error` being what finish() or print()
// returned. Says on standard error that output was lost.
ExitCode exitCodeAfterOutput(ExitCode code, int error);

// Shows what happens: results on standard output, failures and notes on standard error. Names of
// devices are empty where something concerns none (a download). Main thread only.
class Output
{
public:
    Output() = default;
    virtual ~Output() = default;
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    virtual void showDevice(const SerialDevice &device) = 0;
    virtual void showModel(const QString &device, qint32 model) = 0;
    // Paths of firmware files.
    virtual void showFiles(const QStringList &paths) = 0;
    virtual void showStep(const QString &device, const Step &step) = 0;
    // Frames count from 1; `frames` is 0 where there are none, and when an update begins again.
    virtual void showProgress(const QString &device, int percent, qint64 frame, qint64 frames) = 0;
    virtual void showResult(const Outcome &outcome) = 0;
    virtual void showSummary(int good, int failed) = 0;
    // For people, on standard error.
    virtual void note(const QString &text) = 0;
    // Waits until everything is written; 0 or the errno of what could not be.
    int finish() { return m_console.finish(); }

protected:
    Console m_console;
    static QString failureText(const Outcome &outcome);
};

} // namespace vorn
