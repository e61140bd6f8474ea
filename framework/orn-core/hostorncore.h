#pragma once

#include "orncore.h"

#include <QString>

// The core of a workstation: what the initialisation tool left in its configuration folder.
//   orn.conf      "key = value" lines: domain, realm, role ("dc" on a domain controller)
//   server.state  "on" while the directory service runs
class ORN_CORE_EXPORT HostOrnCore : public OrnCore
{
public:
    explicit HostOrnCore(const QString &configDir = QStringLiteral("/etc/orn"));
    ~HostOrnCore() override;

    const std::string &domainName() const override { return m_domainName; }
    std::string realmName() const override { return m_realmName; }
    std::string serverRole() const override { return m_serverRole; }
    bool isServer() const override;
    bool isServerOn() const override { return m_serverOn; }
    bool isConfigured() const override { return m_configured; }
    bool refresh() override;

private:
    QString m_configDir;
    std::string m_domainName;
    std::string m_realmName;
    std::string m_serverRole;
    bool m_serverOn = false;
    bool m_configured = false;
};
