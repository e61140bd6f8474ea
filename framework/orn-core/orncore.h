#pragma once

#include "orn_core_export.h"

#include <string>

// The console's view of the local directory-domain installation.
//
// Of these operations only the order of domainName(), isServer(), isServerOn(), isConfigured()
// and refresh() is the console's, and the plug-in relies on nothing more. The real core has
// further operations between them, and its destructor may sit elsewhere; realmName() and
// serverRole() only fill that gap for the stand-in. A build for the real console uses the real
// header here.
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
