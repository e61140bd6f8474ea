#include "ornserverplugin.h"
#include "packagestatus.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(PackageStatus)

// dpkg-query is replaced by tests/fakes/dpkg-query, first on this process's PATH; its behaviour
// is chosen through FAKE_DPKG_* variables and every call is logged.
class TestPackageStatus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void classify_data();
    void classify();
    void query_data();
    void query();
    void queryRunsTheExactCommand();
    void isValid_data();
    void isValid();

private:
    void writeTable(const QStringList &lines);
    QStringList loggedCalls() const;

    QTemporaryDir m_dir;
    QByteArray m_path;
};

void TestPackageStatus::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_path = QByteArray(PYX_TEST_FAKES_DIR) + ':' + qgetenv("PATH");
}

void TestPackageStatus::init()
{
    qputenv("PATH", m_path);
    qunsetenv("FAKE_DPKG_MODE");
    qunsetenv("FAKE_DPKG_OUTPUT");
    qputenv("FAKE_DPKG_LOG", m_dir.filePath(QStringLiteral("log")).toLocal8Bit());
    qputenv("FAKE_DPKG_TABLE", m_dir.filePath(QStringLiteral("table")).toLocal8Bit());
    QFile::remove(m_dir.filePath(QStringLiteral("log")));
    writeTable({});
}

void TestPackageStatus::writeTable(const QStringList &lines)
{
    QFile table(m_dir.filePath(QStringLiteral("table")));
    QVERIFY(table.open(QIODevice::WriteOnly | QIODevice::Truncate));
    table.write(lines.join(QLatin1Char('\n')).toUtf8() + '\n');
}

QStringList TestPackageStatus::loggedCalls() const
{
    QFile log(m_dir.filePath(QStringLiteral("log")));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void TestPackageStatus::classify_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<PackageStatus>("status");

    const QByteArray nul(1, '\0');
    const auto installed = PackageStatus::Installed;
    const auto notInstalled = PackageStatus::NotInstalled;
    QTest::newRow("installed") << QByteArray("orn-admin\t1.0\tinstall ok installed") << installed;
    QTest::newRow("unpacked") << QByteArray("orn-admin\t1.0\tinstall ok unpacked") << installed;
    QTest::newRow("half-configured")
        << QByteArray("orn-admin\t1.0\tinstall ok half-configured") << installed;
    QTest::newRow("config-files")
        << QByteArray("orn-admin\t1.0\tdeinstall ok config-files") << notInstalled;
    QTest::newRow("hold") << QByteArray("orn-admin\t1.0\thold ok installed") << notInstalled;
    QTest::newRow("status not at start")
        << QByteArray("orn-admin\t1.0\t install ok installed") << notInstalled;
    QTest::newRow("case matters") << QByteArray("orn-admin\t1.0\tInstall ok installed")
                                  << notInstalled;
    QTest::newRow("two architectures run together")
        << QByteArray("orn-admin:amd64\t1.0\tinstall ok installedorn-admin:i386\t1.0\t"
                      "install ok installed")
        << notInstalled;
    QTest::newRow("empty") << QByteArray() << notInstalled;
    QTest::newRow("empty fields") << QByteArray("\t\t") << notInstalled;
    QTest::newRow("two fields") << QByteArray("orn-admin\tinstall ok installed") << notInstalled;
    QTest::newRow("text ends at NUL")
        << QByteArray("orn-admin\t1.0\tinstall ok installed") + nul + "\tmore" << installed;
    QTest::newRow("NUL cuts a field away")
        << QByteArray("orn-admin\t1.0") + nul + "\tinstall ok installed" << notInstalled;
}

void TestPackageStatus::classify()
{
    QFETCH(QByteArray, output);
    QFETCH(PackageStatus, status);
    QCOMPARE(packageStatusFromOutput(output), status);
}

void TestPackageStatus::query_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<bool>("onPath");
    QTest::addColumn<QStringList>("table");
    QTest::addColumn<PackageStatus>("status");

    const QStringList installed = {QStringLiteral("orn-server-common|install ok installed")};
    QTest::newRow("installed") << QByteArray() << true << installed << PackageStatus::Installed;
    QTest::newRow("removed, config kept")
        << QByteArray() << true
        << QStringList{QStringLiteral("orn-server-common|deinstall ok config-files")}
        << PackageStatus::NotInstalled;
    QTest::newRow("unknown package exits 1")
        << QByteArray() << true << QStringList() << PackageStatus::NotInstalled;
    QTest::newRow("crash") << QByteArray("crash") << true << installed << PackageStatus::Failed;
    QTest::newRow("program missing") << QByteArray() << false << installed
                                     << PackageStatus::Failed;
}

void TestPackageStatus::query()
{
    QFETCH(QByteArray, mode);
    QFETCH(bool, onPath);
    QFETCH(QStringList, table);
    QFETCH(PackageStatus, status);

    writeTable(table);
    if (!mode.isEmpty())
        qputenv("FAKE_DPKG_MODE", mode);
    if (!onPath)
        qputenv("PATH", m_dir.path().toLocal8Bit());
    QCOMPARE(queryPackageStatus(QStringLiteral("orn-server-common")), status);
}

void TestPackageStatus::queryRunsTheExactCommand()
{
    QString program;
    QStringList arguments;
    queryPackageStatus(QStringLiteral("orn-server-common"), &program, &arguments);

    const QStringList expected = {QStringLiteral("-W"),
                                  QStringLiteral("-f=${binary:Package}\t${Version}\t${Status}"),
                                  QStringLiteral("orn-server-common")};
    QCOMPARE(program, QStringLiteral("dpkg-query"));
    QCOMPARE(arguments, expected);
    QCOMPARE(loggedCalls(),
             QStringList{QStringLiteral("[-W][-f=${binary:Package}\t${Version}\t${Status}]"
                                        "[orn-server-common]")});
}

void TestPackageStatus::isValid_data()
{
    QTest::addColumn<QStringList>("table");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QStringList>("asked");

    const QString admin = QStringLiteral("orn-admin");
    const QString dc = QStringLiteral("orn-server-dc");
    QTest::newRow("both installed")
        << QStringList{QStringLiteral("orn-admin|install ok installed"),
                       QStringLiteral("orn-server-dc|install ok installed")}
        << true << QStringList{admin, dc};
    QTest::newRow("admin missing: dc not asked")
        << QStringList{QStringLiteral("orn-server-dc|install ok installed")} << false
        << QStringList{admin};
    QTest::newRow("admin removed: dc not asked")
        << QStringList{QStringLiteral("orn-admin|deinstall ok config-files"),
                       QStringLiteral("orn-server-dc|install ok installed")}
        << false << QStringList{admin};
    QTest::newRow("dc missing")
        << QStringList{QStringLiteral("orn-admin|install ok installed")} << false
        << QStringList{admin, dc};
}

void TestPackageStatus::isValid()
{
    QFETCH(QStringList, table);
    QFETCH(bool, valid);
    QFETCH(QStringList, asked);

    writeTable(table);
    OrnServerPlugin plugin;
    QCOMPARE(plugin.isValid(), valid);

    QStringList packages;
    for (const QString &call : loggedCalls())
        packages << call.section(QLatin1Char('['), -1).chopped(1);
    QCOMPARE(packages, asked);
}

QTEST_MAIN(TestPackageStatus)
#include "tst_packagestatus.moc"
