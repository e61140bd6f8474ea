#include "consolesession.h"
#include "walkthrough.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    ConsoleSession::silenceOffscreenNoise();
    ConsoleSession::installTranslators();
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
