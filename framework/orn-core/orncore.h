#pragma once

#include "orn_core_export.h"

#include <string>

// The console's view of the local directory-domain installation.
class ORN_CORE_EXPORT OrnCore
{
public:
    virtual ~OrnCore();

    // UTF-8, with its leading dot (".example.lan"); empty when no domain is configured.
    virtual const std::string &domainName() const = 0;
    virtual std::string realmName() const = 0;
    virtual std::string serverRole() const = 0;
    virtual bool isServer() const = 0;
    virtual bool isServerOn() const = 0;
    virtual bool isConfigured() const = 0;
    // Re-reads the installation; false when it could not be read.
    virtual bool refresh() = 0;

protected:
    OrnCore() = default;
    OrnCore(const OrnCore &) = delete;
    OrnCore &operator=(const OrnCore &) = delete;
};
