#pragma once

#include "plugin.h"

class OrnServerPlugin : public Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "vex-admin-pyx/0.0")
    Q_INTERFACES(Plugin)

public:
    explicit OrnServerPlugin(QObject *parent = nullptr);

    // Both directory packages must be installed; stops at the first that is not.
    bool isValid() const override;
};
