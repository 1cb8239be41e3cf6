// What a device sends during an update or a version query: any bytes, cut anywhere, at any time.
// The outcome, the frames sent and the changes of RTS must be those of a plain reading of
// docs/protocol.md below, and the transcript must replay the exchange.
//
// The input: the kind of sequence, the image's length, then what arrives: a delay, a length, bytes.

#include "fuzz/Fuzzing.h"
#include "simulator/Replay.h"
#include "update/ReceiveBuffer.h"
#include "update/RecordingLine.h"
#include "update/UpdateRun.h"

#include <QByteArrayList>

#include <optional>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

using vorn::LineEvent;
using vorn::require;
using vorn::UpdateStep;
using Kind = vorn::UpdateFailureKind;
using Time = vorn::DeviceLine::Clock::time_point;

struct Arrival
{
    Time when;
    LineEvent event; // nothing follows Gone and Abandoned
    QByteArray chunk{};
};

std::vector<Arrival> arrivalsIn(vorn::FuzzInput &input)
{
    constexpr int kGone = 0xFE;
    constexpr int kAbandoned = 0xFF;
    constexpr int kLongestShort = 16;
    constexpr std::chrono::milliseconds kUnits[] = {1ms, 10ms, 100ms, 1s};
    std::vector<Arrival> arrivals;
    for (Time when{}; !input.isAtEnd();) {
        const int delay = input.byte();
        when += (delay & 0x3F) * kUnits[delay >> 6];
        const int length = input.byte();
        if (length == kGone || length == kAbandoned) {
            arrivals.push_back({when, length == kGone ? LineEvent::Gone : LineEvent::Abandoned});
            break;
        }
        QByteArray chunk = input.bytes(length % kLongestShort).toByteArray();
        if (length >= 2 * kLongestShort) // longer than the receive buffer keeps
            chunk.append(length, '\xAF');
        if (!chunk.isEmpty())
            arrivals.push_back({when, LineEvent::Chunk, chunk});
    }
    return arrivals;
}

// A line with a time of its own.
class TimedLine : public vorn::DeviceLine
{
public:
    explicit TimedLine(const std::vector<Arrival> &arrivals) : m_arrivals(arrivals) {}

    QByteArrayList sent;
    std::vector<bool> rts;

    void setRts(bool high) final
    {
        if (!high || !isAbandoned())
            rts.push_back(high);
    }
    void pause(std::chrono::milliseconds time) final { m_now += time; }
    Time now() const final { return m_now; }

protected:
    bool isAbandoned() const
    {
        return !m_arrivals.empty() && m_arrivals.back().event == LineEvent::Abandoned &&
               m_arrivals.back().when <= m_now;
    }
    bool isNextDue() const
    {
        return m_next < m_arrivals.size() && m_arrivals[m_next].when <= m_now;
    }
    // False when the deadline comes first.
    bool waitForNext(Time deadline)
    {
        const bool comes = m_next < m_arrivals.size() && m_arrivals[m_next].when <= deadline;
        m_now = std::max(m_now, comes ? m_arrivals[m_next].when : deadline);
        return comes;
    }

    const std::vector<Arrival> &m_arrivals;
    std::size_t m_next = 0;
    Time m_now{};
};

// With the receive buffer, as a port's line has it.
class BufferedLine final : public TimedLine
{
public:
    explicit BufferedLine(const std::vector<Arrival> &arrivals) : TimedLine(arrivals)
    {
        m_buffer.startReceiving();
    }

    void send(QByteArrayView bytes) override
    {
        deliver();
        if (m_buffer.isAbandoned())
            return;
        m_buffer.drop();
        sent += bytes.toByteArray();
    }
    LineEvent waitForChunk(Time deadline, QByteArray &chunk) override
    {
        for (;;) {
            deliver();
            const LineEvent event = m_buffer.waitForChunk({}, chunk);
            if (event != LineEvent::Silence || !waitForNext(deadline))
                return event;
        }
    }

private:
    void deliver()
    {
        for (; isNextDue(); ++m_next) {
            const Arrival &arrival = m_arrivals[m_next];
            if (arrival.event == LineEvent::Chunk)
                m_buffer.receive(arrival.chunk);
            else if (arrival.event == LineEvent::Gone)
                m_buffer.portDidClose();
            else
                m_buffer.abandon();
        }
    }

    vorn::ReceiveBuffer m_buffer;
};

// The same in plain words.
class PlainLine final : public TimedLine
{
public:
    using TimedLine::TimedLine;

    void send(QByteArrayView bytes) override
    {
        if (isAbandoned())
            return;
        while (isNextDue() && m_arrivals[m_next].event == LineEvent::Chunk)
            ++m_next;
        sent += bytes.toByteArray();
    }
    LineEvent waitForChunk(Time deadline, QByteArray &chunk) override
    {
        if (!isAbandoned() && !waitForNext(deadline))
            return LineEvent::Silence;
        if (isAbandoned())
            return LineEvent::Abandoned;
        const Arrival &arrival = m_arrivals[m_next];
        if (arrival.event == LineEvent::Chunk) {
            chunk = arrival.chunk;
            ++m_next;
        }
        return arrival.event;
    }
};

// How a sequence ended.
struct Outcome
{
    Kind kind = Kind::None;
    UpdateStep step = UpdateStep::Synchronize;
    qint64 frame = 0;
    bool mayBeErased = false;
    std::optional<int> version{};

    bool operator==(const Outcome &) const = default;
};

class Observer final : public vorn::UpdateObserver
{
public:
    std::optional<int> version;
    int ends = 0;

    void targetVersionDidArrive(qint32 targetVersion) override
    {
        require(!version);
        version = targetVersion;
    }
    void updateDidProgress(const vorn::UpdateProgress &progress) override
    {
        require(ends == 0 && progress.step >= m_last.step && progress.percent >= m_last.percent &&
                progress.percent < 100 && progress.frame <= progress.frames);
        m_last = progress;
    }
    void updateDidEnd(const vorn::UpdateResult &) override { ++ends; }

private:
    vorn::UpdateProgress m_last;
};

QByteArray framed(QByteArray body)
{
    body.prepend(static_cast<char>(body.size() + 1));
    char sum = 0;
    for (const char byte : body)
        sum = static_cast<char>(sum ^ byte);
    return body + sum;
}

// The updater as docs/protocol.md has it.
class PlainUpdater
{
public:
    explicit PlainUpdater(vorn::DeviceLine &line) : m_line(line) {}

    Outcome query()
    {
        if (connect())
            lowerRts();
        return m_outcome;
    }
    Outcome update(const QByteArray &image)
    {
        if (!connect())
            return m_outcome;
        m_outcome.step = UpdateStep::QueryVersion;
        if (image.isEmpty())
            m_outcome = {Kind::ImageEmpty, UpdateStep::ReadImage, 0, false, m_outcome.version};
        else if (download(image))
            m_line.setRts(true);
        const bool isSilent =
            m_outcome.kind == Kind::TimedOut || m_outcome.kind == Kind::PortClosed;
        if (m_outcome.kind == Kind::None || (isSilent && m_outcome.step == UpdateStep::Finish))
            lowerRts();
        return m_outcome;
    }

private:
    bool connect()
    {
        m_line.setRts(true);
        lowerRts();
        m_line.pause(10ms);
        m_line.send("\xF4");
        if (!isAcknowledged(UpdateStep::Synchronize, 5s))
            return false;
        m_line.send(framed("\x01\xFE"));
        if (!isAcknowledged(UpdateStep::Connect, 5s))
            return false;
        QByteArray answer = m_chunk;
        const Time late = m_line.now() + std::chrono::milliseconds(20);
        while (answer.size() < 4 && heard(late))
            answer += m_chunk;
        if (m_outcome.kind == Kind::TimedOut)
            m_outcome.kind = Kind::None; // a short answer is one
        if (m_outcome.kind != Kind::None)
            return false;
        m_line.send(framed("\x02\xFD"));
        m_outcome.version = static_cast<std::uint8_t>(answer.leftJustified(4, '\0').at(3));
        return true;
    }
    bool download(const QByteArray &image)
    {
        if (!isAcknowledged(UpdateStep::QueryVersion, 5s))
            return false;
        m_line.send(framed("\x03\xFC"));
        if (!isAcknowledged(UpdateStep::Download, 5s))
            return false;
        const QByteArray length = QByteArray::number(image.size(), 16).rightJustified(8, '0');
        m_line.send(framed(QByteArray::fromHex("08001800" + length)));
        m_outcome.mayBeErased = true;
        if (m_outcome.version >= 2) {
            if (!isAcknowledged(UpdateStep::Erase, 30s))
                return false;
            if (m_chunk.size() > 1 && (m_chunk[1] == '\xAF' || m_chunk[1] == '\xFC'))
                m_second = m_chunk.mid(1);
        }
        bool isFirst = true;
        for (qsizetype at = 0;; at += 250) {
            const bool isReady = isFirst ? isAcknowledged(UpdateStep::Release, 30s)
                                         : isAcknowledged(UpdateStep::Data, 5s, at / 250 - 1);
            if (!isReady)
                return false;
            isFirst = false;
            m_line.send(framed(image.mid(at, 250)));
            if (image.size() - at < 250)
                return isAcknowledged(UpdateStep::Finish, 5s);
        }
    }
    bool isAcknowledged(UpdateStep step, std::chrono::seconds limit, qint64 frame = 0)
    {
        m_outcome.step = step;
        m_outcome.frame = frame;
        const Time deadline = m_line.now() + limit;
        while (heard(deadline)) {
            if (m_chunk.startsWith('\xFC'))
                m_outcome.kind = Kind::Refused;
            if (m_chunk.startsWith('\xAF') || m_chunk.startsWith('\xFC'))
                break;
        }
        return m_outcome.kind == Kind::None;
    }
    bool heard(Time deadline)
    {
        LineEvent event = LineEvent::Chunk;
        if (m_second)
            m_chunk = *std::exchange(m_second, std::nullopt);
        else
            event = m_line.waitForChunk(deadline, m_chunk);
        if (event == LineEvent::Silence)
            m_outcome.kind = Kind::TimedOut;
        else if (event == LineEvent::Gone)
            m_outcome.kind = Kind::PortClosed;
        else if (event == LineEvent::Abandoned)
            m_outcome.kind = Kind::Abandoned;
        return event == LineEvent::Chunk;
    }
    void lowerRts()
    {
        m_line.pause(10ms);
        m_line.setRts(false);
    }

    vorn::DeviceLine &m_line;
    QByteArray m_chunk;
    std::optional<QByteArray> m_second;
    Outcome m_outcome;
};

// The transcript's text, read as a device, must ask for what was sent, in order.
void requireReplay(const QByteArrayList &sent, const vorn::Transcript &transcript)
{
    vorn::Replay replay(transcript.text());
    qsizetype answers = 0;
    for (const QByteArray &bytes : sent)
        answers += static_cast<qsizetype>(replay.take(bytes).answers.size());
    for (qsizetype i = 0; i < answers; ++i)
        replay.answered();
    require(replay.report().differences == 0);
    require(replay.report().replayed == replay.report().entries);
    require(sent.size() + answers == replay.report().entries);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr int kIsQuery = 0x80;
    vorn::FuzzInput input(data, size);
    const int first = input.byte();
    const QByteArray image =
        QByteArray("firmware").repeated(256).first((first & 7) * 256 + input.byte());
    const bool isQuery = (first & kIsQuery) != 0;
    const std::vector<Arrival> arrivals = arrivalsIn(input);

    PlainLine plainLine(arrivals);
    PlainUpdater plain(plainLine);
    const Outcome expected = isQuery ? plain.query() : plain.update(image);

    BufferedLine bufferedLine(arrivals);
    vorn::Transcript transcript;
    vorn::RecordingLine line(bufferedLine, transcript);
    Observer observer;
    const auto readImage = [&](qint32) {
        return image.isEmpty() ? vorn::FirmwareImage{{}, {Kind::ImageEmpty, 0, {}}}
                               : vorn::FirmwareImage{image, {}};
    };
    const vorn::UpdateResult result =
        isQuery ? vorn::queryTargetVersion(line, vorn::kVornBoot, observer)
                : vorn::runUpdate(line, readImage, vorn::kVornBoot, observer);

    require(observer.ends == (expected.kind == Kind::Abandoned ? 0 : 1));
    require(Outcome{result.failure.kind, result.step, result.frame, result.mayBeErased,
                    observer.version} == expected);
    require(bufferedLine.sent == plainLine.sent && bufferedLine.rts == plainLine.rts);
    require(bufferedLine.now() == plainLine.now());
    require(bufferedLine.rts.size() < 2 || !bufferedLine.rts.back());
    if (expected.kind != Kind::Abandoned)
        requireReplay(bufferedLine.sent, transcript);
    return 0;
}
