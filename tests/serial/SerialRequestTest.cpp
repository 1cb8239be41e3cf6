#include "serial/ORSSerialRequest.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(SerialRequest, DescribesItself)
{
    const auto describe = [](const QByteArray &data, const QVariant &userInfo,
                             ORSSerialRequest::TimeInterval timeout) {
        return ORSSerialRequest(data, userInfo, timeout).description();
    };
    for (const auto &[text, expected] :
         {std::pair(describe(QByteArray::fromHex("f401af0007"), "tag", 2s),
                    "^<ORSSerialRequest: 0x[0-9a-f]+> data: <f401af00 07> userInfo: tag "
                    "timeout interval: 2\\.000000$"),
          {describe("", QVariantMap(), 500ms),
           "^<.*> data: <> userInfo: <QVariantMap> timeout interval: 0\\.500000$"},
          {describe({}, {}, -1s),
           "^<.*> data: \\(null\\) userInfo: \\(null\\) timeout interval: -1\\.000000$"}}) {
        EXPECT_TRUE(text.contains(QRegularExpression(QString::fromUtf8(expected))))
            << qPrintable(text);
    }
}
