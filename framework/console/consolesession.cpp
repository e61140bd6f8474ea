#include "consolesession.h"

#include "hostorncore.h"
#include "orndomainelement.h"
#include "pyxorncore.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace {

QtMessageHandler defaultHandler = nullptr;

void dropSizeHintNoise(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.contains(QLatin1String("propagateSizeHints")))
        defaultHandler(type, context, message);
}

} // namespace

void ConsoleSession::silenceOffscreenNoise()
{
    if (QGuiApplication::platformName() == QLatin1String("offscreen") && !defaultHandler)
        defaultHandler = qInstallMessageHandler(dropSizeHintNoise);
}

void ConsoleSession::installTranslators()
{
    auto *qt = new QTranslator(QCoreApplication::instance());
    if (qt->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qt);
    else
        delete qt;
}

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
