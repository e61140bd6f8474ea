// The form's tool buttons on the simulated host, whose tools record how they were started. The
// program runs itself again inside, so that nothing it starts reaches the real desktop.
#include "ornserverwidget.h"

#include "insidesandbox.h"
#include "module.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// The calls the simulated tools have recorded in this run, one line each; the log appears with
// the first call.
QStringList recordedCalls()
{
    QFile log(qEnvironmentVariable("SANDBOX_LOG"));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split('\n', Qt::SkipEmptyParts);
}

void click(OrnServerWidget &widget, const char *button)
{
    QTest::mouseClick(widget.findChild<QPushButton *>(button), Qt::LeftButton);
}

} // namespace

class TestWidgetLaunchers : public QObject
{
    Q_OBJECT
    Module m_module{QStringLiteral("M"), nullptr, false};

private slots:
    void launch_data()
    {
        QTest::addColumn<QString>("call");
        QTest::newRow("_expertModePushButton") << "vex-term [--noclose] [-e] [bash] [-c] "
                                                  "[orn-init --help && orn-init cmd] "
                                                  "{DISPLAY=:7} {WAYLAND_DISPLAY}";
        QTest::newRow("_networkSettingPushButton")
            << "nm-connection-editor {DISPLAY=:7} {WAYLAND_DISPLAY}";
        QTest::newRow("_editOrnConfPushButton")
            << "kate [/etc/orn/orn.conf] {DISPLAY=:7} {WAYLAND_DISPLAY}";
    }

    // A started tool outlives the click, so its record is waited for.
    void launch()
    {
        OrnServerWidget widget(m_module, nullptr);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        const int before = recordedCalls().size();
        click(widget, QTest::currentDataTag());
        QFETCH(QString, call);
        QTRY_COMPARE(recordedCalls().mid(before).join(QLatin1Char('\n')), call);
    }

    // Without the tools on the search path a click shows nothing and the form carries on.
    void missingTools()
    {
        OrnServerWidget widget(m_module, nullptr);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        const int before = recordedCalls().size();
        // A modal message would hold the click until it is closed, so whatever shows is closed.
        QStringList shown;
        QTimer closer;
        closer.callOnTimeout([&] {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (window != &widget && window->isVisible() && window->close())
                    shown << window->metaObject()->className();
            }
        });
        closer.start(0);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", "/nonexistent");
        for (const char *button :
             {"_expertModePushButton", "_networkSettingPushButton", "_editOrnConfPushButton"})
            click(widget, button);
        qputenv("PATH", path);
        QCoreApplication::processEvents();
        QCOMPARE(shown, QStringList());
        QVERIFY(widget.isVisible() && widget.isEnabled());

        // A tool that does start is recorded alone: none of the clicks before started one.
        click(widget, "_networkSettingPushButton");
        QTRY_VERIFY(recordedCalls().size() > before);
        QCOMPARE(recordedCalls().mid(before),
                 QStringList{"nm-connection-editor {DISPLAY=:7} {WAYLAND_DISPLAY}"});
    }
};

int main(int argc, char *argv[])
{
    // Inside, with a display its tools can report.
    const int inner = runInsideSandbox(
        argc, argv, {"--env", "DISPLAY=:7", "--unset", "WAYLAND_DISPLAY"});
    if (inner >= 0)
        return inner;
    QApplication app(argc, argv);
    TestWidgetLaunchers test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_widgetlaunchers.moc"
