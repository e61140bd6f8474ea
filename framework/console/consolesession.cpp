#include "consolesession.h"

#include "hostorncore.h"
#include "orndomainelement.h"
#include "pyxorncore.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <utility>

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
    // A console run from the build tree reads the build's catalogue, an installed one its own.
    const QString inBuildTree = QDir(QCoreApplication::applicationDirPath())
                                    .filePath(QStringLiteral(PYX_BUILD_TRANSLATIONS_DIR_FROM_BIN));
    const QString console = QDir(inBuildTree).exists()
                                ? inBuildTree
                                : QStringLiteral(PYX_CONSOLE_TRANSLATIONS_DIR);
    const std::pair<QString, QString> catalogues[] = {
        {QStringLiteral("qtbase"), QLibraryInfo::location(QLibraryInfo::TranslationsPath)},
        {QStringLiteral("pyx-console"), console}};
    for (const auto &[name, folder] : catalogues) {
        auto *translator = new QTranslator(QCoreApplication::instance());
        if (translator->load(QLocale(), name, QStringLiteral("_"), folder))
            QCoreApplication::installTranslator(translator);
        else
            delete translator;
    }
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
