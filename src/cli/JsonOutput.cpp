#include "cli/JsonOutput.h"

#include "app/SharedOptions.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace vorn {
namespace {

QString resultWord(bool succeeded)
{
    return succeeded ? QStringLiteral("ok") : QStringLiteral("failed");
}

// QJsonDocument escapes only what JSON demands. A terminal obeys further control characters, which
// the names of files and devices may hold.
QByteArray escapedForTerminal(const QByteArray &json)
{
    QString escaped;
    for (const QChar character : QString::fromUtf8(json)) {
        if (character.isPrint())
            escaped += character;
        else
            escaped += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
    return escaped.toUtf8();
}

} // namespace

void JsonOutput::write(const char *event, const QString &device, QJsonObject object)
{
    object.insert(QStringLiteral("event"), QLatin1StringView(event));
    if (!device.isEmpty())
        object.insert(QStringLiteral("device"), device);
    m_console.write(
        stdout, escapedForTerminal(QJsonDocument(object).toJson(QJsonDocument::Compact)) + '\n');
}

void JsonOutput::showDevice(const SerialDevice &device)
{
    write("device", device.ttyDevice,
          {{QStringLiteral("node"), device.calloutDevice},
           {QStringLiteral("maker"), device.adapterMaker},
           {QStringLiteral("serial"), device.adapterSerialNumber}});
}

void JsonOutput::showModel(const QString &device, qint32 model)
{
    write("device", device, {{QStringLiteral("model"), model}});
}

void JsonOutput::showFiles(const QStringList &paths)
{
    write("result", {},
          {{QStringLiteral("result"), resultWord(true)},
           {QStringLiteral("files"), QJsonArray::fromStringList(paths)}});
}

void JsonOutput::showStep(const QString &device, const Step &step)
{
    QJsonObject object{{QStringLiteral("step"), QLatin1StringView(step.word)}};
    if (step.attempt > 1)
        object.insert(QStringLiteral("attempt"), step.attempt);
    write("step", device, object);
}

void JsonOutput::showProgress(const QString &device, int percent, qint64 frame, qint64 frames)
{
    if (m_console.isBehind())
        return;
    QJsonObject object{{QStringLiteral("percent"), percent}};
    if (frames > 0) {
        object.insert(QStringLiteral("frame"), frame);
        object.insert(QStringLiteral("frames"), frames);
    }
    write("progress", device, object);
}

void JsonOutput::showResult(const Outcome &outcome)
{
    QJsonObject object{{QStringLiteral("result"), resultWord(outcome.succeeded())}};
    if (outcome.model >= 0)
        object.insert(QStringLiteral("model"), outcome.model);
    if (!outcome.file.isEmpty())
        object.insert(QStringLiteral("file"), outcome.file);
    if (!outcome.succeeded())
        object.insert(QStringLiteral("cause"), QLatin1StringView(outcome.why.word));
    if (outcome.step)
        object.insert(QStringLiteral("step"), QLatin1StringView(stepOf(*outcome.step).word));
    if (outcome.code != 0)
        object.insert(QStringLiteral("errno"), outcome.code);
    write("result", outcome.device, object);
    if (!outcome.succeeded())
        note(failureText(outcome));
}

void JsonOutput::showSummary(int good, int failed)
{
    write("result", {},
          {{QStringLiteral("result"), resultWord(failed == 0)},
           {QStringLiteral("good"), good},
           {QStringLiteral("failed"), failed}});
}

void JsonOutput::note(const QString &text)
{
    m_console.write(stderr, text + u'\n');
}

} // namespace vorn
