#pragma once

#include "cli/Output.h"

#include <QJsonObject>

namespace vorn {

// One JSON object a line on standard output, as docs/command-line.md describes them.
class JsonOutput final : public Output
{
public:
    void showDevice(const SerialDevice &device) override;
    void showModel(const QString &device, qint32 model) override;
    void showFiles(const QStringList &paths) override;
    void showStep(const QString &device, const Step &step) override;
    void showProgress(const QString &device, int percent, qint64 frame, qint64 frames) override;
    void showResult(const Outcome &outcome) override;
    void showSummary(int good, int failed) override;
    void note(const QString &text) override;

private:
    void write(const char *event, const QString &device, QJsonObject object);
};

} // namespace vorn
