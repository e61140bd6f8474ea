// The form's buttons on the simulated host, whose tools record how they were started, with every
// box answered as an administrator would. The program runs itself again inside sandbox/run, so
// that nothing it starts, names or writes reaches the real host.
#include "element.h"
#include "elementdata.h"
#include "sandboxprocess.h"
#include "module.h"
#include "ornserverwidget.h"

#include <QtTest>
#include <QtWidgets>
#include <QHostInfo>

struct RecordingElement : Element
{
    using Element::Element;
    bool performOperation(OperationType operation, ElementData *, int) override
    {
        operations << operation;
        return true;
    }
    QVector<OperationType> operations;
};

// The last call the tools have recorded, as many words of it as the expected one has.
QString lastCall(const QString &expected)
{
    const QString log = toolCalls(readFile(qEnvironmentVariable("SANDBOX_LOG")));
    return log.trimmed().section('\n', -1).section(' ', 0, expected.count(' '));
}

// The buttons pressed (none: the one that creates), the last tool call, the windows shown (title's
// first word and the button pressed), the passwords, isLogin, host name (none: no custom network
// settings), environment while pressing.
struct Row
{
    // Initialised, so that a row may leave out the cells at its end.
    QString tag, buttons, lastCall, windows{}, password{}, isLogin{}, hostname{}, environment{};
};
Q_DECLARE_METATYPE(Row)

class TestFormOnHost : public QObject
{
    Q_OBJECT

private slots:
    void press_data()
    {
        const Row rows[] = {
            {"input errors", "", "", "Error OK", "", "1"},
            {"confirmation refused by Return", "", "", "Warning Return", "k", "1"},
            {"logged in, names kept", "", "orn-init", "Warning Yes;Initialization Close", "k", "1"},
            {"logged out, same host name", "", "orn-init", "Warning Yes;Initialization Close", "k",
             "0", "ws1"},
            {"new name, tool failed", "", "orn-init", "Warning Yes;Initialization Close;Warning OK",
             "k", "0", "dc1", "SANDBOX_MODE_ORN_INIT=exit:1"},
            // The console quits while the tool still works: the run ends with the dialog.
            {"console quits", "", "orn-init", "Warning Yes;Initialization quit", "k", "0", "dc4",
             "SANDBOX_ORN_INIT_DURATION=60"},
            // Return pressed all through the run changes nothing; then it closes, and refuses.
            {"new name, Return throughout, reboot refused", "", "orn-init",
             "Warning Yes;Initialization Return;Reboot Return", "k", "0", "dc2",
             "SANDBOX_ORN_INIT_DURATION=2"},
            {"reboot for the sudo user", "",
             "vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/1000}",
             "Warning Yes;Initialization Close;Reboot Yes", "k", "0", "dc3", "SUDO_UID=1000"},
            {"expert mode", "expertMode",
             "vex-term [--noclose] [-e] [bash] [-c] [orn-init --help && orn-init cmd] "
             "{DISPLAY=:7}"},
            {"network settings", "networkSetting", "nm-connection-editor {DISPLAY=:7}"},
            {"orn.conf", "editOrnConf", "kate [/etc/orn/orn.conf] {DISPLAY=:7}"},
            {"tools missing", "expertMode networkSetting editOrnConf", "", "", "", "", "",
             "PATH=/nonexistent"},
        };
        QTest::addColumn<Row>("row");
        for (const Row &row : rows)
            QTest::newRow(qPrintable(row.tag)) << row;
    }

    void press()
    {
        QFETCH(Row, row);
        Module module("M", nullptr, false);
        RecordingElement domain(module, nullptr), server(module, nullptr);
        domain.setElementData(new ElementData);
        domain.elementData()->properties.insert("isLogin", row.isLogin == "1");
        domain.insert(0, {&server});
        OrnServerWidget form(module, nullptr);
        form.setElement(&server, ElementWidgetRole::Edit);
        const auto passwords = form.findChildren<QLineEdit *>(QRegularExpression("Password"));
        for (QLineEdit *field : passwords)
            field->setText(row.password);
        form.findChild<QGroupBox *>("_networkGroupBox")->setChecked(!row.hostname.isEmpty());
        form.findChild<QComboBox *>("_ipComboBox")->addItem("192.0.2.2");
        form.findChild<QLineEdit *>("_hostnameLineEdit")->setText(row.hostname);
        form.findChild<QLineEdit *>("_domainNameLineEdit")->setText(".corp.lan");
        // Presses the answer the row expects on the window on top and notes the window.
        QStringList shown;
        int presses = 0;
        QPointer<QDialog> answeredByReturn;
        QTimer answering;
        answering.callOnTimeout([&] {
            auto *modal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!modal)
                return;
            const QString answer =
                row.windows.section(';', shown.size(), shown.size()).section(' ', 1);
            const QString title = modal->windowTitle().section(' ', 0, 0);
            const auto *box = modal->findChild<QDialogButtonBox *>();
            // A box, or the dialog once its run has ended.
            const bool settled =
                qobject_cast<QMessageBox *>(modal) || box->button(QDialogButtonBox::Close);
            if (answer == "quit") {
                // Once the tool has started to talk, and noted if it no longer runs by then.
                if (modal->findChild<QPlainTextEdit *>()->toPlainText().isEmpty())
                    return;
                shown << (settled ? "ended" : "Initialization quit");
                return QCoreApplication::quit();
            }
            if (answer == "Return" && modal != answeredByReturn) {
                // Pressed on every tick while the tool runs, alternating with the keypad's Enter.
                if (settled) {
                    const auto *question = qobject_cast<QMessageBox *>(modal);
                    shown << title + (question && question->defaultButton() ? " with a default" : "")
                                 + " Return";
                    answeredByReturn = modal;
                }
                const bool keypad = ++presses % 2 == 0;
                QTest::keyClick(modal->focusWidget() ? modal->focusWidget() : modal,
                                keypad ? Qt::Key_Enter : Qt::Key_Return,
                                keypad ? Qt::KeypadModifier : Qt::NoModifier);
                return;
            }
            QAbstractButton *pressed = nullptr;
            for (QAbstractButton *button : modal->findChildren<QAbstractButton *>())
                pressed = button->text().remove('&') == answer ? button : pressed;
            if (!settled && !pressed) // the dialog still works
                return;
            // An unexpected window, or one that Return left open, is closed all the same.
            shown << title + ' ' + (pressed ? answer : "-");
            pressed ? pressed->click() : modal->reject();
        });
        answering.start(20);
        QFile(qEnvironmentVariable("SANDBOX_LOG")).open(QIODevice::WriteOnly);
        const QByteArray name = row.environment.section('=', 0, 0).toUtf8(), saved = qgetenv(name);
        if (!name.isEmpty())
            qputenv(name, row.environment.section('=', 1).toUtf8());
        for (const QString &button :
             row.buttons.isEmpty() ? QStringList{"initServer"} : row.buttons.split(' '))
            form.findChild<QPushButton *>('_' + button + "PushButton")->click();
        if (!name.isEmpty())
            saved.isNull() ? qunsetenv(name) : qputenv(name, saved);
        // After a quit, modal loops end at once until the application's loop has run again.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();

        QCOMPARE(shown.join(';'), row.windows);
        // A started tool outlives the click, so its record is waited for.
        QTRY_COMPARE(lastCall(row.lastCall), row.lastCall);
        const bool ran = row.windows.contains("Initialization");
        QCOMPARE(domain.operations,
                 QVector<OperationType>(ran && row.isLogin == "1", OperationType::Logout));
        QCOMPARE(server.operations, QVector<OperationType>(ran, OperationType::Read));
        for (QLineEdit *field : passwords)
            QCOMPARE(field->text(), ran ? "" : row.password);
        QVERIFY(!QFile::exists("/etc/orn/tempFile"));
        QCOMPARE(childProcesses().join(", "), QString());
        if (ran && !row.hostname.isEmpty())
            QCOMPARE(QHostInfo::localHostName(), row.hostname);
    }
};

int main(int argc, char *argv[])
{
    // Inside, on a host of a known name, with a display its tools can report and a creation that
    // takes no time.
    const int inner = runInsideSandbox(
        argc, argv, {"--hostname", "ws1", "--env", "DISPLAY=:7", "--orn-init-duration", "0"});
    if (inner >= 0)
        return inner;
    QApplication app(argc, argv);
    TestFormOnHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_creationflow.moc"
