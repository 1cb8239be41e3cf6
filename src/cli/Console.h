#pragma once

#include "platform/SerialQueue.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdio>

namespace vorn {

// Standard output and standard error, written in order by a background thread: a reader that stops
// reading must not hold up an update. Main thread only.
class Console
{
public:
    Console() = default;
    // Waits until everything is written.
    ~Console();
    // The same; the errno of the first write to standard output that failed, or 0.
    int finish();
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    void write(FILE *stream, QByteArray bytes);
    void write(FILE *stream, const QString &text) { write(stream, text.toLocal8Bit()); }
    // Whether the reader does not keep up; progress may then be left out.
    bool isBehind() const;

private:
    std::atomic<int> m_waiting = 0;
    int m_error = 0; // the writing thread's, until finish()
    SerialQueue m_queue;
};

} // namespace vorn
