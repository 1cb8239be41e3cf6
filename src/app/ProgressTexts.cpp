#include "app/ProgressTexts.h"

#include "app/Causes.h"
#include "firmware/UrlSession.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace vorn {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr auto kFirstEstimate = 1s;
constexpr double kFirstShare = 0.02;
constexpr auto kSample = 200ms; // the least time between two estimates
constexpr Seconds kMemory{2};   // how fast the estimate follows
constexpr auto kSilence = 1s;   // a person begins to wonder

struct Progress // names the translations' context
{
    Q_DECLARE_TR_FUNCTIONS(Progress)
};

QString elapsedText(SteadyTime began, SteadyTime now, const TimeLeft &timeLeft)
{
    const QString elapsed = durationText(std::chrono::floor<seconds>(now - began));
    if (const auto left = timeLeft.at(now))
        return Progress::tr("%1 elapsed, about %2 left.").arg(elapsed, durationText(*left));
    return Progress::tr("%1 elapsed.").arg(elapsed);
}

QString rateText(qint64 bytes, std::chrono::nanoseconds time)
{
    const double kibibytes = static_cast<double>(bytes) / 1024;
    return QLocale().toString(kibibytes / std::max(Seconds(time), Seconds(1ms)).count(), 'f', 0);
}

} // namespace

void TimeLeft::update(double share, SteadyTime now)
{
    if (m_firstShare < 0) {
        m_firstShare = share;
        m_began = m_sampled = now;
    }
    const Seconds passed = now - m_sampled;
    const double done = share - m_firstShare;
    if (passed < kSample || now - m_began < kFirstEstimate || done < kFirstShare)
        return;
    m_sampled = now;
    const Seconds left = Seconds(now - m_began) * ((1 - share) / done);
    const auto end = now + std::chrono::duration_cast<SteadyTime::duration>(left);
    const double weight = 1 - std::exp(-passed / kMemory);
    if (!m_end)
        m_end = end;
    else
        *m_end += std::chrono::duration_cast<SteadyTime::duration>((end - *m_end) * weight);
}

std::optional<seconds> TimeLeft::at(SteadyTime now) const
{
    if (!m_end || *m_end <= now) // nothing comes, or less than was expected
        return std::nullopt;
    return std::chrono::ceil<seconds>(*m_end - now);
}

void RunProgress::start(SteadyTime now)
{
    *this = {};
    m_began = m_stepBegan = now;
}

void RunProgress::update(const UpdateProgress &progress, SteadyTime now)
{
    if (progress.step != m_progress.step)
        m_stepBegan = now;
    m_progress = progress;
    if (progress.step == UpdateStep::Data && progress.frames > 0)
        m_timeLeft.update(
            static_cast<double>(progress.frame) / static_cast<double>(progress.frames), now);
}

QString RunProgress::text(SteadyTime now, SteadyTime lastHeard) const
{
    const auto silence = now - std::max(m_stepBegan, lastHeard);
    const bool isSending = m_progress.step == UpdateStep::Data;
    QString elapsed = elapsedText(m_began, now, isSending ? m_timeLeft : TimeLeft());
    if (silence < kSilence)
        return elapsed;
    const QString waited = durationText(std::chrono::floor<seconds>(silence));
    const QString limit = durationText(std::chrono::ceil<seconds>(m_progress.limit));
    QString waiting;
    switch (m_progress.step) {
    case UpdateStep::Erase:
        waiting = Progress::tr("Waiting for the device to erase, %1 of at most %2.");
        break;
    case UpdateStep::Data:
        waiting = Progress::tr("Waiting for the device to take the next data, %1 of at most %2.");
        break;
    case UpdateStep::ReadImage:
        return elapsed;
    default:
        return Progress::tr("Waiting for the answer to %1, %2 of at most %3.")
                   .arg(nameOfStep(m_progress.step), waited, limit) +
               u' ' + elapsed;
    }
    return waiting.arg(waited, limit) + u' ' + elapsed;
}

QString textOfUpdateTime(const UpdateResult &result)
{
    return Progress::tr("The update took %1 s; the image was sent at %2 KiB/s.")
        .arg(secondsText(result.elapsed), rateText(result.imageBytes, result.sending));
}

void DownloadProgress::start(SteadyTime now)
{
    *this = {};
    m_began = m_lastHeard = now;
}

void DownloadProgress::update(qint64 received, qint64 total, SteadyTime now)
{
    m_lastHeard = now;
    m_hasResponse = true;
    m_received = received;
    m_total = total;
    if (total > 0)
        m_timeLeft.update(static_cast<double>(received) / static_cast<double>(total), now);
}

QString DownloadProgress::text(SteadyTime now) const
{
    const QString elapsed = elapsedText(m_began, now, m_timeLeft);
    const auto silence = now - m_lastHeard;
    if (silence >= kSilence && !m_hasResponse)
        return Progress::tr("Waiting for the server, %1.")
                   .arg(durationText(std::chrono::floor<seconds>(silence))) +
               u' ' + elapsed;
    if (silence >= kSilence)
        return Progress::tr("Waiting for the server, %1 of at most %2.")
                   .arg(durationText(std::chrono::floor<seconds>(silence)),
                        durationText(std::chrono::ceil<seconds>(UrlSession::Timeouts().idle))) +
               u' ' + elapsed;
    const QString received = QLocale().formattedDataSize(m_received);
    if (m_total > 0)
        return Progress::tr("%1 of %2.").arg(received, QLocale().formattedDataSize(m_total)) +
               u' ' + elapsed;
    return m_received > 0 ? Progress::tr("%1 so far.").arg(received) + u' ' + elapsed : elapsed;
}

QString DownloadProgress::textOfTime(SteadyTime now) const
{
    const auto time = elapsed(now);
    return Progress::tr("%1 in %2 s, %3 KiB/s.")
        .arg(QLocale().formattedDataSize(m_received), secondsText(time),
             rateText(m_received, time));
}

milliseconds DownloadProgress::elapsed(SteadyTime now) const
{
    return std::chrono::floor<milliseconds>(now - m_began);
}

QString durationText(seconds time)
{
    const auto total = time.count();
    if (total < 60)
        return Progress::tr("%1 s").arg(total);
    return Progress::tr("%1 min %2 s").arg(total / 60).arg(total % 60);
}

QString titleOfStep(UpdateStep step)
{
    switch (step) {
    case UpdateStep::Synchronize:
        return QCoreApplication::translate("Steps", "Synchronize");
    case UpdateStep::Connect:
        return QCoreApplication::translate("Steps", "Connect");
    case UpdateStep::QueryVersion:
        return QCoreApplication::translate("Steps", "Ask for the version");
    case UpdateStep::ReadImage:
        return QCoreApplication::translate("Steps", "Read the file");
    case UpdateStep::Download:
        return QCoreApplication::translate("Steps", "Begin the download");
    case UpdateStep::Erase:
        return QCoreApplication::translate("Steps", "Erase");
    case UpdateStep::Release:
        return QCoreApplication::translate("Steps", "Wait for the release");
    case UpdateStep::Data:
        return QCoreApplication::translate("Steps", "Send the image");
    case UpdateStep::Finish:
        return QCoreApplication::translate("Steps", "Confirm the image");
    }
    return {};
}

} // namespace vorn
