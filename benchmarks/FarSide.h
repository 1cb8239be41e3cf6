#pragma once

#include "platform/FileDescriptor.h"
#include "platform/WakeEvent.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <thread>

namespace vorn {

// A raw pseudo-terminal and a thread of plain system calls on its far side.
class FarSide
{
public:
    FarSide();
    ~FarSide();
    FarSide(const FarSide &) = delete;
    FarSide &operator=(const FarSide &) = delete;

    QString path() const { return m_path; }

    // Answers each so many bytes with one byte, until stop().
    void echo(qsizetype frame);
    // Writes so many bytes as fast as they are taken.
    void stream(qint64 bytes);
    void stop();
    // Closes the far side, as pulling the cable does.
    void hangUp();

private:
    // False when the far side is to stop.
    bool waitFor(short events) const;

    FileDescriptor m_master;
    // Held so that the far side never hangs up while a measured port is opened and closed.
    FileDescriptor m_slave;
    QString m_path;
    WakeEvent m_stop;
    std::thread m_thread;
};

} // namespace vorn
