#pragma once

#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <termios.h>

#include <cstring>
#include <filesystem>
#include <optional>
#include <thread>
#include <vector>

namespace vorn {

// How many descriptors this process has open.
inline std::ptrdiff_t descriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

// The terminal's settings; nothing if it cannot be opened.
inline std::optional<termios> lineSettings(const QString &terminal)
{
    const FileDescriptor line(
        ::open(QFile::encodeName(terminal).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios settings{};
    if (!line.isValid() || ::tcgetattr(line.get(), &settings) != 0)
        return std::nullopt;
    return settings;
}

inline bool isSame(const termios &one, const termios &other)
{
    return one.c_iflag == other.c_iflag && one.c_oflag == other.c_oflag &&
           one.c_cflag == other.c_cflag && one.c_lflag == other.c_lflag &&
           one.c_ispeed == other.c_ispeed && one.c_ospeed == other.c_ospeed &&
           std::memcmp(one.c_cc, other.c_cc, sizeof one.c_cc) == 0;
}

// Threads that leave the updater no idle processor.
class ProcessorLoad
{
public:
    explicit ProcessorLoad(unsigned threads)
    {
        for (unsigned i = 0; i < threads; ++i)
            m_threads.emplace_back([](const std::stop_token &ended) {
                while (!ended.stop_requested())
                    continue;
            });
    }

private:
    std::vector<std::jthread> m_threads;
};

} // namespace vorn
