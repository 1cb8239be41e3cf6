#include "app/LogSection.h"

#include "app/Causes.h"
#include "platform/DeviceNode.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QLocale>
#include <QSaveFile>
#include <QSysInfo>

namespace vorn {
namespace {

constexpr qsizetype kMostEvents = 5000; // as many as the panel keeps

QStringList linesAbout(const SerialDevice &device)
{
    const DeviceNodeFacts node = deviceNodeFacts(device.calloutDevice);
    return {LogSection::tr("Device: %1, %2, %3")
                .arg(device.ttyDevice, device.calloutDevice, device.dialinDevice),
            LogSection::tr("Adapter: %1, %2, serial number %3")
                .arg(device.adapterMaker, device.adapterModel, device.adapterSerialNumber),
            node.exists
                ? LogSection::tr("Its node: group %1, mode %2").arg(node.group, octal(node.mode))
                : LogSection::tr("Its node: gone")};
}

// Null when it was written, else why not.
QString problemOfSaving(const QString &path, const QString &text)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0 && file.commit())
        return {};
    return file.errorString();
}

} // namespace

LogSection::LogSection(MainWindow &window) : m_window(window)
{
    connect(&m_window, &MainWindow::logCopyRequested, this, &LogSection::copy);
    connect(&m_window, &MainWindow::logSaveRequested, this, &LogSection::save);
}

void LogSection::add(const QString &event)
{
    const QString line =
        QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz  ")) + event;
    m_events += line;
    if (m_events.size() > kMostEvents)
        m_events.removeFirst();
    m_window.appendLog(line);
}

void LogSection::addStart(const QString &what)
{
    add(tr("%1: START").arg(what));
}

void LogSection::addOk(const QString &what, std::chrono::milliseconds after)
{
    add(tr("%1: OK, %2 s").arg(what, secondsText(after)));
}

void LogSection::addFailed(const QString &what, std::chrono::milliseconds after, const QString &why)
{
    add(tr("%1: FAILED, %2 s").arg(what, secondsText(after)));
    if (!why.isEmpty())
        add(why);
}

void LogSection::setTranscript(std::shared_ptr<const Transcript> transcript)
{
    m_transcript = std::move(transcript);
}

// The transcript of a large image takes its time to write down, and a disk may be slow.
void LogSection::copy()
{
    GlobalQueue::instance().post([this, report = report(), token = m_lifetime.token()] {
        MainQueue::instance().post(token, [this, text = report()] {
            QGuiApplication::clipboard()->setText(text);
            m_window.showLogNotice(tr("Copied."));
        });
    });
}

void LogSection::save(const QString &path)
{
    GlobalQueue::instance().post([this, path, report = report(), token = m_lifetime.token()] {
        MainQueue::instance().post(token, [this, path, problem = problemOfSaving(path, report())] {
            m_window.showLogNotice(problem.isNull() ? tr("Saved to %1.").arg(path)
                                                    : tr("Not saved: %1.").arg(problem));
        });
    });
}

// Writes the report from what is known now, on any thread.
std::function<QString()> LogSection::report() const
{
    return
        [events = m_events, settings = m_settings, device = m_device, transcript = m_transcript] {
            QStringList lines{
                QStringLiteral("%1 %2, Qt %3")
                    .arg(QCoreApplication::applicationName(),
                         QCoreApplication::applicationVersion(), QString::fromLatin1(qVersion())),
                QStringLiteral("%1, %2 %3, %4")
                    .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                         QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture()),
                tr("Language: %1").arg(QLocale().name()),
                QDateTime::currentDateTime().toString(Qt::ISODate)};
            lines += settings;
            lines += device ? linesAbout(*device) : QStringList{tr("Device: none")};
            lines += QString();
            lines += events;
            if (transcript && !transcript->isEmpty()) {
                lines += {QString(), tr("The last exchange with the device:"), transcript->text()};
            }
            return withoutPersonalNames(lines.join(u'\n') + u'\n');
        };
}

QString withoutPersonalNames(QString text)
{
    const auto belongsToWord = [](QChar c) {
        return c.isLetterOrNumber() || c == u'_' || c == u'-';
    };
    const auto replaceWord = [&](const QString &word, const QString &by) {
        for (qsizetype at = text.indexOf(word); at >= 0; at = text.indexOf(word, at)) {
            const qsizetype end = at + word.size();
            const bool isWhole = (at == 0 || !belongsToWord(text[at - 1])) &&
                                 (end == text.size() || !belongsToWord(text[end]));
            if (isWhole)
                text.replace(at, word.size(), by);
            at += isWhole ? by.size() : 1;
        }
    };
    const QString home = QDir::homePath();
    if (home.size() > 1)
        replaceWord(home, QStringLiteral("~"));
    // Everybody has heard of root, and its name is a group's, too.
    for (const QString &name : {home.section(u'/', -1), qEnvironmentVariable("USER")})
        if (!name.isEmpty() && name != QStringLiteral("root"))
            replaceWord(name, QStringLiteral("user"));
    return text;
}

} // namespace vorn
