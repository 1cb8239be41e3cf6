#pragma once

#include "update/UpdateResult.h"

#include <QString>

#include <chrono>
#include <optional>

// The progress of a run in words, for its details line. Times are the steady clock's.
namespace vorn {

using SteadyTime = std::chrono::steady_clock::time_point;

// The time that is left of something whose share done is told now and then, judged by the average
// rate. The estimate moves to a new one gradually.
class TimeLeft
{
public:
    // `share` is between 0 and 1 and does not fall; the first call begins.
    void update(double share, SteadyTime now);
    // Never negative; no value before a second and a fiftieth of the whole are over, nor when the
    // estimate has run out.
    std::optional<std::chrono::seconds> at(SteadyTime now) const;

private:
    SteadyTime m_began{};
    SteadyTime m_sampled{};
    double m_firstShare = -1; // negative before the first
    std::optional<SteadyTime> m_end;
};

// An update's.
class RunProgress
{
public:
    void start(SteadyTime now);
    void update(const UpdateProgress &progress, SteadyTime now);
    // `lastHeard` is when bytes came from the device last.
    QString text(SteadyTime now, SteadyTime lastHeard) const;

private:
    SteadyTime m_began{};
    SteadyTime m_stepBegan{};
    UpdateProgress m_progress;
    TimeLeft m_timeLeft;
};
// How long a successful update took.
QString textOfUpdateTime(const UpdateResult &result);

// A download's.
class DownloadProgress
{
public:
    void start(SteadyTime now);
    // `total` is 0 when unknown.
    void update(qint64 received, qint64 total, SteadyTime now);
    QString text(SteadyTime now) const;
    // How long it took, once all is there.
    QString textOfTime(SteadyTime now) const;
    std::chrono::milliseconds elapsed(SteadyTime now) const;

private:
    SteadyTime m_began{};
    SteadyTime m_lastHeard{};
    bool m_hasResponse = false;
    qint64 m_received = 0;
    qint64 m_total = 0;
    TimeLeft m_timeLeft;
};

// What is done at a step.
QString titleOfStep(UpdateStep step);

// "8 s" or "2 min 5 s".
QString durationText(std::chrono::seconds time);

} // namespace vorn
