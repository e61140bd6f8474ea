#include "readpropertyheavytask.h"

#include "element.h"
#include "elementdata.h"
#include "vieweditelementwidget.h"

ReadPropertyHeavyTask::ReadPropertyHeavyTask(Element *element)
    : m_element(element)
{
}

ReadPropertyHeavyTask::~ReadPropertyHeavyTask()
{
    delete elementData;
}

Element *ReadPropertyHeavyTask::element() const
{
    return m_element;
}

// A failed reading is shown by the task runner; handing its partial record to the form would
// show defaults as if they were the host's state.
void ReadPropertyHeavyTask::afterRun()
{
    if (!m_element || !elementData || description.status() == TaskDescription::Error)
        return;
    ElementData *data = elementData;
    elementData = nullptr;
    m_element->setElementData(data);
    auto *form = qobject_cast<ViewEditElementWidget *>(
        m_element->elementWidget(ElementWidgetRole::Edit));
    if (form)
        form->afterSuccessfulRead(m_element, data);
}
