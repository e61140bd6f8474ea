#include "consolesession.h"

#include "hostorncore.h"
#include "orndomainelement.h"
#include "pyxorncore.h"

ConsoleSession::ConsoleSession(const Options &options)
    : m_domain(nullptr)
{
    if (options.withCore)
        PyxOrnCore::instance()->setOrnCore(std::make_unique<HostOrnCore>());
    if (options.domainLogin)
        m_domain.domainElement()->performOperation(OperationType::Login, nullptr, 0);
    m_model.addModule(&m_domain);
    m_registry.loadFolder(options.pluginDir);
}

ConsoleSession::~ConsoleSession() = default;

// Made on first use, so that a listing of the plug-ins needs no window.
ConsoleWindow &ConsoleSession::window()
{
    if (!m_window) {
        m_model.addPlugins(m_registry);
        m_window = std::make_unique<ConsoleWindow>(&m_model);
    }
    return *m_window;
}
