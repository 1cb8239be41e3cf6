#pragma once

#include "update/DeviceLine.h"
#include "update/Transcript.h"

namespace vorn {

// Forwards everything to a line and records it. Bytes sent on a closed line are recorded, too; the
// next entry then says that it is gone.
class RecordingLine final : public DeviceLine
{
public:
    // Both must outlive the object.
    RecordingLine(DeviceLine &line, Transcript &transcript) : m_line(line), m_transcript(transcript)
    {
    }

    void send(QByteArrayView bytes) override;
    void setRts(bool high) override;
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) override;
    void pause(std::chrono::milliseconds time) override { m_line.pause(time); }
    Clock::time_point now() const override { return m_line.now(); }

private:
    DeviceLine &m_line;
    Transcript &m_transcript;
};

} // namespace vorn
