#include "cli/Console.h"

namespace vorn {
namespace {

constexpr int kBehind = 64; // writes that wait

} // namespace

Console::~Console()
{
    m_queue.postAndWait([] {});
}

void Console::write(FILE *stream, QByteArray bytes)
{
    ++m_waiting;
    m_queue.post([this, stream, bytes = std::move(bytes)] {
        std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
        std::fflush(stream);
        --m_waiting;
    });
}

bool Console::isBehind() const
{
    return m_waiting > kBehind;
}

} // namespace vorn
