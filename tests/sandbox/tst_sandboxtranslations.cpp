// The plug-in's catalogue lives where the installed console keeps it, which exists only on the
// simulated host, so each case runs this program again inside, where the plug-in's startup
// routine meets a real application object.
#include "sandboxprocess.h"

#include <QCoreApplication>
#include <QTranslator>
#include <QtTest>

class TestSandboxTranslations : public QObject
{
    Q_OBJECT

private slots:
    void systemLocale_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QByteArray>("report"); // translators installed, then the text
        QTest::newRow("Russian") << "ru_RU.UTF-8"
                                 << "1 " + QString("Поддержка сервера ORN").toUtf8();
        QTest::newRow("German: no catalogue")
            << "de_DE.UTF-8" << QByteArray("0 Support ORN server");
    }

    void systemLocale()
    {
        QFETCH(QString, lang);
        QFETCH(QByteArray, report);
        const SandboxRun run = runSandbox({"--unset=LANGUAGE", "--unset=LC_ALL",
                                           "--unset=LC_MESSAGES", "--env=LANG=" + lang,
                                           "--translations=" PYX_TEST_BINARY_DIR "/translations"},
                                          {QCoreApplication::applicationFilePath(), "--report"});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        QCOMPARE(run.out, report);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--report") == 0) {
        const QString text = QCoreApplication::translate("OrnServerPlugin", "Support ORN server");
        std::printf("%d %s", int(app.findChildren<QTranslator *>().size()),
                    text.toUtf8().constData());
        return 0;
    }
    TestSandboxTranslations test;
    return sandboxAvailable() ? QTest::qExec(&test, argc, argv) : 77;
}

#include "tst_sandboxtranslations.moc"
