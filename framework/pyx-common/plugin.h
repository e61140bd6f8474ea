#pragma once

#include "pyx_common_export.h"

#include <QList>
#include <QObject>
#include <QString>

class Module;

#define PyxPlugin_iid "vex-admin-pyx/0.0"

// What a console plug-in library exports. Loaded through QPluginLoader; the console accepts an
// instance only when it casts to this interface.
class PYX_COMMON_EXPORT Plugin : public QObject
{
    Q_OBJECT

public:
    explicit Plugin(QObject *parent);
    ~Plugin() override;

    // Whether the plug-in can work on this machine; the console disables it otherwise.
    virtual bool isValid() const;

    qint32 interfaceVersion = 0;
    QString name;
    QString description;
    // Owned through QObject parenthood.
    QList<Module *> modules;
};

Q_DECLARE_INTERFACE(Plugin, PyxPlugin_iid)
