#pragma once

#include <QNetworkProxyFactory>
#include <QString>

namespace vorn {

// The proxy that the environment names for HTTPS, as command-line tools read it: https_proxy, else
// all_proxy (each also in capitals), as http://HOST:PORT or socks5://HOST:PORT with an optional
// USER:PASSWORD@. The hosts and domains in no_proxy, and this computer itself, are reached
// directly.
class EnvironmentProxy final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override;
};

// Whether `list`, the value of no_proxy, excepts the host: "*", a host, a domain with or without a
// leading dot, or an address range such as 10.0.0.0/8; separated by commas.
bool isExceptedFromProxy(const QString &host, const QString &list);

} // namespace vorn
