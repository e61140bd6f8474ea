#include "ornserverplugin.h"
#include "packagestatus.h"
#include "sandboxprocess.h"

#include <QtTest>

Q_DECLARE_METATYPE(PackageStatus)

// dpkg-query is tests/fakes/dpkg-query: it answers from a "package|status" table and logs each
// call's arguments, bracketed.
class TestPackageStatus : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    const QByteArray m_path = PYX_TEST_FAKES_DIR ":" + qgetenv("PATH");

    // Modes "missing" and "not executable" leave on PATH no fake, or one without its x bit (that
    // would answer "installed" if it ran); the others are the fake's own.
    static bool offPath(const QByteArray &mode)
    {
        return mode == "missing" || mode == "not executable";
    }
    void fake(const QByteArray &table, const QByteArray &mode = {})
    {
        QFile file(m_dir.filePath("table"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(table) == table.size());
        QFile::remove(m_dir.filePath("log"));
        QFile unrunnable(m_dir.filePath("dpkg-query"));
        QVERIFY(mode != "not executable" ? !unrunnable.exists() || unrunnable.remove()
                                         : unrunnable.open(QIODevice::WriteOnly) &&
                                               unrunnable.write("echo 'p\t1\tinstall ok'") > 0);
        qputenv("PATH", offPath(mode) ? m_dir.path().toLocal8Bit() : m_path);
        qputenv("FAKE_DPKG_MODE", mode);
        qputenv("FAKE_DPKG_TABLE", file.fileName().toLocal8Bit());
        qputenv("FAKE_DPKG_LOG", m_dir.filePath("log").toLocal8Bit());
    }

    QByteArray log() const { return readFile(m_dir.filePath("log")); }

private slots:
    void classify_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<PackageStatus>("status");
        const auto yes = PackageStatus::Installed, no = PackageStatus::NotInstalled;
        const QByteArray ok = "p\t1\tinstall ok installed";
        QTest::newRow("installed") << ok << yes;
        QTest::newRow("unpacked") << QByteArray("p\t1\tinstall ok unpacked") << yes;
        QTest::newRow("half-configured") << QByteArray("p\t1\tinstall ok half-configured") << yes;
        QTest::newRow("config-files") << QByteArray("p\t1\tdeinstall ok config-files") << no;
        QTest::newRow("hold") << QByteArray("p\t1\thold ok installed") << no;
        QTest::newRow("two records run together") << QByteArray(ok + ok) << no;
        QTest::newRow("empty") << QByteArray() << no;
        QTest::newRow("text ends at NUL") << QByteArray(ok + '\0' + "\tmore") << yes;
    }

    void classify()
    {
        QFETCH(QByteArray, output);
        QTEST(packageStatusFromOutput(output), "status");
    }

    void query_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<PackageStatus>("status");
        const QByteArray installed = "orn-server-common|install ok installed", none;
        QTest::newRow("installed") << installed << none << PackageStatus::Installed;
        QTest::newRow("unknown, exit 1") << none << none << PackageStatus::NotInstalled;
        QTest::newRow("crash") << installed << QByteArray("crash") << PackageStatus::Failed;
        QTest::newRow("missing") << installed << QByteArray("missing") << PackageStatus::Failed;
        QTest::newRow("not executable")
            << installed << QByteArray("not executable") << PackageStatus::Failed;
        QTest::newRow("exit 2") << installed << QByteArray("exit:2") << PackageStatus::NotInstalled;
        // Lines without tabs only lengthen the first field; the answer after them is read.
        QTest::newRow("a megabyte before the answer")
            << installed << QByteArray("flood") << PackageStatus::Installed;
        // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
        if (qEnvironmentVariableIsSet("PYX_PACKAGE_SLOW"))
            QTest::newRow("hang") << installed << QByteArray("hang") << PackageStatus::Failed;
    }

    void query()
    {
        QFETCH(QByteArray, table);
        QFETCH(QByteArray, mode);
        fake(table, mode);
        QElapsedTimer clock;
        clock.start();
        QTEST(queryPackageStatus("orn-server-common"), "status");
        // A query that hangs costs its 30 s limit and no more; every query is reaped.
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(mode == "hang" ? elapsed >= 30000 && elapsed < 33000 : elapsed < 5000,
                 qPrintable(QString::number(elapsed)));
        QCOMPARE(childProcesses().join(", "), QString());
        // Each argument as the fake received it, bracketed.
        const QByteArray argv =
            "[-W][-f=${binary:Package}\t${Version}\t${Status}][orn-server-common]\n";
        QCOMPARE(log(), offPath(mode) ? QByteArray() : argv);
    }

    void isValid_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<int>("asked");
        const QByteArray admin = "orn-admin|install ok installed\n",
                         dc = "orn-server-dc|install ok installed\n";
        QTest::newRow("both") << QByteArray(admin + dc) << true << 2;
        QTest::newRow("admin missing, dc not asked") << dc << false << 1;
        QTest::newRow("dc missing") << admin << false << 2;
    }

    // Counting the calls is enough: asking in the other order changes the count where it fails.
    void isValid()
    {
        QFETCH(QByteArray, table);
        fake(table);
        QTEST(OrnServerPlugin().isValid(), "valid");
        QTEST(int(log().count('\n')), "asked");
    }
};

QTEST_MAIN(TestPackageStatus)
#include "tst_packagestatus.moc"
