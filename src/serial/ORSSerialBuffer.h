#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The newest bytes of a stream, up to a fixed number. A plain value without locks: one owner, one
// thread at a time. Nothing watches it: whoever fills it looks at data() next.
class ORSSerialBuffer
{
public:
    // The capacity in bytes. Memory is taken for what is held, not for what could be.
    explicit ORSSerialBuffer(quint64 maximumLength) : m_maximumLength(maximumLength) {}

    // Puts the bytes behind those held; what is then too much goes from the front.
    void appendData(QByteArrayView data);
    void clearBuffer();

    // The bytes held, oldest first, valid until the next change.
    QByteArrayView data() const { return m_internalBuffer; }
    quint64 maximumLength() const { return m_maximumLength; }

private:
    quint64 m_maximumLength;
    QByteArray m_internalBuffer;
};
