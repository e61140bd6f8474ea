#pragma once

#include "elementwidget.h"

// An editor with read, update and import phases. It tracks whether the administrator changed
// anything since the last read; while the edit block is on, changes made by code are not counted.
class PYX_COMMON_EXPORT ViewEditElementWidget : public ElementWidget
{
    Q_OBJECT

public:
    ViewEditElementWidget(Module &module, Permission permission, QWidget *parent);
    ~ViewEditElementWidget() override;

    void setElement(Element *element, ElementWidgetRole role) override;
    virtual void beforeCreation();
    virtual ElementData *exportElementData() const;
    virtual void afterSuccessfulRead(Element *element, ElementData *data);
    virtual void afterSuccessfulImport(ElementData *data);
    virtual void afterSuccessfulUpdate();
    virtual void applyContentChanges();
    virtual void linkExternalElements();
    virtual void reset();
    virtual bool isContentValid() const;
    virtual void blockEditWidget(bool block);

    bool isModified() const { return m_modified; }

signals:
    void modifiedChanged(bool modified);

protected:
    bool editBlocked = false;

private:
    void trackChanges();
    void noteChange();
    void setModified(bool modified);

    bool m_modified = false;
    bool m_tracking = false;
};
