// The server form: its slots, the input check, the composition of the server's name while it is
// typed, the filling from a read, and the room each text of the form and its windows gets, in
// English and in Russian.
#include "ornserverwidget.h"

#include "consolewindow.h"
#include "element.h"
#include "elementdata.h"
#include "initserverdialog.h"
#include "module.h"
#include "nodetreemodel.h"
#include "orndomainmodule.h"
#include "ornservicemodule.h"
#include "plugintranslations.h"
#include "serverproperties.h"

#include <QtTest>
#include <QtWidgets>

// Button|status|with or without|addresses|selection|domain|host|server name; a disabled field is
// marked locked.
QString formState(const QWidget &widget)
{
    QStringList state, addresses;
    for (const char *name :
         {"_initServerPushButton", "_statusLabel", "_macWarningLabel", "_ipComboBox",
          "_domainNameLineEdit", "_hostnameLineEdit", "_serverNameLabel"}) {
        const auto *field = widget.findChild<QWidget *>(name);
        state << field->property("text").toString() + (field->isEnabled() ? "" : " (locked)");
    }
    state[2] = state[2].section(' ', 5, 5);
    const auto *ip = widget.findChild<QComboBox *>("_ipComboBox");
    for (int i = 0; i < ip->count(); ++i)
        addresses << ip->itemText(i);
    state[3] = addresses.join(',') + '|' + QString::number(ip->currentIndex());
    return state.join('|');
}

// The texts of the window's labels, buttons, group titles and tree items that get less room than
// they need: a label or button its size hint, which the style makes from the text; a group title
// its advance beside the check box; a tree item its advance within the style's margins.
QStringList cutTexts(QWidget *window, int *checked)
{
    QStringList cut;
    const auto check = [&](const QString &text, const QSize &has, const QSize &needs) {
        ++*checked;
        if (has.width() < needs.width() || has.height() < needs.height())
            QDebug(&*cut.insert(cut.end(), QString())) << text << "has" << has << "needs" << needs;
    };
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        auto *label = qobject_cast<QLabel *>(widget);
        auto *button = qobject_cast<QAbstractButton *>(widget);
        auto *group = qobject_cast<QGroupBox *>(widget);
        auto *tree = qobject_cast<QTreeView *>(widget);
        const QString text = widget->property(group ? "title" : "text").toString();
        if (!widget->isVisibleTo(window) || !(label || button || group || tree) ||
            (text.isEmpty() && !tree))
            continue;
        if (label || button) {
            check(text, widget->size(),
                  label && label->wordWrap() ? QSize(0, label->heightForWidth(label->width()))
                                             : widget->sizeHint());
        } else if (group) {
            QStyleOptionGroupBox option;
            option.initFrom(group);
            option.text = text;
            option.textAlignment = group->alignment();
            option.subControls = QStyle::SC_GroupBoxLabel;
            if (group->isCheckable())
                option.subControls |= QStyle::SC_GroupBoxCheckBox;
            const auto rect = [&](QStyle::SubControl part) {
                return group->style()->subControlRect(QStyle::CC_GroupBox, &option, part, group);
            };
            QRect room = rect(QStyle::SC_GroupBoxLabel) & group->rect();
            if (group->isCheckable())
                room.setLeft(qMax(room.left(), rect(QStyle::SC_GroupBoxCheckBox).right() + 1));
            check(text, room.size(), option.fontMetrics.size(Qt::TextShowMnemonic, text));
        } else {
            const int margin = tree->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
            for (QModelIndex at = tree->model()->index(0, 0); at.isValid();
                 at = tree->indexBelow(at)) {
                const QString item = at.data().toString();
                check(item, (tree->visualRect(at) & tree->viewport()->rect()).size(),
                      {tree->fontMetrics().horizontalAdvance(item) + 2 * margin, 0});
            }
        }
    }
    return cut;
}

class TestOrnServerWidget : public QObject
{
    Q_OBJECT
    Module m_module{"M", nullptr, false};

private slots:
    // The slots, which callers address by index. The controls, their labels and the Tab chain
    // are the accessibility suite's.
    void slotOrder()
    {
        QStringList seen;
        const QMetaObject &meta = OrnServerWidget::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            seen << meta.method(i).methodSignature();
        QCOMPARE(seen.join('|'),
                 "openExpertMode()|openNetworkUtility()|editOrnConf()|createServer()|"
                 "checkDataForCreateServer()|hostnameLineEditTextChanged()|"
                 "domainNameLineEditLineEditTextChanged()|makeupFullDomainName()");
    }

    // Keys typed into each field with the group checked, which the row then leaves checked or not.
    void typed_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("expected");
        // Keys: Kerberos password and repetition, admin password and repetition, host, domain,
        // group. Expected: the domain and server names shown, then the check's messages.
        const char *rows[][3] = {
            {"all empty", "||||||", "||Kerberos password is empty|ORN admin password is empty"},
            {"mismatch only", "k||a|a|||", "||Kerberos password do not match"},
            {"a blank is not empty", " | | | |x| |on", " |x "},
            {"case matters", "k|k|A|a|||", "||ORN admin password do not match"},
            {"names empty", "k|k|a|a|||on", "||Hostname is empty|Domain name is empty"},
            {"everything, in order", "|x||y|||on",
             "||Kerberos password is empty|Kerberos password do not match|ORN admin password is "
             "empty|ORN admin password do not match|Hostname is empty|Domain name is empty"},
            {"erased back to srv", "k|k|a|a|srv.example.lan\b\b\b\b\b\b\b\b\b\b\b\b||on", ".|srv."},
            {"domain alone", "k|k|a|a|.lan||on", ".lan (locked)|.lan"},
            {"two dots", "k|k|a|a|a..b||on", "..b (locked)|a..b"},
            {"domain without a dot", "k|k|a|a|srv|example.lan|on", "example.lan|srvexample.lan"},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << row[1] << row[2];
    }

    // slotOrder() pins the check's slot to index 4, where callers reach it.
    void typed()
    {
        QFETCH(QString, keys);
        OrnServerWidget widget(m_module, nullptr);
        auto *group = widget.findChild<QGroupBox *>("_networkGroupBox");
        group->setChecked(true);
        int i = 0;
        for (const char *name : {"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit",
                                 "_adminPasswordLineEdit", "_repeatAdminPasswordLineEdit",
                                 "_hostnameLineEdit", "_domainNameLineEdit"})
            QTest::keyClicks(widget.findChild<QLineEdit *>(name), keys.split('|').at(i++));
        const QString state = formState(widget);
        group->setChecked(keys.endsWith("on"));
        QStringList messages;
        QVERIFY(QMetaObject::invokeMethod(&widget, "checkDataForCreateServer", Qt::DirectConnection,
                                          Q_RETURN_ARG(QStringList, messages)));
        QTEST((QStringList{state.section('|', 5, 5), state.section('|', 7)} + messages).join('|'),
              "expected");
    }

    void fill_data()
    {
        QTest::addColumn<QList<QVariantMap>>("reads");
        QTest::addColumn<QString>("expected");
        const QVariantMap full{{"ifServerOn", false},
                               {"orn-server-commonInstalled", true},
                               {"ipAddresses", QStringList{"10.0.0.5", "192.168.1.2"}},
                               {"currentIpAddress", "192.168.1.2"},
                               {"domainName", ".example.lan"},
                               {"hostname", "srv"}};
        const auto with = [&full](const QString &key, const QVariant &value) {
            QVariantMap record = full;
            record.insert(key, value);
            return record;
        };
        const auto row = [](const char *tag, const QList<QVariantMap> &reads,
                            const QString &shown) { QTest::newRow(tag) << reads << shown; };
        const QString head = "Create server|off|with|10.0.0.5,192.168.1.2";
        const QString names = "|.example.lan|srv|srv.example.lan", kept = "|1|.example.lan|srv|?";
        row("another element", {full, {{"", "other"}}}, head + kept);
        row("no record", {full, {{"", "none"}}}, head + kept);
        row("defaults", {{}}, "Re-create server|on|without||-1|||?");
        row("current absent", {with("currentIpAddress", "10.0.0.9")}, head + ",10.0.0.9|2" + names);
        row("blank at end", {with("currentIpAddress", "10.0.0.5 ")}, head + ",10.0.0.5 |2" + names);
        row("current empty", {with("currentIpAddress", "")}, head + "|-1" + names);
        row("shorter second read", {full, with("ipAddresses", "1.2.3.4")},
            "Create server|off|with|1.2.3.4,192.168.1.2" + kept);
        row("host name with its domain", {with("hostname", "srv.corp.lan")},
            head + "|1|.corp.lan (locked)|srv.corp.lan|srv.corp.lan");
        row("names already shown", {full, full}, head + kept);
    }

    // The records are read one after another; one marked "other" goes to another element, one
    // marked "none" stands for no record at all.
    void fill()
    {
        QFETCH(QList<QVariantMap>, reads);
        Element own(m_module, nullptr), other(m_module, nullptr);
        OrnServerWidget widget(m_module, nullptr);
        widget.setElement(&own, ElementWidgetRole::View);
        QSignalSpy modified(&widget, &ViewEditElementWidget::modifiedChanged);
        ElementData record;
        for (const QVariantMap &read : reads) {
            // Only a recomposition of the server name replaces this mark.
            widget.findChild<QLabel *>("_serverNameLabel")->setText("?");
            record.properties = read;
            widget.afterSuccessfulRead(read.value("") == "other" ? &other : &own,
                                       read.value("") == "none" ? nullptr : &record);
        }
        // Filling is no edit, and filled while unchecked, the domain stays locked until checked.
        QCOMPARE(modified.count(), 0);
        QVERIFY(!widget.findChild<QWidget *>("_domainNameLineEdit")->isEnabled());
        widget.findChild<QGroupBox *>("_networkGroupBox")->setChecked(true);
        QTEST(formState(widget), "expected");
        // Once filled, edits count again.
        QVERIFY(widget.isModified());
    }

    void textsShowWhole_data()
    {
        QTest::addColumn<bool>("russian");
        QTest::addColumn<bool>("console"); // else the initialisation window
        for (const bool console : {true, false}) {
            QTest::addRow("English %s", console ? "console" : "initialisation") << false << console;
            QTest::addRow("Russian %s", console ? "console" : "initialisation") << true << console;
        }
    }

    // The console at its default size with the form filled by each kind of record, and the
    // initialisation window. The form's boxes are Qt's own, which size themselves to their texts.
    void textsShowWhole()
    {
        QFETCH(bool, russian);
        QFETCH(bool, console);
        // Qt's and the console's catalogues as the console loads them, and the plug-in's own.
        const QLocale russianLocale(QLocale::Russian);
        const QString built = PYX_TEST_BINARY_DIR "/translations";
        QTranslator qt, consoleTexts;
        if (russian) {
            QVERIFY(qt.load(russianLocale, "qtbase", "_",
                            QLibraryInfo::location(QLibraryInfo::TranslationsPath)));
            QVERIFY(consoleTexts.load(russianLocale, "pyx-console", "_", built));
            QVERIFY(QCoreApplication::installTranslator(&qt) &&
                    QCoreApplication::installTranslator(&consoleTexts));
        }
        const QScopedPointer<QTranslator> own(
            russian ? installPluginTranslator(russianLocale, built) : nullptr);
        QCOMPARE(own != nullptr, russian);

        int checked = 0;
        QStringList cut;
        if (!console) {
            InitServerDialog dialog(QMap<QString, QVariant>{});
            dialog.show();
            cut = cutTexts(&dialog, &checked);
            QVERIFY2(cut.isEmpty() && checked > 0, qPrintable(cut.join(" | ")));
            return;
        }
        NodeTreeModel model;
        OrnDomainModule domain(nullptr);
        OrnServiceModule server(nullptr);
        model.addModule(&domain);
        model.addModule(&server);
        ConsoleWindow window(&model);
        window.show();
        // Without a directory core the read ends at once and fills nothing.
        QSignalSpy settled(&window, &ConsoleWindow::currentElementSettled);
        QVERIFY(window.openType("OrnServer"));
        QVERIFY(settled.wait(10000));
        auto *form = static_cast<OrnServerWidget *>(
            window.currentElement()->elementWidget(ElementWidgetRole::Edit));
        ElementData record;
        for (const bool on : {true, false}) {
            record.properties = {{ServerProperties::ifServerOn, on},
                                 {ServerProperties::ornServerCommonInstalled, !on}};
            form->afterSuccessfulRead(window.currentElement(), &record);
            // The layouts take the new texts at once; the window grows through the platform.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            QTRY_VERIFY(form->width() >= form->minimumSizeHint().width());
            cut += cutTexts(&window, &checked);
        }
        QVERIFY2(cut.isEmpty() && checked > 0, qPrintable(cut.join(" | ")));
    }
};

QTEST_MAIN(TestOrnServerWidget)
#include "tst_ornserverwidget.moc"
