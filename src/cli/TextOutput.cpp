#include "cli/TextOutput.h"

#include "app/SharedOptions.h"
#include "platform/SerialDeviceName.h"

#include <QCoreApplication>
#include <QDir>

#include <unistd.h>

namespace vorn {
namespace {

bool isTerminal(int descriptor)
{
    return ::isatty(descriptor) != 0 && qgetenv("TERM") != "dumb";
}

} // namespace

TextOutput::TextOutput(bool verbose) : m_verbose(verbose)
{
    if (!verbose && isTerminal(STDOUT_FILENO))
        m_bars = std::make_unique<ProgressBars>(m_console);
}

void TextOutput::writeLine(FILE *stream, const QString &text)
{
    if (m_bars)
        m_bars->hide();
    m_console.write(stream, QString(printableName(text) + u'\n'));
    if (m_bars)
        m_bars->show();
}

QString TextOutput::labelled(const QString &device, const QString &text)
{
    return device.isEmpty() ? text : device + QStringLiteral(": ") + text;
}

void TextOutput::showDevice(const SerialDevice &device)
{
    QStringList parts{device.ttyDevice, device.calloutDevice, device.adapterMaker,
                      device.adapterSerialNumber};
    parts.removeAll(QString());
    writeLine(stdout, parts.join(QStringLiteral("  ")));
}

void TextOutput::showModel(const QString &device, qint32 model)
{
    if (m_verbose)
        writeLine(stdout, labelled(device, tr("Model code %1").arg(model)));
}

void TextOutput::showFiles(const QStringList &paths)
{
    for (const QString &path : paths)
        writeLine(stdout, path);
}

void TextOutput::showStep(const QString &device, const Step &step)
{
    if (m_bars)
        m_bars->setStep(device, step.title);
    else if (m_verbose)
        writeLine(stdout, labelled(device, step.title));
}

void TextOutput::showProgress(const QString &device, int percent, qint64, qint64)
{
    if (m_bars)
        return m_bars->setPercent(device, percent);
    if (m_console.isBehind())
        return;
    const int tenth = percent / 10;
    if (tenth == std::exchange(m_tenths[device], tenth) || tenth == 0)
        return;
    writeLine(stdout, labelled(device, tr("%1 %").arg(tenth * 10)));
}

void TextOutput::showResult(const Outcome &outcome)
{
    m_tenths.remove(outcome.device);
    if (m_bars)
        m_bars->remove(outcome.device);
    if (outcome.succeeded())
        writeLine(stdout, labelled(outcome.device, outcome.text));
    else
        writeLine(stderr, failureText(outcome));
}

void TextOutput::showSummary(int good, int failed)
{
    writeLine(stdout, tr("Good: %1. Failed: %2.").arg(good).arg(failed));
}

void TextOutput::note(const QString &text)
{
    writeLine(stderr, text);
}

} // namespace vorn
