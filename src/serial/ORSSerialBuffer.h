#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The newest bytes of a stream, up to a fixed number. No locks: one owner, one thread at a time.
// Changes are not notified.
class ORSSerialBuffer
{
public:
    // The capacity in bytes. Memory is allocated only for the bytes held.
    explicit ORSSerialBuffer(quint64 maximumLength) : m_maximumLength(maximumLength) {}

    // Appends the bytes and drops the oldest beyond the capacity.
    void appendData(QByteArrayView data);
    void clearBuffer();

    // The bytes held, oldest first, valid until the next change.
    QByteArrayView data() const { return m_internalBuffer; }
    quint64 maximumLength() const { return m_maximumLength; }

private:
    quint64 m_maximumLength;
    QByteArray m_internalBuffer;
};
