#pragma once

#include <QLatin1String>

// Keys of the server element's record, written by the reading task and read by the form.
namespace ServerProperties {
constexpr QLatin1String ifServer("ifServer");
constexpr QLatin1String ifServerOn("ifServerOn");
constexpr QLatin1String ifConfigured("ifConfigured");
constexpr QLatin1String ipAddresses("ipAddresses");
constexpr QLatin1String hostname("hostname");
constexpr QLatin1String domainName("domainName");
constexpr QLatin1String currentIpAddress("currentIpAddress");
constexpr QLatin1String ornServerCommonInstalled("orn-server-commonInstalled");
} // namespace ServerProperties
