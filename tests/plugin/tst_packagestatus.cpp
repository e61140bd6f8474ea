#include "ornserverplugin.h"
#include "packagestatus.h"
#include "simulatedtools.h"

#include <QApplication>
#include <QtTest>

Q_DECLARE_METATYPE(PackageStatus)

// dpkg-query is the system's own, on packages that dpkg brought to each state; a stand-in over it
// records each call. The program starts itself again inside sandbox/run.
class TestPackageStatus : public QObject
{
    Q_OBJECT

    // Modes "missing" and "not executable" leave in the system's folders no dpkg-query, or one
    // without its x bit; "planted" puts one first on the PATH the console inherited. Each would
    // answer "installed" if it ran. The others are faults of the stand-in's.
    static bool queried(const QByteArray &mode)
    {
        return mode != "missing" && mode != "not executable";
    }
    // `states`: NAME STATE pairs for /run/sandbox/package, after which dpkg holds nothing else
    // of the three.
    void simulate(const QByteArray &states, const QByteArray &mode = {})
    {
        const QString answer = "printf 'orn-server-common\\t1\\tinstall ok installed' #";
        QVERIFY(restoreSandboxTools() && linkFake("dpkg-query", "faulty") &&
                sh("rm -rf /etc/planted && mkdir /etc/planted && : >$SANDBOX_LOG"));
        if (states != m_states)
            QVERIFY(sh("/run/sandbox/package orn-admin missing orn-server-dc missing "
                       "orn-server-common missing orn-server-common:i386 missing " +
                       QString::fromUtf8(states)));
        m_states = states;
        if (!queried(mode))
            QVERIFY(sh("rm /usr/bin/dpkg-query && echo \"" + answer + "\" >/usr/bin/dpkg-query"));
        if (mode == "planted")
            QVERIFY(
                sh("echo \"" + answer + "\" >/etc/planted/dpkg-query && chmod +x /etc/planted/*"));
        qputenv("PATH", "/etc/planted:" + m_path);
        QVERIFY(setSandboxSettings({"SANDBOX_MODE_DPKG_QUERY=" + QString(mode).remove("planted")}));
    }

    QByteArray log() const { return readFile(qEnvironmentVariable("SANDBOX_LOG")); }

    const QByteArray m_path = qgetenv("PATH");
    QByteArray m_states = "unknown";

private slots:
    void classify_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<PackageStatus>("status");
        const auto yes = PackageStatus::Installed, no = PackageStatus::NotInstalled;
        const QByteArray ok = "p\t1\tinstall ok installed";
        QTest::newRow("installed") << ok << yes;
        QTest::newRow("unpacked") << QByteArray("p\t1\tinstall ok unpacked") << yes;
        QTest::newRow("hold") << QByteArray("p\t1\thold ok installed") << no;
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
        QTest::addColumn<QByteArray>("states");
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<PackageStatus>("status");
        const QByteArray installed = "orn-server-common installed", none;
        QTest::newRow("installed") << installed << none << PackageStatus::Installed;
        QTest::newRow("unknown, exit 1") << none << none << PackageStatus::NotInstalled;
        QTest::newRow("postinst failed")
            << QByteArray("orn-server-common half-configured") << none << PackageStatus::Installed;
        QTest::newRow("removed, conffile kept")
            << QByteArray("orn-server-common config-files") << none << PackageStatus::NotInstalled;
        // Both records come without a line between them: not one package's answer.
        QTest::newRow("two architectures")
            << QByteArray(installed + " orn-server-common:i386 installed") << none
            << PackageStatus::NotInstalled;
        QTest::newRow("crash") << installed << QByteArray("crash") << PackageStatus::Failed;
        QTest::newRow("planted on PATH")
            << none << QByteArray("planted") << PackageStatus::NotInstalled;
        QTest::newRow("missing") << installed << QByteArray("missing") << PackageStatus::Failed;
        QTest::newRow("not executable")
            << installed << QByteArray("not executable") << PackageStatus::Failed;
        QTest::newRow("exit 2") << installed << QByteArray("exit:2") << PackageStatus::NotInstalled;
        // Lines without tabs only lengthen the first field; the answer after them is read.
        QTest::newRow("a megabyte before the answer")
            << installed << QByteArray("flood:1") << PackageStatus::Installed;
        // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
        if (qEnvironmentVariableIsSet("PYX_PACKAGE_SLOW"))
            QTest::newRow("hang") << installed << QByteArray("hang") << PackageStatus::Failed;
    }

    void query()
    {
        QFETCH(QByteArray, states);
        QFETCH(QByteArray, mode);
        simulate(states, mode);
        QElapsedTimer clock;
        clock.start();
        QTEST(queryPackageStatus("orn-server-common"), "status");
        // A query that hangs costs its 30 s limit and no more; every query is reaped.
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(mode == "hang" ? elapsed >= 30000 && elapsed < 33000 : elapsed < 5000,
                 qPrintable(QString::number(elapsed)));
        QCOMPARE(childProcesses().join(", "), QString());
        // Each argument as the tool received it, bracketed.
        const QByteArray call =
            "dpkg-query [-W] [-f=${binary:Package}\t${Version}\t${Status}] [orn-server-common]\n";
        QCOMPARE(log(), queried(mode) ? call : QByteArray());
    }

    void isValid_data()
    {
        QTest::addColumn<QByteArray>("states");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<int>("asked");
        const QByteArray admin = "orn-admin installed", dc = "orn-server-dc installed";
        QTest::newRow("both") << QByteArray(admin + ' ' + dc) << true << 2;
        QTest::newRow("admin missing, dc not asked") << dc << false << 1;
        QTest::newRow("dc missing") << admin << false << 2;
    }

    // Counting the calls is enough: asking in the other order changes the count where it fails.
    void isValid()
    {
        QFETCH(QByteArray, states);
        simulate(states);
        QTEST(OrnServerPlugin().isValid(), "valid");
        QTEST(int(log().count('\n')), "asked");
    }
};

PYX_SANDBOX_TEST_MAIN(TestPackageStatus, {})
#include "tst_packagestatus.moc"
