#include "serial/ORSSerialRequest.h"

#include <QUuid>

#include <limits>
#include <utility>

namespace {

constexpr quint64 kNoLimit = std::numeric_limits<qint64>::max();

// Bytes in hexadecimal, in groups of four: "<f401af00 07>".
QString dataDescription(const QByteArray &data)
{
    QByteArray text;
    for (qsizetype at = 0; at < data.size(); at += 4) {
        if (at > 0)
            text += ' ';
        text += data.mid(at, 4).toHex();
    }
    return data.isNull() ? QStringLiteral("(null)") : u'<' + QString::fromLatin1(text) + u'>';
}

QString userInfoDescription(const QVariant &userInfo)
{
    if (!userInfo.isValid())
        return QStringLiteral("(null)");
    if (userInfo.canConvert<QString>())
        return userInfo.toString();
    return u'<' + QString::fromLatin1(userInfo.typeName()) + u'>';
}

} // namespace

ORSSerialRequest::ORSSerialRequest(QByteArray dataToSend, QVariant userInfo,
                                   TimeInterval timeoutInterval,
                                   ORSSerialPacketDescriptorPtr responseDescriptor)
    : m_dataToSend(std::move(dataToSend)), m_userInfo(std::move(userInfo)),
      m_timeoutInterval(timeoutInterval), m_responseDescriptor(std::move(responseDescriptor)),
      m_UUIDString(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

ORSSerialRequest::ORSSerialRequest(QByteArray dataToSend, QVariant userInfo,
                                   TimeInterval timeoutInterval,
                                   ORSSerialPacketDescriptor::Evaluator responseEvaluator)
    : ORSSerialRequest(std::move(dataToSend), std::move(userInfo), timeoutInterval,
                       std::make_shared<const ORSSerialPacketDescriptor>(
                           kNoLimit, QVariant(), std::move(responseEvaluator)))
{
}

bool ORSSerialRequest::dataIsValidResponse(QByteArrayView response) const
{
    return !m_responseDescriptor || m_responseDescriptor->dataIsValidPacket(response);
}

QString ORSSerialRequest::description() const
{
    const auto address = reinterpret_cast<quintptr>(this);
    return QStringLiteral("<ORSSerialRequest: 0x%1> data: %2 userInfo: %3 timeout interval: %4")
        .arg(QString::number(address, 16), dataDescription(m_dataToSend),
             userInfoDescription(m_userInfo), QString::number(m_timeoutInterval.count(), 'f', 6));
}
