#pragma once

#include "simulator/SimulatedDevice.h"
#include "simulator/UniqueFd.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace vorn::test {

using namespace std::chrono_literals;

inline QByteArray frame(const QByteArray &body)
{
    QByteArray bytes(1, static_cast<char>(body.size() + 1));
    bytes += body;
    char sum = 0;
    for (const char byte : bytes)
        sum = static_cast<char>(sum ^ byte);
    return bytes + sum;
}

inline const QByteArray Sync = QByteArray::fromHex("f4");
inline const QByteArray Connect = QByteArray::fromHex("0301fefc");
inline const QByteArray Version = QByteArray::fromHex("0302fdfc");
inline const QByteArray Download = QByteArray::fromHex("0303fcfc");
inline const QByteArray Ack = QByteArray::fromHex("af");
inline const QByteArray Nak = QByteArray::fromHex("fc");

inline QByteArray header(quint32 length, quint32 address = 0x08001800)
{
    QByteArray body;
    for (const quint32 word : {address, length}) {
        for (const unsigned shift : {24U, 16U, 8U, 0U})
            body += static_cast<char>((word >> shift) & 0xFFU);
    }
    return frame(body);
}

// The other end of a simulated device: writes frames and reads answers on the bare terminal.
class TestUpdater
{
public:
    explicit TestUpdater(const QString &path)
        : m_fd(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
    }

    int descriptor() const { return m_fd.get(); }

    void send(const QByteArray &bytes) const
    {
        [[maybe_unused]] const auto n =
            ::write(m_fd.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }

    // What arrives until `count` bytes are there, the limit has passed or the terminal hangs up.
    QByteArray receive(qsizetype count, std::chrono::milliseconds limit = 5s) const
    {
        QByteArray got;
        const auto end = std::chrono::steady_clock::now() + limit;
        while (got.size() < count) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
            pollfd fd{m_fd.get(), POLLIN, 0};
            if (left.count() <= 0 || ::poll(&fd, 1, static_cast<int>(left.count())) <= 0)
                break;
            QByteArray chunk(256, Qt::Uninitialized);
            const ssize_t n = ::read(m_fd.get(), chunk.data(), 256);
            if (n <= 0 && errno != EAGAIN)
                break;
            got += chunk.first(n > 0 ? n : 0);
        }
        return got;
    }

    QByteArray ask(const QByteArray &bytes, qsizetype answerLength = 1) const
    {
        send(bytes);
        return receive(answerLength);
    }

    // Sync byte and commands up to the download command; whether each was acknowledged.
    bool handshake() const
    {
        return ask(Sync) == Ack && ask(Connect, 4).startsWith(Ack) && ask(Version) == Ack &&
               ask(Download) == Ack;
    }

    // A whole update with `headerAnswers` acknowledgements after the header; whether each frame
    // was acknowledged.
    bool update(const QByteArray &image, int headerAnswers) const
    {
        if (!handshake() || ask(header(static_cast<quint32>(image.size())), headerAnswers) !=
                                Ack.repeated(headerAnswers))
            return false;
        qsizetype at = 0;
        for (; image.size() - at >= 250; at += 250) {
            if (ask(frame(image.mid(at, 250))) != Ack)
                return false;
        }
        return ask(frame(image.mid(at))) == Ack;
    }

private:
    UniqueFd m_fd;
};

// A simulated device with its other end.
struct TestedDevice
{
    explicit TestedDevice(const DeviceOptions &options)
        : device(options), started(device.start()), updater(device.path())
    {
        EXPECT_TRUE(started);
    }

    SimulatedDevice device;
    const bool started;
    const TestUpdater updater;
};

inline QByteArray sampleImage(qsizetype length)
{
    QByteArray image(length, Qt::Uninitialized);
    quint32 state = 12345;
    for (char &byte : image) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return image;
}

} // namespace vorn::test
