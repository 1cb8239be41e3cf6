#include "update/RecordingLine.h"

namespace vorn {

using Kind = Transcript::Kind;

// Recorded first, so that the time is that of the first byte.
void RecordingLine::send(QByteArrayView bytes)
{
    m_transcript.add(Kind::Sent, now(), bytes);
    m_line.send(bytes);
}

void RecordingLine::setRts(bool high)
{
    m_transcript.add(high ? Kind::RtsHigh : Kind::RtsLow, now());
    m_line.setRts(high);
}

LineEvent RecordingLine::waitForChunk(Clock::time_point deadline, QByteArray &chunk)
{
    const LineEvent event = m_line.waitForChunk(deadline, chunk);
    switch (event) {
    case LineEvent::Chunk:
        m_transcript.add(Kind::Received, now(), chunk);
        break;
    case LineEvent::Silence:
        m_transcript.add(Kind::Silence, now());
        break;
    case LineEvent::Gone:
        m_transcript.add(Kind::Gone, now());
        break;
    case LineEvent::Abandoned:
        break;
    }
    return event;
}

} // namespace vorn
