// The form's buttons on the simulated host, whose tools record how they were started, with every
// box answered as an administrator would; and what the creation refuses to do. The program runs
// itself again inside sandbox/run, so that nothing it starts, names or writes reaches the real
// host.
#include "creationlock.h"
#include "element.h"
#include "elementdata.h"
#include "module.h"
#include "ornserverwidget.h"
#include "journalrecord.h"
#include "simulatedtools.h"

#include <QtTest>
#include <QtWidgets>
#include <QHostInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

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
    const QString log = readFile(qEnvironmentVariable("SANDBOX_LOG"));
    return log.trimmed().section('\n', -1).section(' ', 0, expected.count(' '));
}

// One press of the form's buttons and what it comes to; each setter reads as part of a sentence.
struct Row
{
    explicit Row(const char *name = "")
        : tag(name)
    {}

    QString tag;
    QString buttons = "initServer";
    // Each box and dialog shown, by its title's first word, and the answer given ("quit": the
    // console quits while it is open).
    QString windows;
    QString lastCall;
    QString password = "Kdb-2026!x";
    bool loggedIn = false;
    QString hostname; // empty: no custom network settings
    QString domain = ".corp.lan", address = "192.0.2.2";
    QStringList environment; // NAME=VALUE, or NAME to unset, while pressing
    QStringList settings;    // of the simulated tools
    QString setup, check = "true";
    // The "Error" boxes' texts and the dialog's pane when it closes, joined by " | "; null: not
    // compared.
    QString said;
    bool lockHeld = false; // by another console

    Row &press(const QString &value) { return buttons = value, *this; }
    Row &shows(const QString &value) { return windows = value, *this; }
    Row &calls(const QString &value) { return lastCall = value, *this; }
    Row &passwords(const QString &value) { return password = value, *this; }
    Row &logged() { return loggedIn = true, *this; }
    Row &host(const QString &value) { return hostname = value, *this; }
    Row &inDomain(const QString &value) { return domain = value, *this; }
    Row &at(const QString &value) { return address = value, *this; }
    Row &with(const QString &value) { return environment << value, *this; }
    Row &set(const QString &value) { return settings << value, *this; }
    Row &after(const QString &value) { return setup = value, *this; }
    Row &verify(const QString &value) { return check = value, *this; }
    Row &saying(const QString &value) { return said = value, *this; }
    Row &locked() { return lockHeld = true, *this; }
};
Q_DECLARE_METATYPE(Row)

namespace {

const QString desktopUser = "grep -q ^pyxdesk: /etc/passwd || "
                            "echo pyxdesk:x:4711:4711::/home/pyxdesk:/bin/sh >>/etc/passwd";
// A name the host will not carry as typed.
const QString notKept = "Hostname can hold only Latin letters, digits, hyphens and dots, at most "
                        "64 characters; a part between dots may not be empty, nor begin or end "
                        "with a hyphen";
const QString blank = "Hostname contains a blank or a control character";

} // namespace

class TestFormOnHost : public QObject
{
    Q_OBJECT

    QByteArray m_journalCursor;

private slots:
    void initTestCase() { QVERIFY(sh("cp /etc/hosts /etc/pyx-hosts.default")); }

    // The system's hostnamectl, its calls recorded.
    void init()
    {
        QVERIFY(restoreSandboxTools() && linkFake("hostnamectl", "faulty"));
        QVERIFY(sh("rm -rf /etc/planted /etc/target /etc/orn/tempFile && "
                   "chmod 755 /etc/orn && cp /etc/pyx-hosts.default /etc/hosts && "
                   "hostnamectl set-hostname ws1 && : >/etc/pyx-tools.env && : >$SANDBOX_LOG"));
        m_journalCursor = journalCursor();
    }

    void press_data()
    {
        const QString fakes = PYX_TEST_FAKES_DIR;
        const QString refused = "File /etc/orn/tempFile can not be created";
        const QString created = "Warning Yes;Initialization Close";
        // A row a sentence, not a word a line.
        // clang-format off
        QList<Row> rows = {
            Row("input errors").passwords("").shows("Error OK"),
            Row("confirmation refused by Return").logged().shows("Warning Return"),
            Row("logged in, names kept").logged().calls("orn-init").shows(created),
            Row("logged out, same host name").host("ws1").calls("orn-init").shows(created),
            Row("new name, tool failed").host("dc1").set("SANDBOX_MODE_ORN_INIT=exit:1")
                .calls("orn-init").shows(created + ";Warning OK"),
            // The console quits while the tool still works: the run ends with the dialog.
            Row("console quits").host("dc4").set("SANDBOX_ORN_INIT_DURATION=60").calls("orn-init")
                .shows("Warning Yes;Initialization quit"),
            // Return pressed all through the run changes nothing; then it closes, and refuses.
            Row("new name, Return throughout, reboot refused").host("dc2")
                .set("SANDBOX_ORN_INIT_DURATION=2").calls("orn-init")
                .shows("Warning Yes;Initialization Return;Reboot Return"),
            Row("reboot for the sudo user").host("dc3").with("SUDO_UID=1000")
                .calls("vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/1000}")
                .shows(created + ";Reboot Yes"),
            Row("expert mode").press("expertMode")
                .calls("vex-term [--noclose] [-e] [bash] [-c] [orn-init --help && orn-init cmd] "
                       "{DISPLAY=:7}"),
            Row("network settings").press("networkSetting")
                .calls("nm-connection-editor {DISPLAY=:7}"),
            Row("tools missing").press("expertMode networkSetting editOrnConf")
                .with("SUDO_USER=pyxdesk").after(desktopUser + " && rm /usr/bin/vex-term "
                                                 "/usr/bin/nm-connection-editor /usr/bin/kate"),

            // What the creation refuses, and why: each row failed before the refusal was made.
            // An answer that is not Yes is No.
            Row("warning closed unanswered").logged().shows("Warning quit"),
            Row("reboot question closed unanswered").host("dc6").with("SUDO_UID=1000")
                .calls("orn-init").shows(created + ";Reboot quit"),
            // No tool without a sound start.
            Row("password folder writable by group").after("chmod 775 /etc/orn").saying(refused)
                .shows(created),
            Row("link at the password path").saying(refused).shows(created)
                .after("echo keep >/etc/target && ln -s /etc/target /etc/orn/tempFile")
                .verify("[ -L /etc/orn/tempFile ] && [ \"$(cat /etc/target)\" = keep ]"),
            // Only names the host will carry, before anything changes (and the names hostnamectl
            // alters, below).
            Row("host name with a blank").host("a b").saying(blank).shows("Error OK"),
            Row("host name with a line feed").host("dc1\n10.6.6.6").saying(blank).shows("Error OK"),
            Row("domain with a line feed").host("dc1").inDomain(".lan\n10.6.6.6 evil")
                .shows("Error OK").saying("Domain name contains a blank or a control character"),
            Row("no address").host("dc1").at("").saying("IP address is empty").shows("Error OK"),
            // Masking that holds whatever pieces the output arrives in: the pane shows the two.
            Row("password split across reads").after("ln -sf " + fakes + "/orn-init /usr/bin/")
                .calls("orn-init")
                .set("FAKE_ORN_INIT_OUT=K/M:Kdb-").set("FAKE_ORN_INIT_HOLD=1")
                .set("FAKE_ORN_INIT_OUT2=2026!x\\n").saying("K/M:Kdb-\n2026!x").shows(created),
            // A fixed search path and a clean environment.
            Row("PATH and variables planted").host("dc9").calls("orn-init")
                .shows(created + ";Reboot No")
                .with("PATH=/etc/planted:/usr/bin:/bin").with("KRB5CCNAME=FILE:/etc/planted/cc")
                .with("DBUS_SYSTEM_BUS_ADDRESS=unix:path=/etc/planted/bus")
                .set("SANDBOX_ENV_LOG=/etc/pyx-tools.env")
                .after("mkdir /etc/planted && for tool in orn-init hostnamectl; do printf "
                       "'#!/bin/sh\\ntouch /etc/planted/ran\\n' >/etc/planted/$tool && "
                       "chmod +x /etc/planted/$tool; done")
                .verify("[ ! -e /etc/planted/ran ] && grep -qx PATH=/usr/local/sbin:/usr/local/bin:"
                        "/usr/sbin:/usr/bin:/sbin:/bin /etc/pyx-tools.env && "
                        "! grep -q '^KRB5CCNAME\\|^DBUS_SYSTEM_BUS_ADDRESS' /etc/pyx-tools.env"),
            // One creation at a time per host.
            Row("another console creating").logged().locked().shows("Warning Yes;Error OK")
                .saying("Another console is creating the server on this host. Wait until it has "
                        "finished, then try again."),
            // The editor runs as the desktop user.
            Row("orn.conf as the desktop user").press("editOrnConf").with("SUDO_USER=pyxdesk")
                .after(desktopUser)
                .calls("kate [/etc/orn/orn.conf] {DISPLAY=:7} {WAYLAND_DISPLAY} {UID=4711} "
                       "{HOME=/home/pyxdesk}"),
            Row("orn.conf without SUDO_USER").press("editOrnConf").with("SUDO_USER")
                .shows("Error OK")
                .saying("orn.conf is opened in the editor as the desktop user who started the "
                        "console through sudo, but SUDO_USER names no such user. Start the "
                        "console with sudo from the desktop session."),
            // The hosts rewrite keeps ACLs and extended attributes.
            Row("hosts ACL and attributes kept").host("dc7").calls("orn-init")
                .shows(created + ";Reboot No")
                .after("setfacl -m u:daemon:r /etc/hosts && setfattr -n user.pyx -v kept "
                       "/etc/hosts && setfattr -n security.pyx -v label /etc/hosts")
                .verify("grep -q ' dc7$' /etc/hosts && getfacl -c /etc/hosts | grep -qx "
                        "user:daemon:r-- && [ \"$(getfattr --only-values -n user.pyx /etc/hosts)"
                        "$(getfattr --only-values -n security.pyx /etc/hosts)\" = keptlabel ]"),
        };
        for (const QString &name : QStringList{"my_server", "srv|", "a..b", ".lan", "сервер", "$",
                                               "-lead", QString(70, 'x')})
            rows << Row().host(name).saying(notKept).shows("Error OK");
        // clang-format on
        QTest::addColumn<Row>("row");
        for (const Row &row : rows)
            QTest::newRow(qPrintable(row.tag.isEmpty() ? "host name " + row.hostname : row.tag))
                << row;
    }

    void press()
    {
        QFETCH(Row, row);
        QVERIFY2(sh(row.setup), qPrintable(row.setup));
        QVERIFY(setSandboxSettings(QStringList{"SANDBOX_ORN_INIT_DURATION=0"} + row.settings));
        Module module("M", nullptr, false);
        RecordingElement domain(module, nullptr), server(module, nullptr);
        domain.setElementData(new ElementData);
        domain.elementData()->properties.insert("isLogin", row.loggedIn);
        domain.insert(0, {&server});
        OrnServerWidget form(module, nullptr);
        form.setElement(&server, ElementWidgetRole::Edit);
        const auto passwords = form.findChildren<QLineEdit *>(QRegularExpression("Password"));
        for (QLineEdit *field : passwords)
            field->setText(row.password);
        form.findChild<QGroupBox *>("_networkGroupBox")->setChecked(!row.hostname.isEmpty());
        if (!row.address.isEmpty())
            form.findChild<QComboBox *>("_ipComboBox")->addItem(row.address);
        form.findChild<QLineEdit *>("_hostnameLineEdit")->setText(row.hostname);
        form.findChild<QLineEdit *>("_domainNameLineEdit")->setText(row.domain);
        // Presses the answer the row expects on the window on top and notes the window.
        QStringList shown, said;
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
            auto *question = qobject_cast<QMessageBox *>(modal);
            const auto *box = modal->findChild<QDialogButtonBox *>();
            const QPlainTextEdit *pane = question ? nullptr : modal->findChild<QPlainTextEdit *>();
            // The tool that holds its output back goes on once the pane shows what came first.
            if (pane && !pane->toPlainText().isEmpty())
                QFile("/run/sandbox/release").open(QIODevice::WriteOnly);
            // A box, or the dialog once its run has ended.
            const bool settled = question || box->button(QDialogButtonBox::Close);
            if (answer == "quit") {
                // The dialog once the tool has started to talk, noted if it no longer runs.
                if (pane && pane->toPlainText().isEmpty())
                    return;
                shown << title + (pane && settled ? " ended" : " quit");
                return QCoreApplication::quit();
            }
            if (answer == "Return" && modal != answeredByReturn) {
                // Pressed on every tick while the tool runs, alternating with the keypad's Enter.
                if (settled) {
                    shown << title +
                                 (question && question->defaultButton() ? " with a default" : "") +
                                 " Return";
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
            if (pane)
                said << pane->toPlainText();
            else if (title == "Error")
                said << question->text();
            // An unexpected window, or one that Return left open, is closed all the same.
            shown << title + ' ' + (pressed ? answer : "-");
            pressed ? pressed->click() : modal->reject();
        });
        answering.start(20);
        // Another console's hold: a descriptor of its own, as another process would have.
        const int otherConsole =
            row.lockHeld ? ::open(CreationLock::path(), O_RDWR | O_CREAT, 0600) : -1;
        QVERIFY(!row.lockHeld || ::flock(otherConsole, LOCK_EX | LOCK_NB) == 0);
        QHash<QByteArray, QByteArray> saved;
        for (const QString &setting : row.environment) {
            const QByteArray name = setting.section('=', 0, 0).toUtf8();
            saved.insert(name, qgetenv(name));
            setting.contains('=') ? qputenv(name, setting.section('=', 1).toUtf8())
                                  : qunsetenv(name);
        }
        for (const QString &button : row.buttons.split(' '))
            form.findChild<QPushButton *>('_' + button + "PushButton")->click();
        for (auto it = saved.cbegin(); it != saved.cend(); ++it)
            it.value().isNull() ? qunsetenv(it.key()) : qputenv(it.key(), it.value());
        if (otherConsole >= 0)
            ::close(otherConsole);
        // After a quit, modal loops end at once until the application's loop has run again.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();

        QCOMPARE(shown.join(';'), row.windows);
        if (!row.said.isNull())
            QCOMPARE(said.join(" | "), row.said);
        // A started tool outlives the click, so its record is waited for.
        QTRY_COMPARE(lastCall(row.lastCall), row.lastCall);
        const bool ran = row.windows.contains("Initialization");
        QCOMPARE(domain.operations,
                 QVector<OperationType>(ran && row.loggedIn, OperationType::Logout));
        QCOMPARE(server.operations, QVector<OperationType>(ran, OperationType::Read));
        for (QLineEdit *field : passwords)
            QCOMPARE(field->text(), ran ? "" : row.password);
        QCOMPARE(childProcesses().join(", "), QString());
        if (sh("grep -q '^orn-init ' $SANDBOX_LOG"))
            QCOMPARE(QHostInfo::localHostName(), row.hostname.isEmpty() ? "ws1" : row.hostname);
        QVERIFY2(sh(row.check), qPrintable(row.check));
        // However its output came, the journal holds no password; a run's record is whole once
        // its end has come.
        QString journal;
        const auto ended = [&] {
            journal.clear();
            bool end = false;
            for (const JournalEntry &entry : journalEntries(journalRecord(m_journalCursor))) {
                journal += entry["MESSAGE"].toString();
                end |= entry["PYX_STEP"] == "end";
            }
            return end;
        };
        if (!ended() && ran)
            QTRY_VERIFY(ended());
        QVERIFY2(!journal.contains(row.password) || row.password.isEmpty(), qPrintable(journal));
    }
};

// Inside, on a host of a known name, with a display its tools can report.
PYX_SANDBOX_TEST_MAIN(TestFormOnHost, (QStringList{"--hostname", "ws1", "--env", "DISPLAY=:7"}))

#include "tst_creationflow.moc"
