#include "nodetreemodel.h"
#include "plugin.h"
#include "pluginregistry.h"
#include "sandboxrun.h"

#include <QApplication>
#include <QtTest>

// The built plug-in and the fixtures the console must refuse, met through Qt's plug-in loader, on
// the simulated host: the program starts itself again inside sandbox/run, whose dpkg the plug-in
// asks.
class TestPluginLoader : public QObject
{
    Q_OBJECT

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

    // The interface identifier, the instance and its cast to the interface are the registry's
    // to check (refused), and disabledWithoutPackages gets the plug-in from it.
    void metadata()
    {
        const QJsonObject metaData = QPluginLoader(PYX_PLUGIN_FILE).metaData();
        QCOMPARE(metaData.value("className").toString(), QString("OrnServerPlugin"));
        QCOMPARE(metaData.value("MetaData").toObject(), QJsonObject());
        QVERIFY(metaData.value("version").toInt() >= 0x050b00);
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
        QVERIFY(sh("/run/sandbox/package orn-admin missing orn-server-dc missing "
                   "orn-server-common missing"));
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

PYX_SANDBOX_TEST_MAIN(TestPluginLoader, {})
#include "tst_pluginloader.moc"
