#include "serial/ORSSerialRequest.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;

TEST(SerialRequest, JudgesResponsesByItsDescriptor)
{
    const auto descriptor = std::make_shared<const ORSSerialPacketDescriptor>(QByteArray("OK"));
    const auto described = ORSSerialRequest::requestWithDataToSend("?", {}, 1s, descriptor);
    EXPECT_EQ(described->responseDescriptor(), descriptor);
    EXPECT_TRUE(described->dataIsValidResponse("OK"));
    EXPECT_FALSE(described->dataIsValidResponse("NO"));

    const auto tested = ORSSerialRequest::requestWithDataToSend(
        "?", 5, 1s, [](QByteArrayView data) { return data.startsWith('O'); });
    EXPECT_EQ(tested->responseDescriptor()->maximumPacketLength(),
              quint64{std::numeric_limits<qint64>::max()});
    EXPECT_FALSE(tested->responseDescriptor()->userInfo().isValid());
    EXPECT_TRUE(tested->dataIsValidResponse("ON"));
    EXPECT_FALSE(tested->dataIsValidResponse("NO"));

    EXPECT_TRUE(ORSSerialRequest("?", {}, 1s).dataIsValidResponse("NO"));
}

TEST(SerialRequest, HasAnIdentityOfItsOwn)
{
    const QString one = ORSSerialRequest("?", {}, 1s).UUIDString();
    EXPECT_NE(one, ORSSerialRequest("?", {}, 1s).UUIDString());
    EXPECT_EQ(one, QUuid::fromString(one).toString(QUuid::WithoutBraces));
}

TEST(SerialRequest, DescribesItself)
{
    const struct
    {
        QByteArray data;
        QVariant userInfo;
        ORSSerialRequest::TimeInterval timeout;
        const char *description;
    } rows[] = {
        {QByteArray::fromHex("f401af0007"), "tag", 2s,
         "^<ORSSerialRequest: 0x[0-9a-f]+> data: <f401af00 07> userInfo: tag "
         "timeout interval: 2\\.000000$"},
        {"", QVariantMap(), 500ms,
         "^<.*> data: <> userInfo: <QVariantMap> timeout interval: 0\\.500000$"},
        {{}, {}, -1s, "^<.*> data: \\(null\\) userInfo: \\(null\\) timeout interval: -1\\.000000$"},
    };
    for (const auto &row : rows) {
        const QString text = ORSSerialRequest(row.data, row.userInfo, row.timeout).description();
        EXPECT_TRUE(text.contains(QRegularExpression(QString::fromUtf8(row.description))))
            << qPrintable(text);
    }
}
