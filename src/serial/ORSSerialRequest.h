#pragma once

#include "serial/ORSSerialPacketDescriptor.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <chrono>
#include <memory>

class ORSSerialRequest;
// Shared by the caller, the port and its delegate; compared by identity.
using ORSSerialRequestPtr = std::shared_ptr<ORSSerialRequest>;

// Bytes to send and what the answer to them looks like. Not to be changed while a port handles it.
class ORSSerialRequest
{
public:
    using TimeInterval = std::chrono::duration<double>; // seconds

    // dataToSend: written when the request's turn comes.
    // userInfo: the caller's own, not looked at.
    // timeoutInterval: the time for the answer; 0 or less waits for ever.
    // responseDescriptor: what the answer looks like; none when no answer is expected.
    ORSSerialRequest(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                     ORSSerialPacketDescriptorPtr responseDescriptor = {});
    // The answer is the shortest run of the newest bytes that the evaluator accepts, however long:
    // all that arrives is kept until then, and the evaluator asked about every length for every
    // byte.
    ORSSerialRequest(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                     ORSSerialPacketDescriptor::Evaluator responseEvaluator);
    ORSSerialRequest(const ORSSerialRequest &) = delete;
    ORSSerialRequest &operator=(const ORSSerialRequest &) = delete;

    static ORSSerialRequestPtr
    requestWithDataToSend(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                          ORSSerialPacketDescriptorPtr responseDescriptor = {});
    static ORSSerialRequestPtr
    requestWithDataToSend(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                          ORSSerialPacketDescriptor::Evaluator responseEvaluator);

    const QByteArray &dataToSend() const { return m_dataToSend; }
    void setDataToSend(const QByteArray &dataToSend) { m_dataToSend = dataToSend; }
    const QVariant &userInfo() const { return m_userInfo; }
    void setUserInfo(const QVariant &userInfo) { m_userInfo = userInfo; }
    TimeInterval timeoutInterval() const { return m_timeoutInterval; }
    void setTimeoutInterval(TimeInterval interval) { m_timeoutInterval = interval; }
    const ORSSerialPacketDescriptorPtr &responseDescriptor() const { return m_responseDescriptor; }
    void setResponseDescriptor(const ORSSerialPacketDescriptorPtr &descriptor)
    {
        m_responseDescriptor = descriptor;
    }
    // A new UUID for each request, as 36 characters.
    const QString &UUIDString() const { return m_UUIDString; }
    void setUUIDString(const QString &UUIDString) { m_UUIDString = UUIDString; }

    // Anything is valid where no answer is expected.
    bool dataIsValidResponse(QByteArrayView response) const;
    // For a log: the request's address, data, user info and time-out.
    QString description() const;

private:
    QByteArray m_dataToSend;
    QVariant m_userInfo;
    TimeInterval m_timeoutInterval;
    ORSSerialPacketDescriptorPtr m_responseDescriptor;
    QString m_UUIDString;
};
