#include "module.h"
#include "nodetreemodel.h"
#include "plugin.h"
#include "pluginregistry.h"

#include <QFile>
#include <QJsonObject>
#include <QPluginLoader>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// The built plug-in as the console meets it: through Qt's plug-in loader only.
class TestPluginLoader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void metadataIsReadableWithoutLoading();
    void instanceIsTheOrnServerPlugin();
    void registryRefuses_data();
    void registryRefuses();
    void registryDisablesWhenPackagesAreMissing();
    void consoleListsTheReason();

private:
    void installedPackages(const QStringList &packages);

    QTemporaryDir m_dir;
};

void TestPluginLoader::initTestCase()
{
    QVERIFY(m_dir.isValid());
    qputenv("PATH", QByteArray(PYX_TEST_FAKES_DIR) + ':' + qgetenv("PATH"));
    qputenv("FAKE_DPKG_TABLE", m_dir.filePath(QStringLiteral("table")).toLocal8Bit());
    installedPackages({QStringLiteral("orn-admin"), QStringLiteral("orn-server-dc")});
}

void TestPluginLoader::installedPackages(const QStringList &packages)
{
    QFile table(m_dir.filePath(QStringLiteral("table")));
    QVERIFY(table.open(QIODevice::WriteOnly | QIODevice::Truncate));
    for (const QString &package : packages)
        table.write(package.toUtf8() + "|install ok installed\n");
}

void TestPluginLoader::metadataIsReadableWithoutLoading()
{
    QPluginLoader loader(QStringLiteral(PYX_PLUGIN_FILE));
    const QJsonObject metaData = loader.metaData();
    QVERIFY(!loader.isLoaded());
    QCOMPARE(metaData.value(QStringLiteral("IID")).toString(), QStringLiteral("vex-admin-pyx/0.0"));
    QCOMPARE(metaData.value(QStringLiteral("className")).toString(),
             QStringLiteral("OrnServerPlugin"));
    // No metadata file: the plug-in's own metadata reads as an empty object.
    QVERIFY(metaData.value(QStringLiteral("MetaData")).toObject().isEmpty());
    QVERIFY(!metaData.value(QStringLiteral("debug")).isUndefined());
    QVERIFY(metaData.value(QStringLiteral("version")).toInt() >= 0x050b00);
}

void TestPluginLoader::instanceIsTheOrnServerPlugin()
{
    QPluginLoader loader(QStringLiteral(PYX_PLUGIN_FILE));
    QObject *instance = loader.instance();
    QVERIFY2(instance, qPrintable(loader.errorString()));
    QCOMPARE(instance->metaObject()->className(), "OrnServerPlugin");
    QCOMPARE(instance->parent(), nullptr);

    auto *plugin = qobject_cast<Plugin *>(instance);
    QVERIFY(plugin);
    QCOMPARE(static_cast<QObject *>(plugin), instance);
    QCOMPARE(instance->qt_metacast("vex-admin-pyx/0.0"), static_cast<void *>(instance));
    QCOMPARE(instance->qt_metacast("OrnServerPlugin"), static_cast<void *>(instance));
    QCOMPARE(instance->qt_metacast("Plugin"), static_cast<void *>(plugin));
    QCOMPARE(instance->qt_metacast("QWidget"), nullptr);
    QCOMPARE(plugin->interfaceVersion, 1);
    QCOMPARE(plugin->name, QStringLiteral("OrnServerPlugin"));
    QCOMPARE(plugin->description, QStringLiteral("Support ORN server"));
    QVERIFY(plugin->isValid());
    QCOMPARE(plugin->modules.size(), 1);
    QCOMPARE(plugin->modules.first()->typeName, QStringLiteral("OrnServerModule"));

    QPluginLoader second(QStringLiteral(PYX_PLUGIN_FILE));
    QCOMPARE(second.instance(), instance);
}

void TestPluginLoader::registryRefuses_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");

    const QString dir = QStringLiteral(PYX_FIXTURE_PLUGIN_DIR "/");
    QTest::newRow("wrong interface id")
        << dir + QStringLiteral("libfixture-wrong-iid.so")
        << QStringLiteral("Unsupported interface \"vex-admin-pyx/9.9\"; expected "
                          "\"vex-admin-pyx/0.0\"");
    QTest::newRow("interface not implemented")
        << dir + QStringLiteral("libfixture-no-interface.so")
        << QStringLiteral("The plug-in object does not implement \"vex-admin-pyx/0.0\"");
    QTest::newRow("not a plug-in")
        << dir + QStringLiteral("libfixture-not-a-plugin.so") << QStringLiteral("Not a plug-in:");
}

void TestPluginLoader::registryRefuses()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);

    PluginRegistry registry;
    const PluginEntry &entry = registry.loadFile(file);
    QCOMPARE(entry.plugin, nullptr);
    QVERIFY(!entry.enabled);
    QVERIFY2(entry.reason.startsWith(reason), qPrintable(entry.reason));
}

void TestPluginLoader::registryDisablesWhenPackagesAreMissing()
{
    installedPackages({QStringLiteral("orn-server-dc")});
    PluginRegistry registry;
    const PluginEntry entry = registry.loadFile(QStringLiteral(PYX_PLUGIN_FILE));
    installedPackages({QStringLiteral("orn-admin"), QStringLiteral("orn-server-dc")});
    QVERIFY(entry.plugin);
    QVERIFY(!entry.enabled);
    QCOMPARE(entry.reason, QStringLiteral("The plug-in cannot work on this machine"));

    // Listed, and its module and element greyed out with the reason.
    NodeTreeModel model;
    model.addPlugins(registry);
    QCOMPARE(model.rowCount(), 2);
    const QModelIndex element = model.indexOfType(QStringLiteral("OrnServer"));
    QVERIFY(element.isValid());
    for (const QModelIndex &index : {model.index(0, 0), model.index(1, 0), element}) {
        QVERIFY(!(model.flags(index) & Qt::ItemIsEnabled));
        QCOMPARE(model.data(index, Qt::ToolTipRole).toString(), entry.reason);
    }
}

void TestPluginLoader::consoleListsTheReason()
{
    QProcess console;
    console.start(QStringLiteral(PYX_CONSOLE),
                  {QStringLiteral("--list-plugins"), QStringLiteral("--plugin-dir"),
                   QStringLiteral(PYX_FIXTURE_PLUGIN_DIR)});
    QVERIFY(console.waitForFinished(30000));
    QCOMPARE(console.exitCode(), 0);
    const QString listing = QString::fromUtf8(console.readAllStandardOutput());
    QVERIFY2(listing.contains(QStringLiteral("libfixture-wrong-iid.so\tUnsupported interface "
                                             "\"vex-admin-pyx/9.9\"")),
             qPrintable(listing));
    QCOMPARE(listing.count(QLatin1Char('\n')), 3);
}

QTEST_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
