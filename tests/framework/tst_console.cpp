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

namespace {

class ReadTask : public ReadPropertyHeavyTask
{
public:
    explicit ReadTask(Element *element) : ReadPropertyHeavyTask(element)
    {
        elementData = new ElementData;
    }
    void run() override
    {
        elementData->properties.insert(QStringLiteral("answer"), 42);
        description.setStatus(TaskDescription::Success);
        AbstractTask::run();
    }
};

// A plug-in's module: its element hangs beneath the directory-domain element.
class ServerModule : public Module
{
public:
    explicit ServerModule(qint32 elementPlacement = 2)
        : Module(QStringLiteral("ServerModule"), nullptr, false)
    {
        parentTypeName = QStringLiteral("OrnDomainModule");
        element = new ServerElement(*this, elementPlacement);
        elements << element;
        form = new Form(*this);
        insertElementWidget(form);
        connectElementWidgets();
    }
    bool performOperation(ContextOperation *context, OperationType operation, ElementData *data,
                          int n) override
    {
        Module::performOperation(context, operation, data, n);
        if (operation == OperationType::Read)
            TaskObserver::instance(nullptr)->performTask(new ReadTask(context->elementContext()));
        return true;
    }

    class ServerElement : public Element
    {
    public:
        ServerElement(Module &module, qint32 order) : Element(module, nullptr)
        {
            typeName = elementTypeName = QStringLiteral("Server");
            parentTypeName = QStringLiteral("OrnDomain");
            placement = order;
            title = QStringLiteral("Server");
        }
        bool performOperation(OperationType operation, ElementData *data, int n) override
        {
            return module->performOperation(this, operation, data, n);
        }
    };

    class Form : public ViewEditElementWidget
    {
    public:
        explicit Form(Module &module) : ViewEditElementWidget(module, nullptr, nullptr)
        {
            elementTypeName = QStringLiteral("Server");
        }
        void afterSuccessfulRead(Element *element, ElementData *data) override
        {
            answer = data->properties.value(QStringLiteral("answer")).toInt();
            ViewEditElementWidget::afterSuccessfulRead(element, data);
        }
        int answer = 0;
    };

    Element *element;
    Form *form;
};

} // namespace

class TestConsole : public QObject
{
    Q_OBJECT

private slots:
    void modelIsConsistent();
    void nodesArePlacedByParentType();
    void openingAnElementReadsItIntoItsForm();
};

void TestConsole::modelIsConsistent()
{
    NodeTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    OrnDomainModule domain(nullptr);
    ServerModule server;
    model.addModule(&domain);
    model.addModule(&server);
    model.addUnavailablePlugin(QStringLiteral("Broken"), QStringLiteral("cannot load"));
    QCOMPARE(model.rowCount(), 2);
}

void TestConsole::nodesArePlacedByParentType()
{
    NodeTreeModel model;
    OrnDomainModule domain(nullptr);
    ServerModule server;
    model.addModule(&domain);
    model.addModule(&server);

    QCOMPARE(server.element->parentNode(), domain.domainElement());
    QCOMPARE(server.parentNode(), &domain);
    const QModelIndex serverIndex = model.indexOfType(QStringLiteral("Server"));
    QCOMPARE(model.node(serverIndex), server.element);
    QCOMPARE(model.node(serverIndex.parent()), domain.domainElement());
    QCOMPARE(model.data(serverIndex, Qt::DisplayRole).toString(), QStringLiteral("Server"));

    // Siblings follow their placement, whatever the order they came in.
    ServerModule earlier(1);
    model.addModule(&earlier);
    QCOMPARE(domain.domainElement()->childNodes(),
             (QList<TreeNode *>{earlier.element, server.element}));

    // Without its parent type in the tree an element stays beneath its own module.
    NodeTreeModel alone;
    ServerModule orphan;
    alone.addModule(&orphan);
    QCOMPARE(orphan.element->parentNode(), &orphan);
}

void TestConsole::openingAnElementReadsItIntoItsForm()
{
    NodeTreeModel model;
    OrnDomainModule domain(nullptr);
    ServerModule server;
    model.addModule(&domain);
    model.addModule(&server);
    ConsoleWindow window(&model);
    QSignalSpy settled(&window, &ConsoleWindow::currentElementSettled);

    QVERIFY(!window.openType(QStringLiteral("Nothing")));
    QVERIFY(window.openType(QStringLiteral("Server")));
    QCOMPARE(window.currentElement(), server.element);
    QCOMPARE(server.form->element(), server.element);
    QVERIFY(settled.wait());
    QCOMPARE(server.form->answer, 42);
    QCOMPARE(server.element->elementData()->properties.value(QStringLiteral("answer")).toInt(),
             42);
}

QTEST_MAIN(TestConsole)
#include "tst_console.moc"
