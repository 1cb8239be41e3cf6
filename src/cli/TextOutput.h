#pragma once

#include "cli/Output.h"
#include "cli/ProgressBars.h"

#include <QCoreApplication>
#include <QHash>

#include <cstdio>
#include <memory>

namespace vorn {

// Lines for people. On a terminal each device that is at work has a progress bar below them; when
// the output is piped, a line at every tenth of its update, and no control character.
class TextOutput final : public Output
{
    Q_DECLARE_TR_FUNCTIONS(TextOutput)
public:
    // `verbose`: a line for each step, and no bars.
    explicit TextOutput(bool verbose);

    void showDevice(const SerialDevice &device) override;
    void showModel(const QString &device, qint32 model) override;
    void showFiles(const QStringList &paths) override;
    void showStep(const QString &device, const Step &step) override;
    void showProgress(const QString &device, int percent, qint64 frame, qint64 frames) override;
    void showResult(const Outcome &outcome) override;
    void showSummary(int good, int failed) override;
    void note(const QString &text) override;

private:
    void writeLine(FILE *stream, const QString &text);
    static QString labelled(const QString &device, const QString &text);

    const bool m_verbose;
    std::unique_ptr<ProgressBars> m_bars; // null without a terminal
    QHash<QString, int> m_tenths;         // by device, as shown last
};

} // namespace vorn
