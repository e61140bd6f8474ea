#include "hostorncore.h"

#include <QFile>
#include <QHash>

namespace {

QHash<QString, QString> readSettings(QFile &file)
{
    QHash<QString, QString> settings;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const int equals = line.indexOf(QLatin1Char('='));
        if (equals > 0)
            settings.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return settings;
}

} // namespace

HostOrnCore::HostOrnCore(const QString &configDir)
    : m_configDir(configDir)
{
    refresh();
}

HostOrnCore::~HostOrnCore() = default;

bool HostOrnCore::isServer() const
{
    return m_serverRole == "dc";
}

bool HostOrnCore::refresh()
{
    m_domainName.clear();
    m_realmName.clear();
    m_serverRole.clear();
    m_serverOn = false;
    m_configured = false;

    QFile config(m_configDir + QStringLiteral("/orn.conf"));
    if (!config.open(QIODevice::ReadOnly))
        return !config.exists();
    const QHash<QString, QString> settings = readSettings(config);
    QString domain = settings.value(QStringLiteral("domain"));
    if (!domain.isEmpty() && !domain.startsWith(QLatin1Char('.')))
        domain.prepend(QLatin1Char('.'));
    m_domainName = domain.toStdString();
    m_realmName = settings.value(QStringLiteral("realm")).toStdString();
    m_serverRole = settings.value(QStringLiteral("role")).toStdString();
    m_configured = !domain.isEmpty();

    QFile state(m_configDir + QStringLiteral("/server.state"));
    if (state.open(QIODevice::ReadOnly))
        m_serverOn = state.readLine().trimmed() == "on";
    return true;
}
