#pragma once

#include "latin1literal.h"

#include <QLatin1String>
#include <QMap>
#include <QString>
#include <QVariant>

// The administrator's input, handed from the creation form to the initialisation run. Readers
// take a missing key as an empty text, or as false for the choice of network settings.
namespace InitRequest {
constexpr QLatin1String kerberosPassword = latin1Literal("kerberosPassword");
constexpr QLatin1String adminPassword = latin1Literal("adminPassword");
constexpr QLatin1String customNetworkSettings = latin1Literal("customNetworkSettings");
constexpr QLatin1String ipAddress = latin1Literal("ipAddress");
constexpr QLatin1String hostname = latin1Literal("hostname");
constexpr QLatin1String serverName = latin1Literal("serverName");

// The values go in as the form shows them. Address, host name and server name are part of the
// request only when the host's identity is to be set.
QMap<QString, QVariant> make(const QString &kerberos, const QString &admin, bool custom,
                             const QString &address, const QString &host, const QString &server);
} // namespace InitRequest
