#pragma once

#include <QList>
#include <QObject>
#include <QString>

class Plugin;
class QPluginLoader;

// What the console knows of one plug-in file.
struct PluginEntry
{
    QString fileName;
    // Null when the file was refused.
    Plugin *plugin = nullptr;
    // False when refused, or when the plug-in says it cannot work on this machine.
    bool enabled = false;
    // Why the plug-in is not enabled; empty when it is.
    QString reason;

    QString displayName() const;
};

// Loads the plug-ins of a folder through Qt's plug-in loader and keeps them until it is destroyed.
class PluginRegistry : public QObject
{
    Q_OBJECT

public:
    static const char *const interfaceId;

    explicit PluginRegistry(QObject *parent = nullptr);
    ~PluginRegistry() override;

    void loadFolder(const QString &folder);
    const PluginEntry &loadFile(const QString &fileName);
    const QList<PluginEntry> &entries() const { return m_entries; }

private:
    QList<PluginEntry> m_entries;
    QList<QPluginLoader *> m_loaders;
};
