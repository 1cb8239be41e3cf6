#pragma once

#include "simulator/BootLoader.h"
#include "update/DeviceLine.h"

#include <QByteArray>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <map>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace vorn {

using namespace std::chrono_literals;

// A line with a time of its own to a device that is a few lines of the test: no thread, no waiting.
class ScriptedLine final : public DeviceLine
{
public:
    // A step of the exchange, and the number of the data frame at BootStep::Frame, from 1.
    using Step = std::pair<BootStep, int>;
    // Replaces the right answer to a step, which is passed in. False if neither that answer comes
    // nor any that would follow it.
    using Fault = std::function<bool(ScriptedLine &line, const QByteArray &answer)>;

    // The device takes `latency` for each answer.
    explicit ScriptedLine(int modelCode, std::chrono::milliseconds latency = 0ms)
        : m_modelCode(modelCode), m_latency(latency)
    {
    }

    // What the device does. Times count from when it would have begun to answer.
    void answer(const QByteArray &chunk, std::chrono::milliseconds after = 0ms)
    {
        m_arrivals.emplace(m_base + after, chunk);
    }
    void happens(LineEvent goneOrAbandoned, Clock::duration after = {})
    {
        Clock::time_point &when = goneOrAbandoned == LineEvent::Gone ? m_gone : m_abandoned;
        when = std::min(when, m_base + after);
    }
    // The latest frame does not count: it was refused, or lost on its way.
    void forgetFrame()
    {
        image.chop(m_latestBytes);
        isComplete = false;
    }

    std::map<Step, Fault> faults;

    // What the device saw.
    QByteArray image;
    bool isComplete = false; // the device has accepted the last frame
    QStringList violations;
    std::vector<bool> rts;
    QByteArray lastSent;

    std::chrono::milliseconds elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_now - Clock::time_point());
    }

    // DeviceLine
    void send(QByteArrayView bytes) override
    {
        if (isAbandoned())
            return;
        m_arrivals.erase(m_arrivals.begin(), m_arrivals.upper_bound(m_now));
        if (m_gone <= m_now)
            return;
        lastSent = bytes.toByteArray();
        if (m_released <= m_now)
            m_device.release();
        std::span<const std::uint8_t> left(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                           static_cast<std::size_t>(bytes.size()));
        while (!left.empty()) {
            const BootLoader::Taken taken = m_device.take(left);
            left = left.subspan(taken.count);
            if (taken.event)
                react(*taken.event);
        }
    }
    void setRts(bool high) override
    {
        if (!high || !isAbandoned())
            rts.push_back(high);
    }
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) override
    {
        if (++m_waits > kMostWaits)
            throw std::runtime_error("the update does not end");
        if (isAbandoned())
            return LineEvent::Abandoned;
        const auto limit = std::min({deadline, m_gone, m_abandoned});
        const auto next = m_arrivals.begin();
        if (next != m_arrivals.end() && next->first <= limit) {
            m_now = std::max(m_now, next->first);
            chunk = next->second;
            m_arrivals.erase(next);
            return LineEvent::Chunk;
        }
        m_now = std::max(m_now, limit);
        if (isAbandoned())
            return LineEvent::Abandoned;
        return m_gone <= m_now ? LineEvent::Gone : LineEvent::Silence;
    }
    void pause(std::chrono::milliseconds time) override { m_now += time; }
    Clock::time_point now() const override { return m_now; }

private:
    // More than an update of the largest image takes.
    static constexpr int kMostWaits = 10'000;

    bool isAbandoned() const { return m_abandoned <= m_now; }
    void react(const BootEvent &event)
    {
        m_base = m_now + m_latency;
        if (!event.error.isEmpty())
            violations += event.error;
        if (event.verdict == BootEvent::Verdict::Refused)
            answer("\xfc");
        if (event.verdict != BootEvent::Verdict::Accepted)
            return;
        m_latestBytes = static_cast<qsizetype>(event.data.size());
        image.append(reinterpret_cast<const char *>(event.data.data()), m_latestBytes);
        isComplete = event.step == BootStep::Last;
        switch (event.step) {
        case BootStep::Connect:
            give({event.step, 0}, QByteArray("\xaf\0\0", 3) + static_cast<char>(m_modelCode));
            break;
        case BootStep::Header:
            image.clear();
            if (m_modelCode >= 2) {
                if (!give({BootStep::Erase, 0}, "\xaf"))
                    break;
                // The release of the first data frame follows the end of the erase.
                m_base = std::max(m_base, m_arrivals.rbegin()->first) + m_latency;
            }
            give({BootStep::Ready, 0}, "\xaf");
            break;
        case BootStep::Frame:
            give({event.step, event.frame}, "\xaf");
            break;
        default:
            give({event.step, 0}, "\xaf");
        }
        m_released = m_arrivals.empty() ? Clock::time_point::max() : m_arrivals.rbegin()->first;
    }
    bool give(Step step, const QByteArray &rightAnswer)
    {
        if (const auto fault = faults.find(step); fault != faults.end())
            return fault->second(*this, rightAnswer);
        answer(rightAnswer);
        return true;
    }

    const int m_modelCode;
    const std::chrono::milliseconds m_latency;
    BootLoader m_device{qsizetype{16} << 20};
    Clock::time_point m_now{};
    Clock::time_point m_base{};     // when the device begins to answer
    Clock::time_point m_released{}; // when its answers are complete: the next frame may come
    std::multimap<Clock::time_point, QByteArray> m_arrivals;
    Clock::time_point m_gone = Clock::time_point::max();
    Clock::time_point m_abandoned = Clock::time_point::max();
    qsizetype m_latestBytes = 0;
    int m_waits = 0;
};

} // namespace vorn
