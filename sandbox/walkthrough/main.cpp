#include "consolesession.h"
#include "walkthrough.h"

#include <QApplication>
#include <QCommandLineParser>

namespace {

QtMessageHandler defaultHandler = nullptr;

// The offscreen platform complains about every window it cannot size for a window manager. The
// reading task takes anything on standard error for a warning of the host, which would put this
// noise into the pictures.
void quietOffscreen(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (!message.contains(QLatin1String("propagateSizeHints")))
        defaultHandler(type, context, message);
}

} // namespace

int main(int argc, char *argv[])
{
    defaultHandler = qInstallMessageHandler(quietOffscreen);
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QApplication::translate(
        "main", "Creates an ORN server in the console and saves a picture of every step."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("plugin-dir"),
                                 QApplication::translate("main", "Folder of the plug-ins."));
    parser.addPositionalArgument(QStringLiteral("folder"),
                                 QApplication::translate("main", "Folder for the pictures."));
    parser.process(app);
    if (parser.positionalArguments().size() != 2)
        parser.showHelp(2);

    ConsoleSession::Options options;
    options.pluginDir = parser.positionalArguments().at(0);
    options.domainLogin = true;
    ConsoleSession session(options);
    Walkthrough walkthrough(session.window(), parser.positionalArguments().at(1));
    session.window().show();
    walkthrough.start();
    return app.exec();
}
