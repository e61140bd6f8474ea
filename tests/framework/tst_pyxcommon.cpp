#include "element.h"
#include "elementdata.h"
#include "module.h"
#include "readpropertyheavytask.h"
#include "taskobserver.h"
#include "vieweditelementwidget.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

Q_DECLARE_METATYPE(TaskDescription::TaskStatus)

namespace {

class RecordingElement : public Element
{
public:
    RecordingElement(Module &module, const QString &type) : Element(module, nullptr)
    {
        typeName = type;
        elementTypeName = type;
    }
    bool performOperation(OperationType operation, ElementData *data, int n) override
    {
        operations << operation;
        return Element::performOperation(operation, data, n);
    }
    QList<OperationType> operations;
};

class RecordingForm : public ViewEditElementWidget
{
public:
    RecordingForm(Module &module, const QString &type)
        : ViewEditElementWidget(module, nullptr, nullptr), edit(new QLineEdit)
    {
        elementTypeName = type;
        (new QVBoxLayout(this))->addWidget(edit);
    }
    void afterSuccessfulRead(Element *element, ElementData *data) override
    {
        reads << qMakePair(element, data);
        blockedDuringRead = editBlocked;
        ViewEditElementWidget::afterSuccessfulRead(element, data);
    }
    bool isBlocked() const { return editBlocked; }

    QLineEdit *edit;
    QList<QPair<Element *, ElementData *>> reads;
    bool blockedDuringRead = false;
};

class StatusTask : public ReadPropertyHeavyTask
{
public:
    StatusTask(Element *element, TaskDescription::TaskStatus status)
        : ReadPropertyHeavyTask(element), m_status(status)
    {
        elementData = new ElementData;
        elementData->properties.insert(QStringLiteral("key"), 42);
    }
    void run() override
    {
        description.setStatus(m_status);
        AbstractTask::run();
    }

private:
    TaskDescription::TaskStatus m_status;
};

} // namespace

class TestPyxCommon : public QObject
{
    Q_OBJECT

private slots:
    void widgetsGoToElementsOfTheirType();
    void readAsksTheElement();
    void recordReachesElementAndForm_data();
    void recordReachesElementAndForm();
    void editBlockSuppressesChangeTrackingOnly();
    void treeLinksSurviveDestruction();
};

void TestPyxCommon::widgetsGoToElementsOfTheirType()
{
    Module module(QStringLiteral("M"), nullptr, false);
    auto *a = new RecordingElement(module, QStringLiteral("A"));
    auto *b = new RecordingElement(module, QStringLiteral("B"));
    auto *c = new RecordingElement(module, QStringLiteral("C"));
    module.elements << a << b << c;
    auto *formB = new RecordingForm(module, QStringLiteral("B"));
    auto *formA = new RecordingForm(module, QStringLiteral("A"));
    module.insertElementWidget(formB);
    module.insertElementWidget(formA);
    module.connectElementWidgets();

    QCOMPARE(a->elementWidget(ElementWidgetRole::Edit), formA);
    QCOMPARE(b->elementWidget(ElementWidgetRole::Edit), formB);
    QCOMPARE(c->elementWidget(ElementWidgetRole::Edit), nullptr);
    QCOMPARE(formA->elementWidgetContext(), formA);
    QCOMPARE(formA->elementContext(), nullptr);

    delete formA;
    QCOMPARE(module.elementWidgets(), QList<ElementWidget *>{formB});
}

void TestPyxCommon::readAsksTheElement()
{
    Module module(QStringLiteral("M"), nullptr, false);
    auto *element = new RecordingElement(module, QStringLiteral("A"));
    auto *form = new RecordingForm(module, QStringLiteral("A"));
    module.insertElementWidget(form);
    form->read();
    QVERIFY(element->operations.isEmpty());

    form->setElement(element, ElementWidgetRole::Edit);
    QCOMPARE(form->element(), element);
    form->read();
    QCOMPARE(element->operations, QList<OperationType>{OperationType::Read});
}

void TestPyxCommon::recordReachesElementAndForm_data()
{
    QTest::addColumn<TaskDescription::TaskStatus>("status");
    QTest::addColumn<bool>("delivered");
    QTest::newRow("success") << TaskDescription::Success << true;
    QTest::newRow("warning") << TaskDescription::Warning << true;
    QTest::newRow("error") << TaskDescription::Error << false;
}

void TestPyxCommon::recordReachesElementAndForm()
{
    QFETCH(TaskDescription::TaskStatus, status);
    QFETCH(bool, delivered);

    Module module(QStringLiteral("M"), nullptr, false);
    auto *element = new RecordingElement(module, QStringLiteral("A"));
    module.elements << element;
    auto *form = new RecordingForm(module, QStringLiteral("A"));
    module.insertElementWidget(form);
    module.connectElementWidgets();
    form->setElement(element, ElementWidgetRole::Edit);
    form->blockEditWidget(true);

    QSignalSpy finished(TaskObserver::instance(nullptr), &TaskObserver::taskFinished);
    TaskObserver::instance(nullptr)->performTask(new StatusTask(element, status));
    QVERIFY(finished.wait());

    QCOMPARE(form->reads.size(), delivered ? 1 : 0);
    QCOMPARE(element->elementData() != nullptr, delivered);
    if (delivered) {
        QCOMPARE(form->reads.first().first, element);
        QCOMPARE(form->reads.first().second, element->elementData());
        QCOMPARE(element->elementData()->properties.value(QStringLiteral("key")).toInt(), 42);
        QVERIFY(form->blockedDuringRead);
        QVERIFY(!form->isBlocked());
    }
}

void TestPyxCommon::editBlockSuppressesChangeTrackingOnly()
{
    Module module(QStringLiteral("M"), nullptr, false);
    auto *element = new RecordingElement(module, QStringLiteral("A"));
    auto *form = new RecordingForm(module, QStringLiteral("A"));
    module.insertElementWidget(form);
    form->setElement(element, ElementWidgetRole::Edit);
    form->show();
    QSignalSpy modified(form, &ViewEditElementWidget::modifiedChanged);

    form->blockEditWidget(true);
    form->edit->setText(QStringLiteral("filled by code"));
    QVERIFY(!form->isModified());
    QVERIFY(form->edit->isEnabled());
    QTest::keyClicks(form->edit, QStringLiteral("x"));
    QCOMPARE(form->edit->text(), QStringLiteral("filled by codex"));
    QVERIFY(!form->isModified());

    form->afterSuccessfulRead(element, nullptr);
    QVERIFY(!form->isBlocked());
    QTest::keyClicks(form->edit, QStringLiteral("y"));
    QVERIFY(form->isModified());
    QCOMPARE(modified.count(), 1);

    form->afterSuccessfulRead(element, nullptr);
    QVERIFY(!form->isModified());
    QCOMPARE(modified.count(), 2);
}

void TestPyxCommon::treeLinksSurviveDestruction()
{
    TreeNode root;
    auto *first = new TreeNode;
    auto *second = new TreeNode;
    auto *grandchild = new TreeNode;
    root.insert(0, {second});
    root.insert(0, {first});
    second->insert(5, {grandchild});
    QCOMPARE(root.childNodes(), (QList<TreeNode *>{first, second}));
    QCOMPARE(second->row(), 1);
    QCOMPARE(grandchild->parentNode(), second);

    delete first;
    QCOMPARE(root.childNodes(), QList<TreeNode *>{second});
    delete second;
    QCOMPARE(grandchild->parentNode(), nullptr);
    QVERIFY(root.childNodes().isEmpty());
    delete grandchild;
}

QTEST_MAIN(TestPyxCommon)
#include "tst_pyxcommon.moc"
