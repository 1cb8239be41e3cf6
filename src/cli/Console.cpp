#include "cli/Console.h"

#include <cerrno>

namespace vorn {
namespace {

constexpr int kBehind = 64; // writes that wait

} // namespace

Console::~Console()
{
    finish();
}

int Console::finish()
{
    m_queue.postAndWait([] {});
    return m_error;
}

void Console::write(FILE *stream, QByteArray bytes)
{
    ++m_waiting;
    m_queue.post([this, stream, bytes = std::move(bytes)] {
        const auto size = static_cast<std::size_t>(bytes.size());
        const bool isWritten =
            std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
        if (!isWritten && stream == stdout && m_error == 0)
            m_error = errno;
        --m_waiting;
    });
}

bool Console::isBehind() const
{
    return m_waiting > kBehind;
}

} // namespace vorn
