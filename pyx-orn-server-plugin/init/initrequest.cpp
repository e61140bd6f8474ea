#include "initrequest.h"

QMap<QString, QVariant> InitRequest::make(const QString &kerberos, const QString &admin,
                                          bool custom, const QString &address, const QString &host,
                                          const QString &server)
{
    QMap<QString, QVariant> request;
    request.insert(kerberosPassword, kerberos);
    request.insert(adminPassword, admin);
    request.insert(customNetworkSettings, custom);
    if (custom) {
        request.insert(ipAddress, address);
        request.insert(hostname, host);
        request.insert(serverName, server);
    }
    return request;
}
