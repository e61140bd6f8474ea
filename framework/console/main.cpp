#include "consolesession.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

namespace {

QString defaultPluginFolder()
{
    const QString inBuildTree = QDir(QCoreApplication::applicationDirPath())
                                    .filePath(QStringLiteral(PYX_BUILD_PLUGIN_DIR_FROM_BIN));
    for (const QString &folder : {QStringLiteral(PYX_PLUGIN_INSTALL_DIR), inBuildTree}) {
        if (!QDir(folder).entryList(QDir::Files).isEmpty())
            return folder;
    }
    return QStringLiteral(PYX_PLUGIN_INSTALL_DIR);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("pyx-console"));
    ConsoleSession::silenceOffscreenNoise();
    ConsoleSession::installTranslators();

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QApplication::translate("main", "System management console (stand-in)."));
    parser.addHelpOption();
    const QCommandLineOption pluginDir(
        QStringLiteral("plugin-dir"),
        QApplication::translate("main", "Load the plug-ins of <folder>."),
        QStringLiteral("folder"), defaultPluginFolder());
    const QCommandLineOption open(
        QStringLiteral("open"),
        QApplication::translate("main", "Select the element of <type> at start."),
        QStringLiteral("type"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QApplication::translate("main",
                                "Save the window to <file> once the selected element has been "
                                "read, then exit."),
        QStringLiteral("file"));
    const QCommandLineOption withoutCore(
        QStringLiteral("without-core"),
        QApplication::translate("main", "Start without a directory core."));
    const QCommandLineOption loggedIn(
        QStringLiteral("domain-login"),
        QApplication::translate("main", "Start logged in to the directory domain."));
    const QCommandLineOption listPlugins(
        QStringLiteral("list-plugins"),
        QApplication::translate("main", "Print each plug-in file and its state, then exit."));
    parser.addOptions({pluginDir, open, screenshot, withoutCore, loggedIn, listPlugins});
    parser.process(app);

    ConsoleSession::Options options;
    options.pluginDir = parser.value(pluginDir);
    options.withCore = !parser.isSet(withoutCore);
    options.domainLogin = parser.isSet(loggedIn);
    ConsoleSession session(options);
    if (parser.isSet(listPlugins)) {
        QTextStream out(stdout);
        for (const PluginEntry &entry : session.registry().entries()) {
            out << entry.fileName << '\t'
                << (entry.enabled ? QApplication::translate("main", "enabled") : entry.reason)
                << '\n';
        }
        return 0;
    }

    ConsoleWindow &window = session.window();
    if (parser.isSet(open) && !window.openType(parser.value(open))) {
        std::fprintf(stderr, "%s\n",
                     qPrintable(QApplication::translate("main", "No element of type %1.")
                                    .arg(parser.value(open))));
        if (parser.isSet(screenshot))
            return 2;
    }

    if (parser.isSet(screenshot)) {
        const QString file = parser.value(screenshot);
        auto save = [&window, &file, done = false]() mutable {
            if (done)
                return;
            done = true;
            const bool saved = window.grab().save(file);
            if (!saved)
                std::fprintf(stderr, "%s\n",
                             qPrintable(QApplication::translate("main", "Cannot write %1.")
                                            .arg(file)));
            QApplication::exit(saved ? 0 : 1);
        };
        QObject::connect(&window, &ConsoleWindow::currentElementSettled, &app, save,
                         Qt::QueuedConnection);
        if (!parser.isSet(open))
            QTimer::singleShot(0, &app, save);
    }
    window.show();
    return app.exec();
}
