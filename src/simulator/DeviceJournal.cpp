#include "simulator/DeviceJournal.h"

#include <algorithm>
#include <utility>

namespace vorn {

namespace {

constexpr qsizetype MaxErrors = 100;

// Memory for an image is set aside at its header, but no more than this on the header's word alone.
constexpr qint64 MaxReserve = qint64{4} * 1024 * 1024;

} // namespace

DeviceJournal::DeviceJournal(int modelCode)
{
    m_report.modelCode = modelCode;
}

void DeviceJournal::setObserver(DeviceObserver observer)
{
    m_observer = std::move(observer);
}

void DeviceJournal::tell(DeviceEvent::Kind kind, int number) const
{
    if (m_observer)
        m_observer({kind, number});
}

void DeviceJournal::plugged(const QString &path, const QString &slavePath)
{
    {
        const std::lock_guard lock(m_mutex);
        m_report.path = path;
        m_report.slavePath = slavePath;
        m_report.plugged = true;
    }
    m_changed.notify_all();
    tell(DeviceEvent::Kind::Plugged, 0);
}

void DeviceJournal::used(int opens, bool inUse)
{
    const std::lock_guard lock(m_mutex);
    m_report.opens += opens;
    m_report.inUse = inUse;
}

void DeviceJournal::note(const QString &error)
{
    ++m_report.errorCount;
    if (m_report.errors.size() < MaxErrors)
        m_report.errors.append(error);
}

void DeviceJournal::failed(const QString &error)
{
    int count = 0;
    {
        const std::lock_guard lock(m_mutex);
        note(error);
        count = m_report.errorCount;
    }
    tell(DeviceEvent::Kind::ProtocolError, count);
}

std::chrono::microseconds DeviceJournal::sinceSync(Time when) const
{
    return std::chrono::duration_cast<std::chrono::microseconds>(when - m_syncTime);
}

void DeviceJournal::received(const BootEvent &event, qint64 declaredLength, Time begun, Time ended)
{
    if (!event.error.isNull())
        failed(event.error);
    if (event.verdict != BootEvent::Verdict::Accepted)
        return;
    std::optional<DeviceEvent> news;
    {
        const std::lock_guard lock(m_mutex);
        news = enter(event, declaredLength, begun, ended);
    }
    m_changed.notify_all();
    if (news)
        tell(news->kind, news->number);
}

std::optional<DeviceEvent> DeviceJournal::enter(const BootEvent &event, qint64 declaredLength,
                                                Time begun, Time ended)
{
    if (event.step == BootStep::Sync) {
        m_downloading = false;
        m_syncClock = QDateTime::currentDateTimeUtc();
        m_syncTime = ended;
        return DeviceEvent{DeviceEvent::Kind::Exchange, ++m_report.exchanges};
    }
    ++m_report.frames;
    if (event.step == BootStep::Header) {
        m_downloading = true;
        m_report.downloadFrames = 0;
        m_report.declaredLength = declaredLength;
        m_report.partialImage = QByteArray();
        m_report.partialImage.reserve(std::min(declaredLength, MaxReserve));
        m_report.times = DownloadTimes();
        m_report.times.startedAt = m_syncClock;
        m_report.times.toHeader = sinceSync(ended);
        return std::nullopt;
    }
    if (event.step != BootStep::Frame && event.step != BootStep::Last)
        return std::nullopt;
    m_report.downloadFrames = event.frame;
    m_report.partialImage.append(reinterpret_cast<const char *>(event.data.data()),
                                 static_cast<qsizetype>(event.data.size()));
    m_report.times.gaps.push_back(
        std::chrono::duration_cast<std::chrono::microseconds>(begun - m_lastRelease));
    return DeviceEvent{DeviceEvent::Kind::Frame, event.frame};
}

void DeviceJournal::enter(const Answer &answer, Time when)
{
    if (answer.bytes.front() == boot::Nak)
        ++m_report.refusals;
    if (m_downloading) {
        m_report.times.toLastAnswer = sinceSync(when);
        if (answer.releases && m_report.downloadFrames == 0)
            m_report.times.toRelease = sinceSync(when);
    }
    if (answer.releases)
        m_lastRelease = when;
    if (answer.completes) {
        m_report.image = std::exchange(m_report.partialImage, {});
        ++m_report.updates;
    }
}

void DeviceJournal::tellAnswer(const Answer &answer, bool written)
{
    if (!written) {
        failed(QStringLiteral("an answer was lost: nobody reads the terminal"));
    } else if (answer.completes) {
        m_changed.notify_all();
        // Only this thread writes the report, so it can read it without the lock.
        tell(DeviceEvent::Kind::Update, m_report.updates);
    }
}

DeviceReport DeviceJournal::report() const
{
    const std::lock_guard lock(m_mutex);
    DeviceReport copy = m_report;
    // Deep copies: no memory is shared across threads but under the lock.
    copy.path = QString(copy.path.constData(), copy.path.size());
    copy.slavePath = QString(copy.slavePath.constData(), copy.slavePath.size());
    copy.image = QByteArray(copy.image.constData(), copy.image.size());
    copy.partialImage = QByteArray(copy.partialImage.constData(), copy.partialImage.size());
    copy.errors.clear();
    for (const QString &error : m_report.errors)
        copy.errors.append(QString(error.constData(), error.size()));
    return copy;
}

} // namespace vorn
