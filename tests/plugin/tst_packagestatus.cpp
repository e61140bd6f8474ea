#include "nodetreemodel.h"
#include "ornserverplugin.h"
#include "packagestatus.h"
#include "pluginregistry.h"
#include "simulatedtools.h"

#include <QApplication>
#include <QtTest>

Q_DECLARE_METATYPE(PackageStatus)

// dpkg-query is the system's own, on packages that dpkg brought to each state; a stand-in over it
// records each call. The built plug-in and the fixtures the console must refuse are met through
// Qt's plug-in loader. The program starts itself again inside sandbox/run.
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
    QString m_listing;

private slots:
    void initTestCase()
    {
        QProcess console;
        console.start(PYX_CONSOLE, {"--list-plugins", "--plugin-dir", PYX_FIXTURE_PLUGIN_DIR});
        QVERIFY(console.waitForFinished(30000));
        QCOMPARE(console.exitCode(), 0);
        m_listing = '\n' + QString::fromUtf8(console.readAllStandardOutput());
    }

    void classify_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<PackageStatus>("status");
        // An installed, a half-configured and an empty answer reach it through query().
        QTest::newRow("hold") << QByteArray("p\t1\thold ok installed")
                              << PackageStatus::NotInstalled;
        // dpkg writes its states in lower case; anything else is no answer of its.
        QTest::newRow("capitals") << QByteArray("p\t1\tInstall ok installed")
                                  << PackageStatus::NotInstalled;
        QTest::newRow("text ends at NUL")
            << QByteArray("p\t1\tinstall ok installed\0\tmore", 30) << PackageStatus::Installed;
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
        const auto row = [](const char *name, const QByteArray &states, const QByteArray &mode,
                            PackageStatus status) {
            QTest::newRow(name) << states << mode << status;
        };
        const QByteArray installed = "orn-server-common installed";
        const auto yes = PackageStatus::Installed, no = PackageStatus::NotInstalled,
                   failed = PackageStatus::Failed;
        row("installed", installed, {}, yes);
        row("unknown, exit 1", {}, {}, no);
        row("postinst failed", "orn-server-common half-configured", {}, yes);
        row("removed, conffile kept", "orn-server-common config-files", {}, no);
        // Both records come without a line between them: not one package's answer.
        row("two architectures", installed + " orn-server-common:i386 installed", {}, no);
        row("crash", installed, "crash", failed);
        row("planted on PATH", {}, "planted", no);
        row("missing", installed, "missing", failed);
        row("not executable", installed, "not executable", failed);
        row("exit 2", installed, "exit:2", no);
        // Lines without tabs only lengthen the first field; the answer after them is read.
        row("a megabyte before the answer", installed, "flood:1", yes);
        // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
        if (qEnvironmentVariableIsSet("PYX_PACKAGE_SLOW"))
            row("hang", installed, "hang", failed);
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

    // The interface identifier, the instance and its cast to the interface are the registry's
    // to check (refused), and disabledWithoutPackages gets the plug-in from it.
    void metadata()
    {
        const QJsonObject metaData = QPluginLoader(PYX_PLUGIN_FILE).metaData();
        QCOMPARE(metaData.value("className").toString(), QString("OrnServerPlugin"));
        QCOMPARE(metaData.value("MetaData").toObject(), QJsonObject());
    }

    void refused_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("reason");
        // Prefixes: what follows is Qt's wording. The console expects the IID that the plug-in
        // must carry to be taken.
        QTest::newRow("wrong IID")
            << "wrong-iid"
            << "Unsupported interface \"vex-admin-pyx/9.9\"; expected \"vex-admin-pyx/0.0\"";
        QTest::newRow("no interface") << "no-interface"
                                      << "The plug-in object does not implement";
        QTest::newRow("not a plug-in") << "not-a-plugin"
                                       << "Not a plug-in:";
    }

    // The console prints the registry's reason for each file; these reasons come only where it
    // kept no plug-in.
    void refused()
    {
        QFETCH(QString, file);
        QFETCH(QString, reason);
        const QString path = PYX_FIXTURE_PLUGIN_DIR "/libfixture-" + file + ".so";
        QVERIFY2(m_listing.contains('\n' + path + '\t' + reason), qPrintable(m_listing));
    }

    void disabledWithoutPackages()
    {
        simulate({});
        PluginRegistry registry;
        const PluginEntry entry = registry.loadFile(PYX_PLUGIN_FILE);
        QVERIFY(entry.plugin && !entry.enabled);
        QCOMPARE(entry.reason, QString("The plug-in cannot work on this machine"));

        NodeTreeModel model;
        model.addPlugins(registry);
        // An index that is not there has no tooltip.
        const QModelIndex element = model.indexOfType("OrnServer");
        for (const QModelIndex &index : {model.index(0, 0), model.index(1, 0), element}) {
            QVERIFY(!(model.flags(index) & Qt::ItemIsEnabled));
            QCOMPARE(model.data(index, Qt::ToolTipRole).toString(), entry.reason);
        }
    }
};

PYX_SANDBOX_TEST_MAIN(TestPackageStatus, {})
#include "tst_packagestatus.moc"
