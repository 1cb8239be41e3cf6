#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>

namespace vorn {

// Prints every thread of this process to the standard error output: its name, state, and where in
// the kernel it stands (the whole stack for root only).
inline void printThreads()
{
    const auto contents = [](const std::filesystem::path &path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        const std::string status = contents(task.path() / "stat");
        const auto state = status.rfind(") ");
        std::cerr << "thread " << task.path().filename().string() << ' '
                  << contents(task.path() / "comm") << "  state "
                  << (state == std::string::npos ? "?" : status.substr(state + 2, 1)) << ", in "
                  << contents(task.path() / "wchan") << '\n'
                  << contents(task.path() / "stack");
    }
}

// For a test of many threads: prints where they stand when the test takes longer than the limit,
// and when it ends as a failed one.
class ThreadWatch
{
public:
    explicit ThreadWatch(std::chrono::seconds limit)
        : m_thread([this, limit] {
              std::unique_lock lock(m_mutex);
              if (m_changed.wait_for(lock, limit, [this] { return m_ended; }))
                  return;
              m_isOver = true;
              std::cerr << "still running after " << limit.count() << " s\n";
              printThreads();
          })
    {
    }
    ~ThreadWatch()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        m_changed.notify_one();
        m_thread.join();
        if (testing::Test::HasFailure())
            printThreads();
    }
    ThreadWatch(const ThreadWatch &) = delete;
    ThreadWatch &operator=(const ThreadWatch &) = delete;

    // True once the limit has passed.
    bool isOver() const
    {
        const std::lock_guard lock(m_mutex);
        return m_isOver;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_ended = false;
    bool m_isOver = false;
    std::thread m_thread;
};

} // namespace vorn
