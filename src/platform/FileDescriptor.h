#pragma once

#include <unistd.h>

#include <utility>

namespace vorn {

// Owns one file descriptor and closes it. Move-only; -1 means none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    FileDescriptor(FileDescriptor &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        if (this != &other) {
            reset();
            m_fd = std::exchange(other.m_fd, -1);
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor() { reset(); }

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }
    int release() { return std::exchange(m_fd, -1); }

    // Closes the descriptor, if there is one; close(2)'s result, so that a failure can be reported.
    int reset()
    {
        const int fd = release();
        return fd >= 0 ? ::close(fd) : 0;
    }

private:
    int m_fd = -1;
};

} // namespace vorn
