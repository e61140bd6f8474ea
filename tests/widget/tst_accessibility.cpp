// What a screen reader meets in the form and the creation window, read through Qt's accessibility
// interfaces as the AT-SPI bridge reads them: each control's role, name and labels in Tab order,
// the network fields whether or not their group is checked, and no password in what is sent.
#include "initrequest.h"
#include "initserverdialog.h"
#include "module.h"
#include "ornserverwidget.h"

#include <QtTest>
#include <QtWidgets>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace {

// Each text change told to accessibility clients, as "removed>inserted", by object name.
QMap<QString, QStringList> told;

void record(QAccessibleEvent *event)
{
    if (!event->object())
        return;
    QStringList &of = told[event->object()->objectName()];
    if (event->type() == QAccessible::TextInserted)
        of << '>' + static_cast<QAccessibleTextInsertEvent *>(event)->textInserted();
    else if (event->type() == QAccessible::TextRemoved)
        of << static_cast<QAccessibleTextRemoveEvent *>(event)->textRemoved() + '>';
    else if (event->type() == QAccessible::TextUpdated)
        of << static_cast<QAccessibleTextUpdateEvent *>(event)->textRemoved() + '>' +
                  static_cast<QAccessibleTextUpdateEvent *>(event)->textInserted();
}

} // namespace

class TestAccessibility : public QObject
{
    Q_OBJECT
    Module m_module{"M", nullptr, false};

private slots:
    void initTestCase()
    {
        // What an AT-SPI client's arrival does; without it Qt sends no change anywhere.
        QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(true);
        QVERIFY(QAccessible::isActive());
        // Before the first form, whose password mask passes every change on to it.
        QAccessible::installUpdateHandler(record);
    }

    void controls_data()
    {
        QTest::addColumn<QString>("object"); // "dialog:" for the window's; none: its Abort
        QTest::addColumn<int>("tab");        // place in the Tab chain; -1: not in it
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("name"); // a value still empty goes by its label's
        QTest::addColumn<QString>("labels");
        const QString group = "|Use custom network settings";
        // clang-format off
        const struct { const char *tag, *object; int tab; QAccessible::Role role; QString name, labels; } rows[] = {
            {"Kerberos password", "_kerberosPasswordLineEdit", 0, QAccessible::EditableText, "Kerberos database password", "Kerberos database password"},
            {"its repetition", "_repeatKerberosPasswordLineEdit", 1, QAccessible::EditableText, "Repeat Kerberos password", "Repeat Kerberos password"},
            {"admin password", "_adminPasswordLineEdit", 2, QAccessible::EditableText, "ORN admin password", "ORN admin password"},
            {"its repetition too", "_repeatAdminPasswordLineEdit", 3, QAccessible::EditableText, "Repeat ORN admin password", "Repeat ORN admin password"},
            {"network group", "_networkGroupBox", 4, QAccessible::CheckBox, group.mid(1), ""},
            {"IP address", "_ipComboBox", 5, QAccessible::ComboBox, "IP address", "IP address" + group},
            {"host name", "_hostnameLineEdit", 6, QAccessible::EditableText, "Hostname", "Hostname" + group},
            {"domain name", "_domainNameLineEdit", 7, QAccessible::EditableText, "Domain name", "Domain name" + group},
            {"expert mode", "_expertModePushButton", 8, QAccessible::Button, "Expert mode", ""},
            {"network settings", "_networkSettingPushButton", 9, QAccessible::Button, "Network settings", ""},
            {"orn.conf", "_editOrnConfPushButton", 10, QAccessible::Button, "Edit orn.conf", ""},
            {"creation", "_initServerPushButton", 11, QAccessible::Button, "Create server", ""},
            {"status value", "_statusLabel", -1, QAccessible::StaticText, "Status", "Status"},
            {"server name value", "_serverNameLabel", -1, QAccessible::StaticText, "Server name:", "Server name:" + group},
            {"dialog: output", "dialog:_plainTextEdit", 0, QAccessible::EditableText, "Tool output", ""},
            {"dialog: Abort", "dialog:", 1, QAccessible::Button, "Abort", ""},
            {"dialog: progress", "dialog:_progressBar", -1, QAccessible::ProgressBar, "Creation progress", ""},
        };
        // clang-format on
        for (const auto &row : rows)
            QTest::newRow(row.tag)
                << row.object << row.tab << int(row.role) << row.name << row.labels;
    }

    // Every control Tab reaches has a row; a label stands to the left of what it labels.
    void controls()
    {
        QFETCH(QString, object);
        QFETCH(int, role);
        OrnServerWidget form(m_module, nullptr);
        InitServerDialog dialog(InitRequest::make("k", "a", false, "", "", ""));
        const bool inDialog = object.startsWith("dialog:");
        QWidget *window = inDialog ? static_cast<QWidget *>(&dialog) : &form;
        window->show();
        object.remove("dialog:");
        QWidget *control =
            object.isEmpty()
                ? dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Abort)
                : window->findChild<QWidget *>(object);
        QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(control);
        QCOMPARE(int(iface->role()), role);
        QTEST(iface->text(QAccessible::Name), "name");
        QStringList chain;
        QWidget *first =
            window->findChild<QWidget *>(inDialog ? "_plainTextEdit" : "_kerberosPasswordLineEdit");
        for (QWidget *at = first; chain.isEmpty() || at != first; at = at->nextInFocusChain())
            if (at->focusPolicy() & Qt::TabFocus)
                chain << at->objectName();
        QCOMPARE(chain.size(), inDialog ? 2 : 12);
        QTEST(chain.indexOf(control->objectName()), "tab");
        QStringList labels;
        for (const auto &relation : iface->relations(QAccessible::Label)) {
            labels << relation.first->text(QAccessible::Name);
            const QRect label = relation.first->rect(), field = iface->rect();
            QVERIFY(relation.first->role() != QAccessible::StaticText ||
                    (label.right() < field.left() && label.top() < field.bottom() &&
                     field.top() < label.bottom()));
        }
        QTEST(labels.join('|'), "labels");
    }

    // A client reads the fields while the group is unchecked, and sets them once it is checked.
    void networkFields()
    {
        OrnServerWidget form(m_module, nullptr);
        form.findChild<QComboBox *>()->addItems({"10.0.0.5", "192.168.1.2"});
        form.findChild<QLineEdit *>("_domainNameLineEdit")->setText(".lan");
        form.findChild<QLineEdit *>("_hostnameLineEdit")->setText("srv");
        QList<QAccessibleInterface *> fields;
        for (const char *name :
             {"_ipComboBox", "_hostnameLineEdit", "_domainNameLineEdit", "_serverNameLabel"})
            fields << QAccessible::queryAccessibleInterface(form.findChild<QWidget *>(name));
        // Their roles, and so their interfaces, are the controls' rows.
        QStringList seen;
        const auto read = [&] {
            for (QAccessibleInterface *field : fields)
                seen << (field->textInterface() ? field->textInterface()->text(
                                                      0, field->textInterface()->characterCount())
                                                : field->text(field->role() == QAccessible::ComboBox
                                                                  ? QAccessible::Value
                                                                  : QAccessible::Name)) +
                            (field->state().disabled ? " x" : "");
        };
        read();
        form.findChild<QGroupBox *>()->setChecked(true);
        fields[1]->editableTextInterface()->replaceText(0, 3, "dc1");
        fields[2]->editableTextInterface()->replaceText(0, 4, ".corp");
        read();
        QCOMPARE(seen.join('|'), "10.0.0.5 x|srv x|.lan x|srv.lan x|10.0.0.5|dc1|.corp|dc1.corp");
    }

    void passwords_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("shown"); // what a password field tells; * for its mask
        QTest::addColumn<QString>("clear"); // what the host name field, which hides nothing, tells
        // clang-format off
        QTest::newRow("typed")               << "keys a%7"        << ">* >* >*"     << ">a >% >7";
        QTest::newRow("erased")              << "keys ab\b"       << ">* >* *>"     << ">a >b b>";
        QTest::newRow("set")                 << "set Kdb"         << ">***"         << ">Kdb";
        QTest::newRow("replaced")            << "keys ab|set Kdb" << ">* >* **>***" << ">a >b ab>Kdb";
        QTest::newRow("cleared after a run") << "keys ab|clear"   << ">* >* **>"    << ">a >b ab>";
        // clang-format on
    }

    // Whatever is typed into a password field, and the form's own clearing after a run, reaches
    // accessibility clients only as the mask characters the field shows.
    void passwords()
    {
        QFETCH(QString, action);
        QFETCH(QString, shown);
        OrnServerWidget form(m_module, nullptr);
        form.findChild<QGroupBox *>()->setChecked(true);
        told.clear();
        QStringList seen;
        for (const char *name :
             {"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit",
              "_adminPasswordLineEdit", "_repeatAdminPasswordLineEdit", "_hostnameLineEdit"}) {
            auto *field = form.findChild<QLineEdit *>(name);
            for (const QString &step : action.split('|')) {
                if (step.startsWith("keys"))
                    QTest::keyClicks(field, step.section(' ', 1));
                else if (step.startsWith("set"))
                    field->setText(step.section(' ', 1));
                else
                    field->clear();
            }
            seen << told.value(name).join(' ');
            field->setText("x");
            shown.replace('*', field->displayText());
        }
        QCOMPARE(seen.mid(0, 4), QStringList({shown, shown, shown, shown}));
        QTEST(seen.last(), "clear");
    }
};

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
