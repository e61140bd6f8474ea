#include "hostidentity.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkInterface>

HostIdentity HostIdentity::read()
{
    HostIdentity identity;
    for (const QHostAddress &address : QNetworkInterface::allAddresses())
        identity.addresses << address.toString();
    identity.hostname = QHostInfo::localHostName();
    // The list is asked for again, so that the choice reflects the interfaces as they are now.
    const QHostAddress localHost(QHostAddress::LocalHost);
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol && address != localHost) {
            identity.currentAddress = address.toString();
            break;
        }
    }
    return identity;
}
