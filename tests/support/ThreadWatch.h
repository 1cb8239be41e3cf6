#pragma once

#include <gtest/gtest.h>

#include <atomic>
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

// Prints name, state, kernel function and (for root only) kernel stack of every thread of this
// process to the standard error output.
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

// For a test of many threads: prints their states if the test takes longer than the limit, and at
// its end if it failed.
class ThreadWatch
{
public:
    explicit ThreadWatch(std::chrono::seconds limit)
        : m_thread([this, limit](const std::stop_token &ended) {
              std::mutex mutex;
              std::unique_lock lock(mutex);
              std::condition_variable_any().wait_for(lock, ended, limit, [] { return false; });
              m_isOver = !ended.stop_requested();
              if (m_isOver)
                  printThreads();
          })
    {
    }
    ~ThreadWatch()
    {
        m_thread.request_stop();
        m_thread.join();
        if (testing::Test::HasFailure())
            printThreads();
    }
    ThreadWatch(const ThreadWatch &) = delete;
    ThreadWatch &operator=(const ThreadWatch &) = delete;

    // True once the limit has passed.
    bool isOver() const { return m_isOver; }

private:
    std::atomic<bool> m_isOver = false;
    std::jthread m_thread;
};

} // namespace vorn
