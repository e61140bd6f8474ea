#pragma once

#include "consolewindow.h"
#include "nodetreemodel.h"
#include "orndomainmodule.h"
#include "pluginregistry.h"

#include <memory>

// One run of the console: the directory core, the built-in directory-domain module, the
// plug-ins of a folder and the window over them. Members end in reverse order: the window
// before the plug-ins whose editors it shows.
class ConsoleSession
{
public:
    struct Options
    {
        QString pluginDir;
        bool withCore = true;
        bool domainLogin = false;
    };

    explicit ConsoleSession(const Options &options);

    // Offscreen there is no window manager, and the platform says so on standard error for every
    // window; a reading task takes anything there for a warning of the host.
    static void silenceOffscreenNoise();
    // The console's texts and Qt's own (standard buttons, the options' help) in the system
    // locale's language; Qt's come from the catalogues the distribution installs beside Qt.
    static void installTranslators();
    ~ConsoleSession();

    const PluginRegistry &registry() const { return m_registry; }
    ConsoleWindow &window();

private:
    NodeTreeModel m_model;
    OrnDomainModule m_domain;
    PluginRegistry m_registry;
    std::unique_ptr<ConsoleWindow> m_window;
};
