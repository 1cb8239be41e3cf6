#include "simulator/DeviceReport.h"

#include <QCryptographicHash>
#include <QJsonArray>

#include <algorithm>
#include <utility>

namespace vorn {

namespace {

constexpr qsizetype kMaxErrors = 100;

// Limits the memory reserved on the word of a header.
constexpr qint64 kMaxReserve = qint64{4} << 20;

double milliseconds(std::chrono::nanoseconds time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

} // namespace

QString DeviceReport::imageSha256() const
{
    if (updates == 0)
        return {};
    return QString::fromLatin1(QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex());
}

QJsonObject DeviceReport::toJson() const
{
    QJsonObject download{{QStringLiteral("declaredLength"), qint64{declaredLength}},
                         {QStringLiteral("frames"), downloadFrames},
                         {QStringLiteral("unfinishedLength"), partialImage.size()}};
    if (times.startedAt.isValid()) {
        download.insert(QStringLiteral("startedAt"), times.startedAt.toString(Qt::ISODateWithMs));
        download.insert(QStringLiteral("headerAfterMs"), milliseconds(times.toHeader));
        download.insert(QStringLiteral("dataReleasedAfterMs"), milliseconds(times.toRelease));
        download.insert(QStringLiteral("lastAnswerAfterMs"), milliseconds(times.toLastAnswer));
        download.insert(QStringLiteral("longestGapMs"), milliseconds(times.longestGap));
    }
    QJsonObject json{{QStringLiteral("path"), path},
                     {QStringLiteral("terminal"), slavePath},
                     {QStringLiteral("plugged"), plugged},
                     {QStringLiteral("opens"), opens},
                     {QStringLiteral("inUse"), inUse},
                     {QStringLiteral("exchanges"), exchanges},
                     {QStringLiteral("updates"), updates},
                     {QStringLiteral("imageSha256"), imageSha256()},
                     {QStringLiteral("imageLength"), image.size()},
                     {QStringLiteral("frames"), qint64{frames}},
                     {QStringLiteral("refusals"), refusals},
                     {QStringLiteral("errorCount"), errorCount},
                     {QStringLiteral("errors"), QJsonArray::fromStringList(errors)},
                     {QStringLiteral("download"), download}};
    if (replay.entries == 0) {
        json.insert(QStringLiteral("model"), modelCode);
        return json;
    }
    json.insert(QStringLiteral("replay"),
                QJsonObject{{QStringLiteral("entries"), replay.entries},
                            {QStringLiteral("replayed"), replay.replayed},
                            {QStringLiteral("complete"), replay.replayed == replay.entries},
                            {QStringLiteral("differences"), replay.differences}});
    return json;
}

void DeviceJournal::addError(const QString &error)
{
    ++m_report.errorCount;
    if (m_report.errors.size() < kMaxErrors)
        m_report.errors.append(error);
}

void DeviceJournal::addEvent(const BootEvent &event, qint64 declaredLength, Time begun, Time ended)
{
    if (!event.error.isEmpty())
        addError(event.error);
    if (event.verdict != BootEvent::Verdict::Accepted)
        return;
    if (event.step == BootStep::Sync) {
        ++m_report.exchanges;
        m_downloading = false;
        m_syncClock = QDateTime::currentDateTimeUtc();
        m_syncTime = ended;
        return;
    }
    ++m_report.frames;
    if (event.step == BootStep::Header) {
        m_downloading = true;
        m_report.downloadFrames = 0;
        m_report.declaredLength = declaredLength;
        m_report.partialImage.clear();
        m_report.partialImage.reserve(std::min(declaredLength, kMaxReserve));
        m_report.times = {};
        m_report.times.startedAt = m_syncClock;
        m_report.times.toHeader = ended - m_syncTime;
    } else if (event.frame > 0) {
        m_report.downloadFrames = event.frame;
        m_report.partialImage.append(reinterpret_cast<const char *>(event.data.data()),
                                     static_cast<qsizetype>(event.data.size()));
        m_report.times.longestGap = std::max(m_report.times.longestGap, begun - m_lastRelease);
    }
}

void DeviceJournal::addAnswer(const Answer &answer, Time when)
{
    if (static_cast<std::uint8_t>(answer.bytes.front()) == boot::kNak)
        ++m_report.refusals;
    if (m_downloading) {
        m_report.times.toLastAnswer = when - m_syncTime;
        if (answer.releases && m_report.downloadFrames == 0)
            m_report.times.toRelease = when - m_syncTime;
    }
    if (answer.releases)
        m_lastRelease = when;
    if (answer.completes) {
        m_report.image = std::exchange(m_report.partialImage, {});
        ++m_report.updates;
    }
}

void DeviceJournal::addUnplug()
{
    m_report.plugged = false;
    m_report.inUse = false;
    m_downloading = false;
}

} // namespace vorn
