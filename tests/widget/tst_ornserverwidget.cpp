#include "ornserverwidget.h"
#include "ui_ornserverwidget.h"

#include "element.h"
#include "elementdata.h"
#include "module.h"

#include <QTranslator>
#include <QtTest>

namespace {

// Member, class, parent, place; in the order of declaration and of creation.
const char *const formTable[] = {
    "verticalLayout QVBoxLayout OrnServerWidget layout of OrnServerWidget",
    "gridLayout_2 QGridLayout verticalLayout verticalLayout 1",
    "_adminPasswordLineEdit QLineEdit OrnServerWidget gridLayout_2 4,1 1x1",
    "label QLabel OrnServerWidget gridLayout_2 2,0 1x1",
    "_repeatKerberosPasswordLineEdit QLineEdit OrnServerWidget gridLayout_2 3,1 1x1",
    "_kerberosPasswordLineEdit QLineEdit OrnServerWidget gridLayout_2 2,1 1x1",
    "label_2 QLabel OrnServerWidget gridLayout_2 4,0 1x1",
    "_repeatAdminPasswordLineEdit QLineEdit OrnServerWidget gridLayout_2 5,1 1x1",
    "label_9 QLabel OrnServerWidget gridLayout_2 3,0 1x1",
    "label_10 QLabel OrnServerWidget gridLayout_2 5,0 1x1",
    "label_7 QLabel OrnServerWidget gridLayout_2 0,0 1x1",
    "_statusLabel QLabel OrnServerWidget gridLayout_2 0,1 1x1",
    "line QFrame OrnServerWidget gridLayout_2 1,0 1x2",
    "_networkGroupBox QGroupBox OrnServerWidget verticalLayout 2",
    "formLayout QFormLayout _networkGroupBox layout of _networkGroupBox",
    "label_3 QLabel _networkGroupBox formLayout 0 label",
    "_ipComboBox QComboBox _networkGroupBox formLayout 0 field",
    "label_4 QLabel _networkGroupBox formLayout 1 label",
    "_hostnameLineEdit QLineEdit _networkGroupBox formLayout 1 field",
    "label_5 QLabel _networkGroupBox formLayout 2 label",
    "_domainNameLineEdit QLineEdit _networkGroupBox formLayout 2 field",
    "label_6 QLabel _networkGroupBox formLayout 3 label",
    "_serverNameLabel QLabel _networkGroupBox formLayout 3 field",
    "horizontalLayout QHBoxLayout verticalLayout verticalLayout 3",
    "_expertModePushButton QPushButton OrnServerWidget horizontalLayout 1",
    "_networkSettingPushButton QPushButton OrnServerWidget horizontalLayout 2",
    "_editOrnConfPushButton QPushButton OrnServerWidget horizontalLayout 3",
    "horizontalSpacer QSpacerItem - horizontalLayout 4",
    "_initServerPushButton QPushButton OrnServerWidget horizontalLayout 5",
    "verticalSpacer QSpacerItem - verticalLayout 4",
    "label_11 QLabel OrnServerWidget verticalLayout 5",
    "label_8 QLabel OrnServerWidget verticalLayout 6",
    "_macWarningLabel QLabel OrnServerWidget verticalLayout 7",
};

QString field(const QString &row, int first, int last = -1)
{
    return row.section(' ', first, last);
}

// Describes a layout item's place as the table above spells it.
QString placeOf(const QWidget &host, QObject *object, QLayoutItem *spacer)
{
    auto *layout = qobject_cast<QLayout *>(object);
    if (layout && layout->parentWidget()->layout() == layout)
        return "layout of " + layout->parentWidget()->objectName();
    auto *widget = qobject_cast<QWidget *>(object);
    for (QLayout *owner : host.findChildren<QLayout *>()) {
        const int index =
            widget ? owner->indexOf(widget) : owner->indexOf(layout ? layout : spacer);
        int row = 0, column = 0, rows = 0, columns = 0;
        QFormLayout::ItemRole role = QFormLayout::SpanningRole;
        if (index < 0)
            continue;
        if (auto *grid = qobject_cast<QGridLayout *>(owner)) {
            grid->getItemPosition(index, &row, &column, &rows, &columns);
            return owner->objectName() +
                   QString::asprintf(" %d,%d %dx%d", row, column, rows, columns);
        }
        if (auto *form = qobject_cast<QFormLayout *>(owner)) {
            form->getItemPosition(index, &row, &role);
            return owner->objectName() + QString::asprintf(" %d %s", row, role ? "field" : "label");
        }
        return owner->objectName() + ' ' + QString::number(index + 1);
    }
    return QStringLiteral("nowhere");
}

// Marks every text with the context that translated it, so an untranslated text stands out.
class MarkingTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *disambiguation,
                      int) const override
    {
        QString text = QString::fromUtf8(context) + '|' + QString::fromUtf8(source);
        if (disambiguation)
            text += '|' + QString::fromUtf8(disambiguation);
        return text;
    }
    bool isEmpty() const override { return false; }
};

// The receiver count is protected; a pointer to the inherited member reaches it on any object.
struct Receivers : QObject
{
    static int of(const QObject *object, const QByteArray &signal)
    {
        return (object->*(&Receivers::receivers))(signal.constData());
    }
};

class ProbeWidget : public OrnServerWidget
{
public:
    using OrnServerWidget::OrnServerWidget;
    void blockEditWidget(bool block) override
    {
        blockCalls << block;
        OrnServerWidget::blockEditWidget(block);
    }
    QList<bool> blockCalls;
};

template <typename T = QWidget> T *child(const QObject &parent, const QString &name)
{
    T *found = parent.findChild<T *>(name);
    if (!found)
        qFatal("no child %s", qPrintable(name));
    return found;
}

QStringList checkThroughIndex(OrnServerWidget &widget)
{
    QStringList messages;
    void *arguments[] = {&messages};
    QMetaObject::metacall(&widget, QMetaObject::InvokeMetaMethod,
                          OrnServerWidget::staticMetaObject.methodOffset() + 4, arguments);
    return messages;
}

QStringList checkThroughName(OrnServerWidget &widget)
{
    QStringList messages;
    if (!QMetaObject::invokeMethod(&widget, "checkDataForCreateServer", Qt::DirectConnection,
                                   Q_RETURN_ARG(QStringList, messages)))
        messages << QStringLiteral("(not invoked)");
    return messages;
}

} // namespace

class TestOrnServerWidget : public QObject
{
    Q_OBJECT

private slots:
    void form_data();
    void form();
    void creationOrder();
    void presetObjectName_data();
    void presetObjectName();
    void properties();
    void tabChain();
    void texts_data();
    void texts();

    void initialState();
    void slotsInMetaObject();
    void connections();
    void checkData_data();
    void checkData();
    void checkMessagesAreBuiltFromFragments();
    void afterSuccessfulReadGuard_data();
    void afterSuccessfulReadGuard();

private:
    Module m_module{QStringLiteral("M"), nullptr, false};
};

void TestOrnServerWidget::form_data()
{
    QTest::addColumn<QString>("row");
    for (const char *row : formTable)
        QTest::newRow(qPrintable(field(row, 0, 0))) << QString::fromLatin1(row);
}

void TestOrnServerWidget::form()
{
    QFETCH(QString, row);
    QWidget host;
    Ui::OrnServerWidget ui;
    ui.setupUi(&host);

    const QString name = field(row, 0, 0);
    QLayoutItem *spacer = name == "horizontalSpacer" ? ui.horizontalSpacer
                          : name == "verticalSpacer" ? ui.verticalSpacer
                                                     : nullptr;
    QObject *object = spacer ? nullptr : child<QObject>(host, name);
    if (object) {
        QCOMPARE(QString::fromLatin1(object->metaObject()->className()), field(row, 1, 1));
        QCOMPARE(object->parent()->objectName(), field(row, 2, 2));
    }
    QCOMPARE(placeOf(host, object, spacer), field(row, 3));
}

void TestOrnServerWidget::creationOrder()
{
    QWidget host;
    Ui::OrnServerWidget ui;
    ui.setupUi(&host);
    for (QObject *parent : QObjectList{&host, ui.verticalLayout, ui._networkGroupBox}) {
        QStringList expected, created;
        for (const char *row : formTable) {
            if (field(row, 2, 2) == parent->objectName())
                expected << field(row, 0, 0);
        }
        for (const QObject *object : parent->children())
            created << object->objectName();
        QCOMPARE(created, expected);
    }
}

void TestOrnServerWidget::presetObjectName_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("none") << QString() << "OrnServerWidget";
    QTest::newRow("given") << "Preset"
                           << "Preset";
}

void TestOrnServerWidget::presetObjectName()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QWidget host;
    host.setObjectName(before);
    Ui::OrnServerWidget().setupUi(&host);
    QCOMPARE(host.objectName(), after);
}

void TestOrnServerWidget::properties()
{
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    QCOMPARE(widget.objectName(), "OrnServerWidget");
    QCOMPARE(widget.size(), QSize(611, 492));

    for (const char *name : {"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit",
                             "_adminPasswordLineEdit", "_repeatAdminPasswordLineEdit"})
        QCOMPARE(child<QLineEdit>(widget, name)->echoMode(), QLineEdit::Password);
    QCOMPARE(child<QLineEdit>(widget, "_hostnameLineEdit")->echoMode(), QLineEdit::Normal);
    auto *kerberos = child<QLineEdit>(widget, "_kerberosPasswordLineEdit");
    QCOMPARE(kerberos->inputMethodHints(), Qt::ImhHiddenText | Qt::ImhSensitiveData |
                                               Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    QVERIFY(kerberos->hasFrame() && !kerberos->dragEnabled() && !kerberos->isClearButtonEnabled());

    const QSizePolicy::Policy P = QSizePolicy::Preferred, M = QSizePolicy::Minimum;
    const std::pair<const char *, QSizePolicy> policies[] = {
        {"label_7", QSizePolicy(P, P)},
        {"_statusLabel", QSizePolicy(QSizePolicy::Maximum, P)},
        {"_ipComboBox", QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed)}};
    for (const auto &policy : policies)
        QCOMPARE(child(widget, policy.first)->sizePolicy(), policy.second);

    auto *line = child<QFrame>(widget, "line");
    QCOMPARE(line->frameShape(), QFrame::HLine);
    QCOMPARE(line->frameShadow(), QFrame::Sunken);

    QSpacerItem *across = child<QLayout>(widget, "horizontalLayout")->itemAt(3)->spacerItem();
    QSpacerItem *down = widget.layout()->itemAt(3)->spacerItem();
    QVERIFY(across && down);
    QCOMPARE(across->sizeHint(), QSize(40, 20));
    QCOMPARE(across->sizePolicy(), QSizePolicy(QSizePolicy::Expanding, M));
    QCOMPARE(down->sizeHint(), QSize(20, 40));
    QCOMPARE(down->sizePolicy(), QSizePolicy(M, QSizePolicy::Expanding));
}

void TestOrnServerWidget::tabChain()
{
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    const QStringList expected =
        QStringLiteral(
            "_kerberosPasswordLineEdit _repeatKerberosPasswordLineEdit _adminPasswordLineEdit "
            "_repeatAdminPasswordLineEdit _networkGroupBox _ipComboBox _hostnameLineEdit "
            "_domainNameLineEdit _expertModePushButton _networkSettingPushButton "
            "_editOrnConfPushButton _initServerPushButton")
            .split(' ');

    // Tab moves along the focus chain to the next widget that takes focus by Tab.
    QStringList visited;
    QWidget *const start = child(widget, expected.first());
    QWidget *current = start;
    do {
        if (current->focusPolicy() & Qt::TabFocus)
            visited << current->objectName();
        current = current->nextInFocusChain();
    } while (current != start);
    QCOMPARE(visited, expected);
}

void TestOrnServerWidget::texts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("source");
    const char *const rows[][2] = {
        {"", "ORN server creation"},
        {"label", "Kerberos database password"},
        {"label_2", "ORN admin password"},
        {"label_9", "Repeat Kerberos password"},
        {"label_10", "Repeat ORN admin password"},
        {"label_7", "Status"},
        {"_statusLabel", ""},
        {"_networkGroupBox", "Use custom network settings"},
        {"label_3", "IP address"},
        {"label_4", "Hostname"},
        {"label_5", "Domain name"},
        {"label_6", "Server name:"},
        {"_serverNameLabel", ""},
        {"_expertModePushButton", "Expert mode"},
        {"_networkSettingPushButton", "Network settings"},
        {"_editOrnConfPushButton", "Edit orn.conf"},
        {"_initServerPushButton", "Create server"},
        {"label_11", "ORN server will be created and runing on current work station."},
        {"label_8",
         "File /etc/hosts always should contain a server IP address, domain and hostname."},
        {"_macWarningLabel", ""},
    };
    for (const auto &row : rows)
        QTest::newRow(*row[0] ? row[0] : "window title") << row[0] << row[1];
}

void TestOrnServerWidget::texts()
{
    QFETCH(QString, name);
    QFETCH(QString, source);
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    QCoreApplication::removeTranslator(&translator);

    QString text = widget.windowTitle();
    if (!name.isEmpty()) {
        QWidget *target = child(widget, name);
        const QVariant title = target->property("title");
        text = title.isValid() ? title.toString() : target->property("text").toString();
    }
    QCOMPARE(text, source.isEmpty() ? QString() : "OrnServerWidget|" + source);
}

void TestOrnServerWidget::initialState()
{
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    QCOMPARE(widget.elementTypeName, "OrnServer");
    QCOMPARE(widget.parentElementType, "OrnDomain");
    QCOMPARE(widget.contextValue, 600);

    auto *group = child<QGroupBox>(widget, "_networkGroupBox");
    QVERIFY(group->isCheckable() && !group->isChecked());
    const QWidgetList inGroup =
        group->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(inGroup.size(), 8);
    for (const QWidget *control : inGroup)
        QVERIFY2(!control->isEnabled(), qPrintable(control->objectName()));
    QCOMPARE(child<QComboBox>(widget, "_ipComboBox")->count(), 0);
    auto *create = child<QPushButton>(widget, "_initServerPushButton");
    QVERIFY(create->isEnabled());
    QCOMPARE(create->text(), "Create server");

    // Only the group holds its controls back.
    group->setChecked(true);
    for (const QWidget *control : inGroup)
        QVERIFY2(control->isEnabled(), qPrintable(control->objectName()));
}

void TestOrnServerWidget::slotsInMetaObject()
{
    const QMetaObject &meta = OrnServerWidget::staticMetaObject;
    QCOMPARE(meta.superClass(), &ViewEditElementWidget::staticMetaObject);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    const QByteArrayList expected =
        QByteArrayLiteral("openExpertMode() openNetworkUtility() editOrnConf() createServer() "
                          "checkDataForCreateServer() hostnameLineEditTextChanged() "
                          "domainNameLineEditLineEditTextChanged() makeupFullDomainName()")
            .split(' ');
    QCOMPARE(meta.methodCount() - meta.methodOffset(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        QCOMPARE(method.methodSignature(), expected.at(i));
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Private);
        QCOMPARE(method.returnType(), i == 4 ? int(QMetaType::QStringList) : int(QMetaType::Void));
    }
}

void TestOrnServerWidget::connections()
{
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    QStringList connected;
    for (const char *row : formTable) {
        QObject *sender = widget.findChild<QObject *>(field(row, 0, 0));
        if (!sender)
            continue;
        // Qt itself watches the lifetime of some controls: QObject's own signals are not ours.
        const QMetaObject *meta = sender->metaObject();
        for (int i = QObject::staticMetaObject.methodCount(); i < meta->methodCount(); ++i) {
            const QMetaMethod signal = meta->method(i);
            if (signal.methodType() != QMetaMethod::Signal ||
                (signal.attributes() & QMetaMethod::Cloned))
                continue;
            const QByteArray code = '2' + signal.methodSignature();
            const int count = Receivers::of(sender, code);
            if (count == 0)
                continue;
            // Cutting the signal off from the widget must leave it unconnected.
            const bool toWidget = QObject::disconnect(sender, code.constData(), &widget, nullptr);
            connected << QStringLiteral("%1 %2 %3 %4")
                             .arg(sender->objectName(), QString::fromLatin1(signal.name()))
                             .arg(count)
                             .arg(int(toWidget && Receivers::of(sender, code) == 0));
        }
    }
    QCOMPARE(
        connected,
        QStringList({"_hostnameLineEdit textChanged 1 1", "_domainNameLineEdit textChanged 1 1",
                     "_expertModePushButton clicked 1 1", "_networkSettingPushButton clicked 1 1",
                     "_editOrnConfPushButton clicked 1 1", "_initServerPushButton clicked 1 1"}));
}

void TestOrnServerWidget::checkData_data()
{
    QTest::addColumn<QString>("fields");
    QTest::addColumn<bool>("custom");
    QTest::addColumn<QString>("expected");
    // Fields: Kerberos password, its repetition, admin password, its repetition, host name,
    // domain name. Messages are separated by '|'.
    const struct
    {
        const char *tag, *fields;
        bool custom;
        const char *expected;
    } rows[] = {
        {"all empty", "|||||", false, "Kerberos password is empty|ORN admin password is empty"},
        {"all empty, custom", "|||||", true,
         "Kerberos password is empty|ORN admin password is empty|Hostname is empty|"
         "Domain name is empty"},
        {"acceptable", "k1|k1|a1|a1||", false, ""},
        {"repetition missing", "k1||a1|a1||", false, "Kerberos password do not match"},
        {"empty and differing", "|k1|a1|a1||", false,
         "Kerberos password is empty|Kerberos password do not match"},
        {"admin repetition missing", "||a1|||", false,
         "Kerberos password is empty|ORN admin password do not match"},
        {"blanks are passwords", " | | | ||", false, ""},
        {"case matters", "k1|k1|A1|a1||", false, "ORN admin password do not match"},
        {"no trimming", "k1|k1 |a1|a1||", false, "Kerberos password do not match"},
        {"custom, names given", "k1|k1|a1|a1|srv|.lan", true, ""},
        {"custom, blank names", "k1|k1|a1|a1| | ", true, ""},
        {"custom, no domain", "k1|k1|a1|a1|srv|", true, "Domain name is empty"},
        {"everything wrong", "|x||y||", true,
         "Kerberos password is empty|Kerberos password do not match|ORN admin password is empty|"
         "ORN admin password do not match|Hostname is empty|Domain name is empty"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.tag) << row.fields << row.custom << row.expected;
}

void TestOrnServerWidget::checkData()
{
    QFETCH(QString, fields);
    QFETCH(bool, custom);
    QFETCH(QString, expected);
    const QStringList messages = expected.split('|', Qt::SkipEmptyParts);
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    const char *const names[] = {"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit",
                                 "_adminPasswordLineEdit",    "_repeatAdminPasswordLineEdit",
                                 "_hostnameLineEdit",         "_domainNameLineEdit"};
    for (int i = 0; i < 6; ++i)
        child<QLineEdit>(widget, names[i])->setText(fields.section('|', i, i));
    child<QGroupBox>(widget, "_networkGroupBox")->setChecked(custom);

    QCOMPARE(checkThroughIndex(widget), messages);
    QCOMPARE(checkThroughName(widget), messages);
}

void TestOrnServerWidget::checkMessagesAreBuiltFromFragments()
{
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    OrnServerWidget widget(m_module, &Module::isAdministratorHierarchy);
    child<QLineEdit>(widget, "_repeatKerberosPasswordLineEdit")->setText("x");
    child<QLineEdit>(widget, "_repeatAdminPasswordLineEdit")->setText("y");
    child<QGroupBox>(widget, "_networkGroupBox")->setChecked(true);
    const QStringList messages = checkThroughName(widget);
    QCoreApplication::removeTranslator(&translator);

    QCOMPARE(
        messages,
        QStringList({"OrnServerWidget|Kerberos OrnServerWidget|password is empty",
                     "OrnServerWidget|Kerberos OrnServerWidget|password do not match",
                     "OrnServerWidget|ORN admin OrnServerWidget|password is empty",
                     "OrnServerWidget|ORN admin OrnServerWidget|password do not match",
                     "OrnServerWidget|Hostname is empty", "OrnServerWidget|Domain name is empty"}));
}

void TestOrnServerWidget::afterSuccessfulReadGuard_data()
{
    QTest::addColumn<bool>("ownElement");
    QTest::addColumn<bool>("withRecord");
    QTest::addColumn<bool>("blockedBefore");
    QTest::addColumn<QList<bool>>("blockCalls");
    QTest::newRow("another element") << false << true << false << QList<bool>();
    QTest::newRow("no record") << true << false << false << QList<bool>();
    QTest::newRow("own element") << true << true << false << QList<bool>{true, false};
    QTest::newRow("own element, blocked") << true << true << true << QList<bool>{false};
}

void TestOrnServerWidget::afterSuccessfulReadGuard()
{
    QFETCH(bool, ownElement);
    QFETCH(bool, withRecord);
    QFETCH(bool, blockedBefore);
    QFETCH(QList<bool>, blockCalls);
    Element own(m_module, nullptr);
    Element other(m_module, nullptr);
    ElementData record;
    ProbeWidget widget(m_module, &Module::isAdministratorHierarchy);
    widget.setElement(&own, ElementWidgetRole::View);
    // The administrator's edit: only the base's part of a read takes it back.
    child<QLineEdit>(widget, "_kerberosPasswordLineEdit")->setText("k");
    QVERIFY(widget.isModified());
    if (blockedBefore)
        widget.blockEditWidget(true);
    widget.blockCalls.clear();

    widget.afterSuccessfulRead(ownElement ? &own : &other, withRecord ? &record : nullptr);
    QCOMPARE(widget.blockCalls, blockCalls);
    QCOMPARE(widget.isModified(), blockCalls.isEmpty());
}

QTEST_MAIN(TestOrnServerWidget)
#include "tst_ornserverwidget.moc"
