#pragma once

#include "abstracttask.h"

#include <QPointer>

class Element;
class ElementData;

// Reads an element's properties into elementData, which the subclass creates and never frees:
// afterRun() hands it to the element and its editor, or the task's destructor drops it.
class PYX_COMMON_EXPORT ReadPropertyHeavyTask : public AbstractTask
{
public:
    explicit ReadPropertyHeavyTask(Element *element);
    ~ReadPropertyHeavyTask() override;
    void afterRun() override;

    Element *element() const;

    ElementData *elementData = nullptr;

private:
    // The console may drop the element while the reading runs.
    QPointer<Element> m_element;
};
