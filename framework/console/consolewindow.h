#pragma once

#include "taskdescription.h"

#include <QMainWindow>

class Element;
class NodeTreeModel;
class QLabel;
class QStackedWidget;
class QTreeView;

// Navigation tree on the left, the selected element's editor on the right, task outcomes in the
// status bar.
class ConsoleWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ConsoleWindow(NodeTreeModel *model, QWidget *parent = nullptr);
    ~ConsoleWindow() override;

    // Selects the first node of the type; false when there is none.
    bool openType(const QString &typeName);
    Element *currentElement() const { return m_current; }

signals:
    // The selected element was read, or there was nothing to read.
    void currentElementSettled();

private:
    void showNode(const QModelIndex &index);
    void taskStarted(const TaskDescription &description);
    void taskFinished(const TaskDescription &description, bool completed);
    void settleWhenIdle();

    NodeTreeModel *m_model;
    QTreeView *m_tree;
    QStackedWidget *m_editors;
    QLabel *m_placeholder;
    Element *m_current = nullptr;
};
