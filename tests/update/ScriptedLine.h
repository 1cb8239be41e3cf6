#pragma once

#include "simulator/BootLoader.h"
#include "update/DeviceLine.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <map>
#include <span>
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
    // Called in place of the right answer to a step, which is handed over; false when that does not
    // come, nor what would follow it.
    using Fault = std::function<bool(ScriptedLine &line, const QByteArray &answer)>;

    explicit ScriptedLine(int modelCode) : m_modelCode(modelCode) {}

    // What the device does.
    void answer(const QByteArray &chunk, std::chrono::milliseconds after = 0ms)
    {
        m_arrivals.emplace(m_now + after, Arrival{LineEvent::Chunk, chunk});
    }
    void happens(LineEvent goneOrAbandoned)
    {
        m_arrivals.emplace(m_now, Arrival{goneOrAbandoned, {}});
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
        if (m_ended)
            return;
        m_arrivals.erase(m_arrivals.begin(), m_arrivals.upper_bound(m_now));
        lastSent = bytes.toByteArray();
        std::span<const std::uint8_t> left(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                           static_cast<std::size_t>(bytes.size()));
        while (!left.empty()) {
            const BootLoader::Taken taken = m_device.take(left);
            left = left.subspan(taken.count);
            if (taken.event)
                react(*taken.event);
        }
    }
    void setRts(bool high) override { rts.push_back(high); }
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) override
    {
        const auto next = m_arrivals.begin();
        if (next == m_arrivals.end() || next->first > deadline) {
            m_now = std::max(m_now, deadline);
            return LineEvent::Silence;
        }
        m_now = std::max(m_now, next->first);
        const Arrival arrival = next->second;
        m_ended = arrival.event != LineEvent::Chunk;
        if (!m_ended) // gone is gone for good
            m_arrivals.erase(next);
        chunk = arrival.chunk;
        return arrival.event;
    }
    void pause(std::chrono::milliseconds time) override { m_now += time; }
    Clock::time_point now() const override { return m_now; }

private:
    struct Arrival
    {
        LineEvent event;
        QByteArray chunk;
    };

    void react(const BootEvent &event)
    {
        if (!event.error.isEmpty())
            violations += event.error;
        if (event.verdict == BootEvent::Verdict::Refused)
            answer("\xfc");
        if (event.verdict != BootEvent::Verdict::Accepted)
            return;
        image.append(reinterpret_cast<const char *>(event.data.data()),
                     static_cast<qsizetype>(event.data.size()));
        isComplete = event.step == BootStep::Last;
        m_device.release();
        switch (event.step) {
        case BootStep::Connect:
            give({event.step, 0}, QByteArray("\xaf\0\0", 3) + static_cast<char>(m_modelCode));
            break;
        case BootStep::Header:
            image.clear();
            if (m_modelCode >= 2 && !give({BootStep::Erase, 0}, "\xaf"))
                break;
            give({BootStep::Ready, 0}, "\xaf");
            break;
        case BootStep::Frame:
            give({event.step, event.frame}, "\xaf");
            break;
        default:
            give({event.step, 0}, "\xaf");
        }
    }
    bool give(Step step, const QByteArray &rightAnswer)
    {
        if (const auto fault = faults.find(step); fault != faults.end())
            return fault->second(*this, rightAnswer);
        // The release of the first data frame follows the end of the erase.
        const bool follows = step.first == BootStep::Ready && !m_arrivals.empty();
        const auto when = follows ? std::max(m_now, m_arrivals.rbegin()->first) : m_now;
        m_arrivals.emplace(when, Arrival{LineEvent::Chunk, rightAnswer});
        return true;
    }

    const int m_modelCode;
    BootLoader m_device{qsizetype{16} << 20};
    Clock::time_point m_now{};
    std::multimap<Clock::time_point, Arrival> m_arrivals;
    bool m_ended = false;
};

} // namespace vorn
