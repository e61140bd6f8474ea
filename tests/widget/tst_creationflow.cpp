// The creation flow on the simulated host, with every box answered as an administrator would.
// The program runs itself again inside sandbox/run: the flow sets the host name, rewrites
// /etc/hosts and writes /etc/orn.
#include "element.h"
#include "elementdata.h"
#include "insidesandbox.h"
#include "module.h"
#include "ornserverwidget.h"

#include <QtTest>
#include <QtWidgets>
#include <QHostInfo>

namespace {

class RecordingElement : public Element
{
public:
    RecordingElement(Module &module, const QString &type) : Element(module, nullptr)
    {
        typeName = elementTypeName = type;
    }
    bool performOperation(OperationType operation, ElementData *, int) override
    {
        operations << operation;
        return true;
    }
    QList<OperationType> operations;
};

QStringList recordedCalls()
{
    QFile log(qEnvironmentVariable("SANDBOX_LOG"));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Describes the modal window on top and presses the answer's button.
QString answer(QWidget *modal, const QString &button)
{
    if (auto *box = qobject_cast<QMessageBox *>(modal)) {
        const QMap<QMessageBox::Icon, QString> kinds = {{QMessageBox::Critical, "critical"},
                                                       {QMessageBox::Warning, "warning"},
                                                       {QMessageBox::Question, "question"}};
        QStringList buttons;
        for (QAbstractButton *b : box->buttons())
            buttons << b->text().remove('&');
        buttons.sort();
        QAbstractButton *pressed = nullptr;
        for (QAbstractButton *b : box->buttons()) {
            if (b->text().remove('&') == button)
                pressed = b;
        }
        // An unexpected box is closed all the same, so that the flow ends and the row fails.
        pressed ? pressed->click() : box->reject();
        return QStringLiteral("%1 %2 %3 lines").arg(kinds.value(box->icon()),
                                                     buttons.join('|'))
            .arg(box->text().count('\n') + 1);
    }
    auto *buttons = modal->findChild<QDialogButtonBox *>(QStringLiteral("_buttonBox"));
    QAbstractButton *close = buttons ? buttons->button(QDialogButtonBox::Close) : nullptr;
    if (!close)
        return {};
    close->click();
    return QStringLiteral("dialog");
}

} // namespace

class TestCreationFlow : public QObject
{
    Q_OBJECT

private slots:
    void create_data();
    void create();
};

void TestCreationFlow::create_data()
{
    QTest::addColumn<QString>("kerberos");
    QTest::addColumn<QString>("hostname"); // empty: no custom network settings
    QTest::addColumn<QVariant>("isLogin");
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("lastCall");

    const QString current = QHostInfo::localHostName();
    const QString confirm = "warning No|Yes 2 lines";
    QTest::newRow("two input errors")
        << "" << QString() << QVariant(true) << QString() << QStringList{"OK"}
        << QStringList{"critical OK 2 lines"} << QString();
    QTest::newRow("confirmation refused")
        << "k" << QString() << QVariant(true) << QString() << QStringList{"No"}
        << QStringList{confirm} << QString();
    QTest::newRow("logged in, names kept")
        << "k" << QString() << QVariant(true) << QString() << QStringList{"Yes", "Close"}
        << QStringList{confirm, "dialog"} << "orn-init";
    QTest::newRow("logged out, same host name")
        << "k" << current << QVariant(false) << QString() << QStringList{"Yes", "Close"}
        << QStringList{confirm, "dialog"} << "orn-init";
    QTest::newRow("new name, tool failed")
        << "k" << "dc1" << QVariant() << "SANDBOX_MODE_ORN_INIT=exit:1"
        << QStringList{"Yes", "Close", "OK"}
        << QStringList{confirm, "dialog", "warning OK 1 lines"} << "orn-init";
    QTest::newRow("new name, reboot refused")
        << "k" << "dc2" << QVariant() << QString() << QStringList{"Yes", "Close", "No"}
        << QStringList{confirm, "dialog", "question No|Yes 2 lines"} << "orn-init";
    QTest::newRow("reboot for the sudo user")
        << "k" << "dc3" << QVariant() << "SUDO_UID=1000" << QStringList{"Yes", "Close", "Yes"}
        << QStringList{confirm, "dialog", "question No|Yes 2 lines"}
        << "vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/1000}";
    QTest::newRow("reboot without sudo")
        << "k" << "dc4" << QVariant() << QString() << QStringList{"Yes", "Close", "Yes"}
        << QStringList{confirm, "dialog", "question No|Yes 2 lines"}
        << "vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/}";
}

void TestCreationFlow::create()
{
    QFETCH(QString, kerberos);
    QFETCH(QString, hostname);
    QFETCH(QVariant, isLogin);
    QFETCH(QString, environment);
    QFETCH(QStringList, answers);

    qunsetenv("SANDBOX_MODE_ORN_INIT");
    qunsetenv("SUDO_UID");
    if (environment.contains('='))
        qputenv(qPrintable(environment.section('=', 0, 0)), environment.section('=', 1).toUtf8());
    qputenv("SANDBOX_ORN_INIT_DURATION", "0");

    Module module(QStringLiteral("M"), nullptr, false);
    RecordingElement domain(module, QStringLiteral("OrnDomain"));
    RecordingElement server(module, QStringLiteral("OrnServer"));
    auto *record = new ElementData;
    if (isLogin.isValid())
        record->properties.insert(QStringLiteral("isLogin"), isLogin);
    domain.setElementData(record);
    domain.insert(0, {&server});
    OrnServerWidget form(module, nullptr);
    form.setElement(&server, ElementWidgetRole::Edit);
    const QStringList passwordFields = {"_kerberosPasswordLineEdit",
                                        "_repeatKerberosPasswordLineEdit",
                                        "_adminPasswordLineEdit", "_repeatAdminPasswordLineEdit"};
    for (const QString &name : passwordFields)
        form.findChild<QLineEdit *>(name)->setText(name.contains("erberos") ? kerberos : "a");
    form.findChild<QLineEdit *>("_repeatKerberosPasswordLineEdit")->setText("k");
    if (!hostname.isEmpty()) {
        form.findChild<QGroupBox *>("_networkGroupBox")->setChecked(true);
        form.findChild<QComboBox *>("_ipComboBox")->addItem("192.0.2.2");
        form.findChild<QLineEdit *>("_hostnameLineEdit")->setText(hostname);
        form.findChild<QLineEdit *>("_domainNameLineEdit")->setText(".corp.lan");
    }

    QStringList typed;
    for (const QString &name : passwordFields)
        typed << form.findChild<QLineEdit *>(name)->text();

    QStringList shown;
    QTimer answering;
    answering.callOnTimeout([&] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || answers.isEmpty())
            return;
        const QString seen = answer(modal, answers.first());
        if (!seen.isEmpty()) {
            shown << seen;
            answers.removeFirst();
        }
    });
    answering.start(20);
    const int callsBefore = recordedCalls().size();
    QMetaObject::invokeMethod(&form, "createServer");
    answering.stop();

    QTEST(shown, "shown");
    const QStringList calls = recordedCalls().mid(callsBefore);
    QFETCH(QString, lastCall);
    QCOMPARE(calls.isEmpty() ? QString() : calls.last().section(' ', 0, lastCall.count(' ')),
             lastCall);
    const bool ran = shown.contains("dialog");
    QCOMPARE(domain.operations.count(OperationType::Logout), ran && isLogin.toBool() ? 1 : 0);
    QCOMPARE(server.operations, ran ? QList<OperationType>{OperationType::Read}
                                    : QList<OperationType>{});
    QStringList passwords;
    for (const QString &name : passwordFields)
        passwords << form.findChild<QLineEdit *>(name)->text();
    const QStringList wiped = {QString(), QString(), QString(), QString()};
    QCOMPARE(passwords, ran ? wiped : typed);
    QVERIFY(!QFile::exists(QStringLiteral("/etc/orn/tempFile")));
    if (!hostname.isEmpty() && ran)
        QCOMPARE(QHostInfo::localHostName(), hostname);
}

int main(int argc, char *argv[])
{
    const int inner = runInsideSandbox(argc, argv, {});
    if (inner >= 0)
        return inner;
    QApplication app(argc, argv);
    TestCreationFlow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_creationflow.moc"
