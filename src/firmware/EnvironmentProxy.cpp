#include "firmware/EnvironmentProxy.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QStringList>
#include <QUrl>

#include <initializer_list>

namespace vorn {
namespace {

constexpr int kHttpPort = 8080;
constexpr int kSocksPort = 1080;

QString firstSet(std::initializer_list<const char *> variables)
{
    for (const char *variable : variables)
        if (QString value = qEnvironmentVariable(variable); !value.isEmpty())
            return value;
    return {};
}

} // namespace

QList<QNetworkProxy> EnvironmentProxy::queryProxy(const QNetworkProxyQuery &query)
{
    const QString host = query.peerHostName();
    QString value = firstSet({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"});
    if (!value.contains(u"://"))
        value.prepend(QStringLiteral("http://"));
    const QUrl url(value);
    const bool isThisComputer =
        host == QStringLiteral("localhost") || QHostAddress(host).isLoopback();
    if (url.host().isEmpty() || isThisComputer ||
        isExceptedFromProxy(host, firstSet({"no_proxy", "NO_PROXY"})))
        return {QNetworkProxy::NoProxy};
    const bool isSocks = url.scheme().startsWith(QStringLiteral("socks"));
    return {QNetworkProxy(isSocks ? QNetworkProxy::Socks5Proxy : QNetworkProxy::HttpProxy,
                          url.host(),
                          static_cast<quint16>(url.port(isSocks ? kSocksPort : kHttpPort)),
                          url.userName(), url.password())};
}

bool isExceptedFromProxy(const QString &host, const QString &list)
{
    const QHostAddress address(host);
    for (QString entry : list.split(u',', Qt::SkipEmptyParts)) {
        entry = entry.trimmed();
        if (entry == u"*")
            return true;
        const auto range = QHostAddress::parseSubnet(entry);
        if (!address.isNull() && !range.first.isNull() && address.isInSubnet(range))
            return true;
        if (entry.startsWith(u'.'))
            entry.remove(0, 1);
        if (!entry.isEmpty() && (host.compare(entry, Qt::CaseInsensitive) == 0 ||
                                 host.endsWith(u'.' + entry, Qt::CaseInsensitive)))
            return true;
    }
    return false;
}

} // namespace vorn
