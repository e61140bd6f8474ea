#include "pluginregistry.h"

#include "plugin.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

const char *const PluginRegistry::interfaceId = PyxPlugin_iid;

QString PluginEntry::displayName() const
{
    if (plugin && !plugin->name.isEmpty())
        return plugin->name;
    return QFileInfo(fileName).completeBaseName();
}

PluginRegistry::PluginRegistry(QObject *parent)
    : QObject(parent)
{
}

// The libraries stay mapped until the process ends: their objects may still be referenced by
// pending events, and a plug-in may have registered start-up routines with Qt.
PluginRegistry::~PluginRegistry()
{
    for (QPluginLoader *loader : qAsConst(m_loaders))
        delete loader->instance();
    qDeleteAll(m_loaders);
}

void PluginRegistry::loadFolder(const QString &folder)
{
    const QDir dir(folder);
    const QFileInfoList files = dir.entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        if (QLibrary::isLibrary(file.fileName()))
            loadFile(file.absoluteFilePath());
    }
}

const PluginEntry &PluginRegistry::loadFile(const QString &fileName)
{
    PluginEntry entry;
    entry.fileName = fileName;
    auto *loader = new QPluginLoader(fileName, this);
    const QString iid = loader->metaData().value(QStringLiteral("IID")).toString();
    if (loader->metaData().isEmpty()) {
        entry.reason = tr("Not a plug-in: %1").arg(loader->errorString());
    } else if (iid != QLatin1String(interfaceId)) {
        entry.reason = tr("Unsupported interface \"%1\"; expected \"%2\"")
                           .arg(iid, QLatin1String(interfaceId));
    } else if (QObject *instance = loader->instance()) {
        entry.plugin = qobject_cast<Plugin *>(instance);
        if (!entry.plugin)
            entry.reason = tr("The plug-in object does not implement \"%1\"")
                               .arg(QLatin1String(interfaceId));
        else if (!entry.plugin->isValid())
            entry.reason = tr("The plug-in cannot work on this machine");
        else
            entry.enabled = true;
    } else {
        entry.reason = tr("Cannot load: %1").arg(loader->errorString());
    }
    if (entry.plugin)
        m_loaders.append(loader);
    else
        delete loader;
    m_entries.append(entry);
    return m_entries.last();
}
