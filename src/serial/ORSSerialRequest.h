#pragma once

#include "serial/ORSSerialPacketDescriptor.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <chrono>
#include <memory>
#include <utility>

class ORSSerialRequest;
// Shared by caller, port and delegate; compared by identity.
using ORSSerialRequestPtr = std::shared_ptr<ORSSerialRequest>;

// Bytes to send and a description of the expected answer. Do not modify it while a port handles it.
class ORSSerialRequest
{
public:
    using TimeInterval = std::chrono::duration<double>; // seconds

    // dataToSend: written when it is the request's turn.
    // userInfo: a tag for the caller's own use.
    // timeoutInterval: how long to wait for the answer; 0 or less means for ever.
    // responseDescriptor: the expected answer; null when none is expected.
    ORSSerialRequest(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                     ORSSerialPacketDescriptorPtr responseDescriptor = {});
    // The answer is the shortest run of the newest bytes that the evaluator accepts. Its length is
    // not limited: everything received is kept until then, and for each byte the evaluator is
    // called with every length.
    ORSSerialRequest(QByteArray dataToSend, QVariant userInfo, TimeInterval timeoutInterval,
                     ORSSerialPacketDescriptor::Evaluator responseEvaluator);
    ORSSerialRequest(const ORSSerialRequest &) = delete;
    ORSSerialRequest &operator=(const ORSSerialRequest &) = delete;

    // The same as the constructors: the response is a descriptor or an evaluator.
    template <typename Response = ORSSerialPacketDescriptorPtr>
    static ORSSerialRequestPtr requestWithDataToSend(QByteArray dataToSend, QVariant userInfo,
                                                     TimeInterval timeoutInterval,
                                                     Response response = {})
    {
        return std::make_shared<ORSSerialRequest>(std::move(dataToSend), std::move(userInfo),
                                                  timeoutInterval, std::move(response));
    }

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
    // Unique for each request: a UUID of 36 characters.
    const QString &UUIDString() const { return m_UUIDString; }
    void setUUIDString(const QString &UUIDString) { m_UUIDString = UUIDString; }

    // Without a descriptor every response is valid.
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
