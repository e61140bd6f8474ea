#pragma once

#include "latin1literal.h"

#include <QLatin1String>

// Keys of the server element's record, written by the reading task and read by the form.
namespace ServerProperties {
constexpr QLatin1String ifServer = latin1Literal("ifServer");
constexpr QLatin1String ifServerOn = latin1Literal("ifServerOn");
constexpr QLatin1String ifConfigured = latin1Literal("ifConfigured");
constexpr QLatin1String ipAddresses = latin1Literal("ipAddresses");
constexpr QLatin1String hostname = latin1Literal("hostname");
constexpr QLatin1String domainName = latin1Literal("domainName");
constexpr QLatin1String currentIpAddress = latin1Literal("currentIpAddress");
constexpr QLatin1String ornServerCommonInstalled = latin1Literal("orn-server-commonInstalled");
} // namespace ServerProperties
