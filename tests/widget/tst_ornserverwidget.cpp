// The server form: its layout, texts and wiring, the input check, the composition of the server's
// name while it is typed, and the filling from a read.
#include "ornserverwidget.h"

#include "element.h"
#include "elementdata.h"
#include "module.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// Brackets the texts translated in the form's context; any other text shows bare.
struct MarkingTranslator : QTranslator
{
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        return qstrcmp(context, "OrnServerWidget") ? QString() : '[' + QString(source) + ']';
    }
    bool isEmpty() const override { return false; }
};

// A layout's items in order: name, class and text, or a spacer's size; then the place in a grid
// or form.
QStringList describe(QLayout *layout)
{
    QStringList items;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem *item = layout->itemAt(i);
        QObject *object = item->widget() ? item->widget() : static_cast<QObject *>(item->layout());
        QString text = object ? object->objectName() + ' ' + object->metaObject()->className()
                              : QString::asprintf("spacer %dx%d", item->sizeHint().width(),
                                                  item->sizeHint().height());
        // A group box shows a title, other controls a text; a spacer or layout shows neither.
        if (object)
            text +=
                ' ' + object->property("title").toString() + object->property("text").toString();
        int row, column, rows, columns;
        QFormLayout::ItemRole role;
        if (auto *grid = qobject_cast<QGridLayout *>(layout)) {
            grid->getItemPosition(i, &row, &column, &rows, &columns);
            text += QString::asprintf(" %d,%d %dx%d", row, column, rows, columns);
        } else if (auto *form = qobject_cast<QFormLayout *>(layout)) {
            form->getItemPosition(i, &row, &role);
            text += QString::asprintf(" %d,%s", row, role == QFormLayout::LabelRole ? "l" : "f");
        }
        items << text.simplified();
    }
    return items;
}

// What a read fills in: button, status, note, addresses, selection, domain, host, server name.
QString formState(const QWidget &widget)
{
    QStringList state, addresses;
    for (const char *name : {"_initServerPushButton", "_statusLabel", "_macWarningLabel",
                             "_domainNameLineEdit", "_hostnameLineEdit", "_serverNameLabel"})
        state << widget.findChild<QWidget *>(name)->property("text").toString();
    const auto *ip = widget.findChild<QComboBox *>("_ipComboBox");
    for (int i = 0; i < ip->count(); ++i)
        addresses << ip->itemText(i);
    state.insert(3, addresses.join(',') + '|' + QString::number(ip->currentIndex()));
    if (!widget.findChild<QWidget *>("_domainNameLineEdit")->isEnabled())
        state[4] += " (locked)";
    const QString about = "ORN server will be created %1 support of mandatory labes";
    return state.join('|')
        .replace(about.arg("without") + " (package required orn-server-common)", "without")
        .replace(about.arg("with"), "with");
}

// Notes the form as it stands at each change of the edit block.
struct ProbeWidget : OrnServerWidget
{
    using OrnServerWidget::OrnServerWidget;
    void blockEditWidget(bool block) override
    {
        calls << QString::number(block) + ' ' + formState(*this);
        OrnServerWidget::blockEditWidget(block);
    }
    QStringList calls;
};

} // namespace

class TestOrnServerWidget : public QObject
{
    Q_OBJECT
    Module m_module{QStringLiteral("M"), nullptr, false};

private slots:
    void structure_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::newRow("verticalLayout")
            << "gridLayout_2 QGridLayout|_networkGroupBox QGroupBox [Use custom network settings]|"
               "horizontalLayout QHBoxLayout|spacer 20x40|label_11 QLabel [ORN server will be "
               "created and runing on current work station.]|label_8 QLabel [File /etc/hosts "
               "always should contain a server IP address, domain and hostname.]|"
               "_macWarningLabel QLabel";
        QTest::newRow("gridLayout_2")
            << "_adminPasswordLineEdit QLineEdit 4,1 1x1|label QLabel [Kerberos database "
               "password] 2,0 1x1|_repeatKerberosPasswordLineEdit QLineEdit 3,1 1x1|"
               "_kerberosPasswordLineEdit QLineEdit 2,1 1x1|label_2 QLabel [ORN admin password] "
               "4,0 1x1|_repeatAdminPasswordLineEdit QLineEdit 5,1 1x1|label_9 QLabel [Repeat "
               "Kerberos password] 3,0 1x1|label_10 QLabel [Repeat ORN admin password] 5,0 1x1|"
               "label_7 QLabel [Status] 0,0 1x1|_statusLabel QLabel 0,1 1x1|line QFrame 1,0 1x2";
        QTest::newRow("formLayout")
            << "label_3 QLabel [IP address] 0,l|_ipComboBox QComboBox 0,f|label_4 QLabel "
               "[Hostname] 1,l|_hostnameLineEdit QLineEdit 1,f|label_5 QLabel [Domain name] 2,l|"
               "_domainNameLineEdit QLineEdit 2,f|label_6 QLabel [Server name:] 3,l|"
               "_serverNameLabel QLabel 3,f";
        QTest::newRow("horizontalLayout")
            << "_expertModePushButton QPushButton [Expert mode]|_networkSettingPushButton "
               "QPushButton [Network settings]|_editOrnConfPushButton QPushButton [Edit orn.conf]|"
               "spacer 40x20|_initServerPushButton QPushButton [Create server]";
        QTest::newRow("tab chain")
            << "_kerberosPasswordLineEdit|_repeatKerberosPasswordLineEdit|_adminPasswordLineEdit|"
               "_repeatAdminPasswordLineEdit|_networkGroupBox|_ipComboBox|_hostnameLineEdit|"
               "_domainNameLineEdit|_expertModePushButton|_networkSettingPushButton|"
               "_editOrnConfPushButton|_initServerPushButton";
        QTest::newRow("slots")
            << "20 void openExpertMode()|20 void openNetworkUtility()|20 void editOrnConf()|"
               "20 void createServer()|20 QStringList checkDataForCreateServer()|"
               "20 void hostnameLineEditTextChanged()|"
               "20 void domainNameLineEditLineEditTextChanged()|20 void makeupFullDomainName()";
        QTest::newRow("connections")
            << "_hostnameLineEdit.textChanged|_domainNameLineEdit.textChanged|"
               "_expertModePushButton.clicked|_networkSettingPushButton.clicked|"
               "_editOrnConfPushButton.clicked|_initServerPushButton.clicked";
    }

    // A layout's items, where a control lives following from the layout that holds it; the
    // widgets that Tab visits; the slots, which callers address by index (type and access,
    // return, signature); the signals of named controls that reach the form.
    void structure()
    {
        MarkingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        OrnServerWidget widget(m_module, nullptr);
        const QMetaObject &meta = OrnServerWidget::staticMetaObject;
        QCOMPARE(widget.windowTitle(), "[ORN server creation]");
        QCOMPARE(widget.layout()->objectName(), "verticalLayout");
        QCOMPARE(widget.findChild<QWidget *>("_networkGroupBox")->layout()->objectName(),
                 "formLayout");
        QCOMPARE(meta.superClass(), &ViewEditElementWidget::staticMetaObject);
        QCOMPARE(meta.propertyCount(), meta.propertyOffset());
        const QString tag = QTest::currentDataTag();
        QStringList seen;
        if (tag == "tab chain") {
            QWidget *const start = widget.findChild<QWidget *>("_kerberosPasswordLineEdit");
            for (QWidget *current = start; seen.isEmpty() || current != start;
                 current = current->nextInFocusChain())
                seen << ((current->focusPolicy() & Qt::TabFocus) ? current->objectName() : "");
            seen.removeAll(QString());
        } else if (tag == "slots") {
            for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
                const QMetaMethod m = meta.method(i);
                seen << QString::number(m.methodType() * 10 + m.access()) + ' ' + m.typeName() +
                            ' ' + m.methodSignature();
            }
        } else if (tag == "connections") {
            for (QObject *sender : widget.findChildren<QObject *>(QRegularExpression("^[^q]"))) {
                const QMetaObject *kind = sender->metaObject();
                for (int i = QObject::staticMetaObject.methodCount(); i < kind->methodCount();
                     ++i) {
                    const QMetaMethod signal = kind->method(i);
                    if (signal.methodType() == QMetaMethod::Signal &&
                        !(signal.attributes() & QMetaMethod::Cloned) &&
                        QObject::disconnect(sender, QByteArray('2' + signal.methodSignature()),
                                            &widget, nullptr))
                        seen << sender->objectName() + '.' + signal.name();
                }
                // Nor does anything else of it, QObject's own signals included.
                QVERIFY(!QObject::disconnect(sender, nullptr, &widget, nullptr));
            }
        } else {
            seen << describe(widget.findChild<QLayout *>(tag));
        }
        QFETCH(QString, expected);
        QCOMPARE(seen, expected.split('|'));
    }

    void checkData_data()
    {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("expected");
        // Kerberos password and repetition, admin password and repetition, host, domain, group.
        const char *rows[][3] = {
            {"all empty", "||||||", "Kerberos password is empty|ORN admin password is empty"},
            {"mismatch only", "k1||a1|a1|||", "Kerberos password do not match"},
            {"empty and mismatch", "|k1|a1|a1|||",
             "Kerberos password is empty|Kerberos password do not match"},
            {"a blank is not empty", " | | | |x| |on", ""},
            {"case matters", "k1|k1|A1|a1|||", "ORN admin password do not match"},
            {"names empty", "k1|k1|a1|a1|||on", "Hostname is empty|Domain name is empty"},
            {"everything, in order", "|x||y|||on",
             "Kerberos password is empty|Kerberos password do not match|ORN admin password is "
             "empty|ORN admin password do not match|Hostname is empty|Domain name is empty"},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << row[1] << row[2];
    }

    // The same list through slot 4 as through the slot's name.
    void checkData()
    {
        QFETCH(QString, fields);
        OrnServerWidget widget(m_module, nullptr);
        const QStringList names{"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit",
                                "_adminPasswordLineEdit",    "_repeatAdminPasswordLineEdit",
                                "_hostnameLineEdit",         "_domainNameLineEdit"};
        for (int i = 0; i < names.size(); ++i)
            widget.findChild<QLineEdit *>(names.at(i))->setText(fields.section('|', i, i));
        widget.findChild<QGroupBox *>("_networkGroupBox")->setChecked(fields.endsWith("on"));
        QStringList byName, byIndex;
        QVERIFY(QMetaObject::invokeMethod(&widget, "checkDataForCreateServer", Qt::DirectConnection,
                                          Q_RETURN_ARG(QStringList, byName)));
        void *arguments[] = {&byIndex};
        QMetaObject::metacall(&widget, QMetaObject::InvokeMetaMethod,
                              OrnServerWidget::staticMetaObject.methodOffset() + 4, arguments);
        QTEST(byName.join('|'), "expected");
        QCOMPARE(byIndex, byName);
    }

    // Keys typed into the host name, then into the domain name, then backspaces in the host name.
    void typedNames_data()
    {
        QTest::addColumn<QString>("shown"); // the domain name, then the server name
        QTest::newRow("srv.example.lan") << ".example.lan (locked)|srv.example.lan";
        QTest::newRow("srv.") << ". (locked)|srv.";
        QTest::newRow("srv.example.lan||12") << ".|srv.";
        QTest::newRow(".lan") << ".lan (locked)|.lan";
        QTest::newRow("a..b") << "..b (locked)|a..b";
        QTest::newRow("srv|example.lan") << "example.lan|srvexample.lan";
    }

    void typedNames()
    {
        const QString keys = QTest::currentDataTag();
        const int erased = keys.section('|', 2).toInt();
        OrnServerWidget widget(m_module, nullptr);
        widget.findChild<QGroupBox *>("_networkGroupBox")->setChecked(true);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        auto *host = widget.findChild<QLineEdit *>("_hostnameLineEdit");
        QTest::keyClicks(host, keys.section('|', 0, 0));
        QTest::keyClicks(widget.findChild<QLineEdit *>("_domainNameLineEdit"),
                         keys.section('|', 1, 1));
        for (int i = 0; i < erased; ++i)
            QTest::keyClick(host, Qt::Key_Backspace);
        // The host name keeps whatever was typed into it.
        QCOMPARE(host->text(), keys.section('|', 0, 0).chopped(erased));
        const QString state = formState(widget);
        QTEST(QString(state.section('|', 5, 5) + '|' + state.section('|', 7)), "shown");
    }

    void fill_data()
    {
        QTest::addColumn<QList<QVariantMap>>("reads");
        QTest::addColumn<QString>("last"); // how the last record is handed over
        QTest::addColumn<QString>("expected");
        const QVariantMap full{{"ifServerOn", false},
                               {"orn-server-commonInstalled", true},
                               {"ipAddresses", QStringList{"10.0.0.5", "192.168.1.2"}},
                               {"currentIpAddress", "192.168.1.2"},
                               {"domainName", ".example.lan"},
                               {"hostname", "srv"}};
        // The full record with one value replaced, or left out when it is invalid.
        const auto with = [&full](const QString &key, const QVariant &value) {
            QVariantMap record = full;
            value.isValid() ? void(record.insert(key, value)) : void(record.remove(key));
            return record;
        };
        const auto row = [](const char *tag, const QList<QVariantMap> &reads, const char *last,
                            const QString &expected) {
            QTest::newRow(tag) << reads << QString(last) << expected;
        };
        const QString head = "[Create server]|[off]|[with]|10.0.0.5,192.168.1.2";
        const QString names = "|.example.lan|srv|srv.example.lan", kept = "|1|.example.lan|srv|?";
        row("full", {full}, "own", head + "|1" + names);
        row("another element", {full, {}}, "other", head + kept);
        row("no record", {full, {}}, "null", head + kept);
        row("edit already blocked", {full}, "blocked", head + "|1" + names);
        row("defaults", {{}}, "own", "[Re-create server]|[on]|[without]||-1|||?");
        row("current absent", {with("currentIpAddress", "10.0.0.9")}, "own",
            head + ",10.0.0.9|2" + names);
        row("trailing blank", {with("currentIpAddress", "10.0.0.5 ")}, "own",
            head + ",10.0.0.5 |2" + names);
        row("current empty", {with("currentIpAddress", "")}, "own", head + "|-1" + names);
        row("current missing", {with("currentIpAddress", {})}, "own", head + "|-1" + names);
        row("shorter second read",
            {with("currentIpAddress", "10.0.0.9"), with("ipAddresses", QStringList{"1.2.3.4"})},
            "own", "[Create server]|[off]|[with]|1.2.3.4,192.168.1.2" + kept);
        row("host name with its domain", {with("hostname", "srv.corp.lan")}, "own",
            head + "|1|.corp.lan (locked)|srv.corp.lan|srv.corp.lan");
        row("only the domain changes", {full, with("domainName", ".corp.lan")}, "own",
            head + "|1|.corp.lan|srv|srv.corp.lan");
        row("names already shown", {full, full}, "own", head + kept);
    }

    void fill()
    {
        QFETCH(QList<QVariantMap>, reads);
        QFETCH(QString, last);
        QFETCH(QString, expected);
        MarkingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        Element own(m_module, nullptr), other(m_module, nullptr);
        ProbeWidget widget(m_module, nullptr);
        widget.setElement(&own, ElementWidgetRole::View);
        std::vector<ElementData> records(reads.size());
        for (int i = 0; i < reads.size(); ++i) {
            records[i].properties = reads.at(i);
            if (i + 1 < reads.size())
                widget.afterSuccessfulRead(&own, &records[i]);
        }
        // Only a recomposition of the server name replaces this mark.
        widget.findChild<QLabel *>("_serverNameLabel")->setText("?");
        if (last == "blocked")
            widget.blockEditWidget(true);
        widget.calls.clear();
        const QString before = formState(widget);
        widget.afterSuccessfulRead(last == "other" ? &other : &own,
                                   last == "null" ? nullptr : &records.back());
        const QString after = formState(widget);
        // Filled while unchecked, the group's fields can be edited only once it is checked.
        QVERIFY(!widget.findChild<QWidget *>("_domainNameLineEdit")->isEnabled());
        widget.findChild<QGroupBox *>("_networkGroupBox")->setChecked(true);
        QCOMPARE(formState(widget), expected);
        // The block comes before the first control is touched, the base's part last.
        QStringList calls{"1 " + before, "0 " + after};
        if (last != "own")
            calls = last == "blocked" ? calls.mid(1) : QStringList();
        QCOMPARE(widget.calls, calls);
    }
};

QTEST_MAIN(TestOrnServerWidget)
#include "tst_ornserverwidget.moc"
