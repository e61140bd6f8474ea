// The plug-in's catalogue is found where the installed console keeps it, for the system locale.
// The folder is fixed and exists only on the simulated host, so each case runs this program
// again inside the sandbox, where the plug-in's startup routine meets a real application object.
#include "sandboxprocess.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

#include <cstdio>

namespace {

const char reportOption[] = "--report-translation";

// The child's side: its application object was made, so the startup routine has run.
int reportTranslation(QCoreApplication &app)
{
    const QByteArray report =
        QByteArray::number(app.findChildren<QTranslator *>().size()) + '\n' +
        QCoreApplication::translate("OrnServerPlugin", "Support ORN server").toUtf8() + '\n';
    std::fwrite(report.constData(), 1, size_t(report.size()), stdout);
    return 0;
}

} // namespace

class TestSandboxTranslations : public QObject
{
    Q_OBJECT

private slots:
    void systemLocale_data();
    void systemLocale();
};

void TestSandboxTranslations::systemLocale_data()
{
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<bool>("withCatalogues");
    QTest::addColumn<QByteArray>("report");

    const QByteArray russian = "1\n" + QStringLiteral("Поддержка сервера ORN").toUtf8() + '\n';
    const QByteArray untranslated = "0\nSupport ORN server\n";
    QTest::newRow("Russian from LANG")
        << QStringList{QStringLiteral("LANG=ru_RU.UTF-8")} << true << russian;
    QTest::newRow("Russian from LC_ALL over LANG")
        << QStringList{QStringLiteral("LANG=de_DE.UTF-8"), QStringLiteral("LC_ALL=ru_RU.UTF-8")}
        << true << russian;
    QTest::newRow("German: no catalogue")
        << QStringList{QStringLiteral("LANG=de_DE.UTF-8")} << true << untranslated;
    QTest::newRow("Russian, folder empty")
        << QStringList{QStringLiteral("LANG=ru_RU.UTF-8")} << false << untranslated;
}

void TestSandboxTranslations::systemLocale()
{
    QFETCH(QStringList, environment);
    QFETCH(bool, withCatalogues);
    QFETCH(QByteArray, report);
    QTemporaryDir empty;
    QVERIFY(empty.isValid());

    QProcessEnvironment childEnvironment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_NUMERIC"})
        childEnvironment.remove(QString::fromLatin1(name));
    for (const QString &setting : environment)
        childEnvironment.insert(setting.section(QLatin1Char('='), 0, 0),
                                setting.section(QLatin1Char('='), 1));

    const QString catalogues =
        withCatalogues ? QStringLiteral(PYX_TEST_BINARY_DIR "/translations") : empty.path();
    const SandboxRun run = runSandbox(
        {QStringLiteral("--translations"), catalogues},
        {QCoreApplication::applicationFilePath(), QString::fromLatin1(reportOption)},
        childEnvironment);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(run.out, report);
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], reportOption) == 0)
        return reportTranslation(app);
    if (!sandboxAvailable())
        return sandboxUnavailable;
    TestSandboxTranslations test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sandboxtranslations.moc"
