#pragma once

#include <QString>
#include <QStringList>

// The machine's addresses and name, as the server form offers them.
class HostIdentity
{
public:
    // Asks the system afresh: nothing is cached between calls.
    static HostIdentity read();

    // Every address in its text form, in the order the system lists them, loopback and IPv6
    // (with its scope) included.
    QStringList addresses;
    QString hostname;
    // The first IPv4 address other than 127.0.0.1; empty when there is none.
    QString currentAddress;
};
