// The packages of `make deb`, installed by the package tool into the simulated host's /usr, and
// the installed console started from there with no path given: it must find the installed
// plug-in, the libraries of both packages and the plug-in's catalogue by itself.
#include "sandboxrun.h"

#include <QImage>
#include <QtTest>

namespace {

const QString installedConsole = "/usr/bin/pyx-console";

// `make check` names the folder and wants the packages there; a tree that has none and was not
// told where to look skips this suite.
QString debDir()
{
    const QString named = qEnvironmentVariable("PYX_DEB_DIR");
    return named.isEmpty() ? QString(PYX_DEFAULT_DEB_DIR) : named;
}

QStringList packageFiles()
{
    const QDir dir(debDir());
    QStringList files;
    for (const char *package : {"pyx-console-standin", "pyx-orn-server-plugin"}) {
        const QStringList found = dir.entryList({QString(package) + "_*.deb"}, QDir::Files);
        if (found.size() == 1)
            files << dir.filePath(found.first());
    }
    return files;
}

} // namespace

class TestInstalledPackages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!QFileInfo("/usr").isWritable())
            QSKIP("the simulated host has no copy-on-write /usr here, so nothing can be installed");
        const QStringList debs = packageFiles();
        QVERIFY2(debs.size() == 2,
                 qPrintable("want both packages in " + debDir() + " (make deb builds them)"));
        QVERIFY(m_work.isValid());

        // Into the simulated host's copy-on-write package database, which knows the host's
        // packages: dpkg checks the packages' dependencies against them, as on a workstation.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // The package tool refuses to run without ldconfig on the PATH.
        environment.insert("PATH", environment.value("PATH") + ":/usr/sbin:/sbin");
        const SandboxRun install = runProgram(
            "dpkg", QStringList{"--log=/run/sandbox/dpkg.log", "--install"} + debs, environment);
        QVERIFY2(install.exitCode == 0, install.err.constData());
    }

    // The one plug-in of the folder the console chose by itself: the package's multiarch one.
    void listPlugins()
    {
        const SandboxRun run =
            runProgram(installedConsole, {"--list-plugins"}, consoleEnvironment("C.UTF-8"));
        QVERIFY2(run.exitCode == 0, run.err.constData());
        const QRegularExpression line(
            "^/usr/lib/[^/]+/pyx-console/plugins/libpyx-orn-server-plugin\\.so\\tenabled\\n$");
        QVERIFY2(line.match(QString::fromUtf8(run.out)).hasMatch(), run.out.constData());
    }

    void formInRussian()
    {
        const QImage russian = screenshot({installedConsole}, "ru_RU.UTF-8");
        // The build's console and plug-in, reading the same catalogue, draw it as it should be.
        const QImage reference =
            screenshot({PYX_BUILD_CONSOLE, "--plugin-dir", PYX_BUILD_PLUGIN_DIR}, "ru_RU.UTF-8");
        const QImage untranslated = screenshot({installedConsole}, "C.UTF-8");
        QVERIFY(!russian.isNull() && !reference.isNull() && !untranslated.isNull());
        QVERIFY(russian == reference);
        QVERIFY(russian != untranslated);
        // The options' help shows that the console found its own catalogue and Qt's, which also
        // holds the standard buttons.
        const SandboxRun help =
            runProgram(installedConsole, {"--help"}, consoleEnvironment("ru_RU.UTF-8"));
        for (const char *text : {"\nПараметры:\n", "Запустить без ядра каталога."})
            QVERIFY2(help.out.contains(text), help.out.constData());
    }

    // A console killed while orn-init ran leaves the password file; the package's tmpfiles rule
    // removes it at the next boot, and only then, on a root of our own.
    void bootRemovesPasswordFile()
    {
        const QString orn = m_work.filePath("root/etc/orn");
        QVERIFY(sh(QString("mkdir -p %1 && umask 077 && echo a >%1/tempFile && echo b >%1/orn.conf")
                       .arg(orn)));
        const QStringList remove{"--root=" + m_work.filePath("root"), "--remove",
                                 "/usr/lib/tmpfiles.d/pyx-orn-server-plugin.conf"};
        QStringList left;
        for (const QStringList &arguments : {remove, QStringList{"--boot"} + remove}) {
            const SandboxRun run = runProgram("systemd-tmpfiles", arguments);
            QVERIFY2(run.exitCode == 0, run.err.constData());
            left << QDir(orn).entryList(QDir::Files).join(' ');
        }
        QCOMPARE(left, QStringList({"orn.conf tempFile", "orn.conf"}));
    }

private:
    QProcessEnvironment consoleEnvironment(const QString &lang) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES"})
            environment.remove(name);
        environment.insert("LANG", lang);
        // Qt would otherwise make a runtime folder of its own choosing under /tmp.
        environment.insert("XDG_RUNTIME_DIR", m_work.path());
        return environment;
    }

    // The window once the plug-in's form has been read; a null image when the console failed.
    QImage screenshot(const QStringList &console, const QString &lang)
    {
        const QString file = m_work.filePath(QString("%1.png").arg(++m_pictures));
        const SandboxRun run =
            runProgram(console.first(),
                       console.mid(1) + QStringList{"--open", "OrnServer", "--screenshot", file},
                       consoleEnvironment(lang));
        if (run.exitCode != 0)
            qWarning("%s", run.err.constData());
        return QImage(file);
    }

    QTemporaryDir m_work;
    int m_pictures = 0;
};

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("PYX_DEB_DIR") && packageFiles().isEmpty()) {
        std::fprintf(stderr, "SKIP: no packages in %s (make deb builds them)\n",
                     qPrintable(debDir()));
        return 77;
    }

    // Only the package may put a catalogue where the plug-in looks for one.
    const QTemporaryDir noCatalogues;
    const int outside = runInsideSandbox(argc, argv, {"--translations", noCatalogues.path()});
    if (outside >= 0)
        return outside;
    QCoreApplication app(argc, argv);
    TestInstalledPackages test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_installedpackages.moc"
