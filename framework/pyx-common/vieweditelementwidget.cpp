#include "vieweditelementwidget.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>

ViewEditElementWidget::ViewEditElementWidget(Module &module, Permission permission,
                                             QWidget *parent)
    : ElementWidget(module, permission, parent)
{
}

ViewEditElementWidget::~ViewEditElementWidget() = default;

void ViewEditElementWidget::setElement(Element *element, ElementWidgetRole role)
{
    ElementWidget::setElement(element, role);
    trackChanges();
    setModified(false);
}

void ViewEditElementWidget::beforeCreation()
{
}

ElementData *ViewEditElementWidget::exportElementData() const
{
    return nullptr;
}

void ViewEditElementWidget::afterSuccessfulRead(Element *, ElementData *)
{
    setModified(false);
    blockEditWidget(false);
}

void ViewEditElementWidget::afterSuccessfulImport(ElementData *)
{
}

void ViewEditElementWidget::afterSuccessfulUpdate()
{
    setModified(false);
}

void ViewEditElementWidget::applyContentChanges()
{
}

void ViewEditElementWidget::linkExternalElements()
{
}

void ViewEditElementWidget::reset()
{
    setModified(false);
}

bool ViewEditElementWidget::isContentValid() const
{
    return true;
}

void ViewEditElementWidget::blockEditWidget(bool block)
{
    editBlocked = block;
}

// The form's controls are known only once the subclass has built them, so tracking starts when
// the console first hands the editor an element.
void ViewEditElementWidget::trackChanges()
{
    if (m_tracking)
        return;
    m_tracking = true;
    for (QLineEdit *edit : findChildren<QLineEdit *>())
        connect(edit, &QLineEdit::textChanged, this, &ViewEditElementWidget::noteChange);
    for (QPlainTextEdit *edit : findChildren<QPlainTextEdit *>())
        connect(edit, &QPlainTextEdit::textChanged, this, &ViewEditElementWidget::noteChange);
    for (QComboBox *box : findChildren<QComboBox *>())
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &ViewEditElementWidget::noteChange);
    for (QGroupBox *group : findChildren<QGroupBox *>())
        connect(group, &QGroupBox::toggled, this, &ViewEditElementWidget::noteChange);
    for (QAbstractButton *button : findChildren<QAbstractButton *>()) {
        if (button->isCheckable())
            connect(button, &QAbstractButton::toggled, this, &ViewEditElementWidget::noteChange);
    }
}

void ViewEditElementWidget::noteChange()
{
    if (!editBlocked)
        setModified(true);
}

void ViewEditElementWidget::setModified(bool modified)
{
    if (m_modified == modified)
        return;
    m_modified = modified;
    emit modifiedChanged(modified);
}
