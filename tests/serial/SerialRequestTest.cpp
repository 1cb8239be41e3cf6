#include "serial/ORSSerialRequest.h"

#include <QRegularExpression>
#include <QUuid>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(SerialRequest, JudgesResponsesByItsDescriptor)
{
    const auto descriptor = std::make_shared<const ORSSerialPacketDescriptor>(QByteArray("OK"));
    const auto described = ORSSerialRequest::requestWithDataToSend("?", {}, 1s, descriptor);
    const auto tested = ORSSerialRequest::requestWithDataToSend(
        "?", 5, 1s, [](QByteArrayView data) { return data == "OK"; });
    for (const auto &request : {described, tested}) {
        EXPECT_TRUE(request->dataIsValidResponse("OK"));
        EXPECT_FALSE(request->dataIsValidResponse("NO"));
    }
    EXPECT_GE(tested->responseDescriptor()->maximumPacketLength(), quint64{1} << 62);
    EXPECT_TRUE(ORSSerialRequest("?", {}, 1s).dataIsValidResponse("NO"));
}

TEST(SerialRequest, HasAUuidAndADescription)
{
    const QString one = ORSSerialRequest("?", {}, 1s).UUIDString();
    EXPECT_NE(one, ORSSerialRequest("?", {}, 1s).UUIDString());
    EXPECT_EQ(one, QUuid::fromString(one).toString(QUuid::WithoutBraces));
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
        {{}, QVariantMap(), -1s, "data: \\(null\\) userInfo: <QVariantMap> .*: -1\\.000000$"},
        {"", {}, 500ms, "data: <> userInfo: \\(null\\) .*: 0\\.500000$"},
    };
    for (const auto &row : rows) {
        const QString text = ORSSerialRequest(row.data, row.userInfo, row.timeout).description();
        EXPECT_TRUE(text.contains(QRegularExpression(QString::fromUtf8(row.description))))
            << qPrintable(text);
    }
}
