// The stand-in console: elements, forms, the read that reaches a form, and the navigation tree.
// Change tracking under the edit block is exercised by the server form's own tests.
#include "consolewindow.h"
#include "element.h"
#include "elementdata.h"
#include "module.h"
#include "nodetreemodel.h"
#include "orndomainelement.h"
#include "orndomainmodule.h"
#include "readpropertyheavytask.h"
#include "taskobserver.h"
#include "vieweditelementwidget.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

Q_DECLARE_METATYPE(TaskDescription::TaskStatus)

namespace {

// A plug-in's module: one element beneath the directory-domain element, whose read runs a task
// that ends with the status given, and a form that records what reaches it.
class ServerModule : public Module
{
public:
    explicit ServerModule(qint32 placement = 2,
                          TaskDescription::TaskStatus status = TaskDescription::Success)
        : Module("ServerModule", nullptr, false)
        , m_status(status)
    {
        parentTypeName = "OrnDomainModule";
        element->typeName = element->elementTypeName = element->title = "Server";
        element->parentTypeName = "OrnDomain";
        form->elementTypeName = "Server";
        element->placement = placement;
        elements << element;
        insertElementWidget(form);
        connectElementWidgets();
    }
    bool performOperation(ContextOperation *context, OperationType operation, ElementData *data,
                          int n) override
    {
        TaskObserver::instance(nullptr)->performTask(new Task(context->elementContext(), m_status));
        return Module::performOperation(context, operation, data, n);
    }

    struct ServerElement : Element
    {
        using Element::Element;
        bool performOperation(OperationType operation, ElementData *data, int n) override
        {
            return module->performOperation(this, operation, data, n);
        }
    };
    struct Form : ViewEditElementWidget
    {
        using ViewEditElementWidget::ViewEditElementWidget;
        void afterSuccessfulRead(Element *element, ElementData *data) override
        {
            reads << data;
            blockedDuringRead = editBlocked;
            ViewEditElementWidget::afterSuccessfulRead(element, data);
        }
        QList<ElementData *> reads;
        bool blockedDuringRead = false;
    };
    struct Task : ReadPropertyHeavyTask
    {
        Task(Element *element, TaskDescription::TaskStatus status)
            : ReadPropertyHeavyTask(element)
            , status(status)
        {
            elementData = new ElementData;
        }
        void run() override
        {
            description.setStatus(status);
            AbstractTask::run();
        }
        TaskDescription::TaskStatus status;
    };

    ServerElement *element = new ServerElement(*this, nullptr);
    Form *form = new Form(*this, nullptr, nullptr);

private:
    TaskDescription::TaskStatus m_status;
};

} // namespace

class TestFramework : public QObject
{
    Q_OBJECT

private slots:
    void treeIsConsistentAndPlacedByParentType();
    void openingAnElementReadsItIntoItsForm_data();
    void openingAnElementReadsItIntoItsForm();
};

void TestFramework::treeIsConsistentAndPlacedByParentType()
{
    NodeTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    OrnDomainModule domain(nullptr);
    ServerModule later(5);
    ServerModule earlier(1);
    model.addModule(&domain);
    model.addModule(&later);
    model.addModule(&earlier);
    model.addUnavailablePlugin("Broken", "cannot load");

    QCOMPARE(domain.domainElement()->childNodes(),
             (QList<TreeNode *>{earlier.element, later.element}));
    QCOMPARE(later.parentNode(), &domain);
    QCOMPARE(model.node(model.indexOfType("Server")), earlier.element);
    QVERIFY(!(model.flags(model.index(1, 0)) & Qt::ItemIsEnabled));

    // Without its parent type in the tree an element stays beneath its own module.
    NodeTreeModel alone;
    ServerModule orphan;
    alone.addModule(&orphan);
    QCOMPARE(orphan.element->parentNode(), &orphan);
}

void TestFramework::openingAnElementReadsItIntoItsForm_data()
{
    QTest::addColumn<TaskDescription::TaskStatus>("status");
    QTest::addColumn<bool>("delivered");
    QTest::newRow("success") << TaskDescription::Success << true;
    QTest::newRow("warning") << TaskDescription::Warning << true;
    QTest::newRow("error") << TaskDescription::Error << false;
}

void TestFramework::openingAnElementReadsItIntoItsForm()
{
    QFETCH(TaskDescription::TaskStatus, status);
    QFETCH(bool, delivered);
    NodeTreeModel model;
    ServerModule server(2, status);
    model.addModule(&server);
    ConsoleWindow window(&model);
    QSignalSpy settled(&window, &ConsoleWindow::currentElementSettled);
    server.form->blockEditWidget(true);

    QVERIFY(window.openType("Server"));
    QVERIFY(settled.wait());
    QCOMPARE(server.form->reads.size(), delivered ? 1 : 0);
    QCOMPARE(server.element->elementData() != nullptr, delivered);
    if (delivered)
        QVERIFY(server.form->blockedDuringRead && server.form->reads.first());
}

QTEST_MAIN(TestFramework)
#include "tst_framework.moc"
