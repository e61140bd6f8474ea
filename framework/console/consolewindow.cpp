#include "consolewindow.h"

#include "element.h"
#include "elementwidget.h"
#include "nodetreemodel.h"
#include "taskobserver.h"
#include "vieweditelementwidget.h"

#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QTreeView>

ConsoleWindow::ConsoleWindow(NodeTreeModel *model, QWidget *parent)
    : QMainWindow(parent)
    , m_model(model)
    , m_tree(new QTreeView)
    , m_editors(new QStackedWidget)
    , m_placeholder(new QLabel)
{
    setWindowTitle(tr("System management console[*]"));
    resize(1100, 700);

    m_tree->setModel(model);
    m_tree->header()->hide();
    m_tree->expandAll();
    // Every title shows whole: a wide editor widens the window rather than narrowing the tree.
    const QAbstractItemView *view = m_tree;
    m_tree->setMinimumWidth(view->sizeHintForColumn(0) + 2 * m_tree->frameWidth());
    m_placeholder->setAlignment(Qt::AlignCenter);
    m_placeholder->setWordWrap(true);
    m_placeholder->setText(tr("Select an element on the left."));
    m_editors->addWidget(m_placeholder);

    auto *splitter = new QSplitter;
    splitter->addWidget(m_tree);
    splitter->addWidget(m_editors);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({300, 800});
    setCentralWidget(splitter);
    statusBar()->showMessage(tr("Ready"));

    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ConsoleWindow::showNode);
    TaskObserver *runner = TaskObserver::instance(nullptr);
    connect(runner, &TaskObserver::taskStarted, this, &ConsoleWindow::taskStarted);
    connect(runner, &TaskObserver::taskFinished, this, &ConsoleWindow::taskFinished);
}

// The editors belong to their modules, which may outlive this window.
ConsoleWindow::~ConsoleWindow()
{
    while (m_editors->count() > 1) {
        QWidget *editor = m_editors->widget(1);
        m_editors->removeWidget(editor);
        editor->hide();
        editor->setParent(nullptr);
    }
}

bool ConsoleWindow::openType(const QString &typeName)
{
    const QModelIndex index = m_model->indexOfType(typeName);
    if (!index.isValid())
        return false;
    m_tree->setCurrentIndex(index);
    return true;
}

void ConsoleWindow::showNode(const QModelIndex &index)
{
    m_current = qobject_cast<Element *>(m_model->node(index));
    setWindowModified(false);
    const QString reason = m_model->disabledReason(m_model->node(index));
    ElementWidget *editor = m_current && reason.isEmpty()
                                ? m_current->elementWidget(ElementWidgetRole::Edit)
                                : nullptr;
    if (!editor) {
        m_placeholder->setText(reason.isEmpty() ? m_model->data(index, Qt::DisplayRole).toString()
                                                : reason);
        m_editors->setCurrentWidget(m_placeholder);
        settleWhenIdle();
        return;
    }
    if (m_editors->indexOf(editor) < 0) {
        m_editors->addWidget(editor);
        if (auto *form = qobject_cast<ViewEditElementWidget *>(editor))
            connect(form, &ViewEditElementWidget::modifiedChanged, this,
                    &QWidget::setWindowModified);
    }
    m_editors->setCurrentWidget(editor);
    editor->setElement(m_current, ElementWidgetRole::Edit);
    editor->read();
    settleWhenIdle();
}

void ConsoleWindow::taskStarted(const TaskDescription &description)
{
    statusBar()->showMessage(description.description());
}

void ConsoleWindow::taskFinished(const TaskDescription &description, bool completed)
{
    QString text;
    if (!completed)
        text = tr("%1: did not complete").arg(description.description());
    else if (description.status() == TaskDescription::Error)
        text = tr("%1: failed: %2").arg(description.description(), description.message());
    else if (description.status() == TaskDescription::Warning)
        text = tr("%1: warning: %2").arg(description.description(), description.message());
    else
        text = tr("%1: done").arg(description.description());
    statusBar()->showMessage(text.simplified());
    settleWhenIdle();
}

// Let the last record reach the form and the form repaint before anyone looks at it.
void ConsoleWindow::settleWhenIdle()
{
    if (TaskObserver::instance(nullptr)->activeTaskCount() > 0)
        return;
    QTimer::singleShot(0, this, &ConsoleWindow::currentElementSettled);
}
