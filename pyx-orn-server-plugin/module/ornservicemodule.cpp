#include "ornservicemodule.h"

#include "element.h"
#include "elementdata.h"
#include "ornserverelement.h"
#include "ornserverreadheavytast.h"
#include "ornserverwidget.h"
#include "taskobserver.h"

OrnServiceModule::OrnServiceModule(QObject *parent)
    : Module(QStringLiteral("OrnServerModule"), parent, false)
{
    parentTypeName = QStringLiteral("OrnDomainModule");
    placement = 2;
    moduleData->properties.insert(QStringLiteral("description"),
                                  Module::tr("Module for ORN server creating"));
    moduleData->properties.insert(QStringLiteral("administrator"), isAdministrator(*this));
    elements.append(new OrnServerElement(*this, &Module::isAdministratorHierarchy));
    insertElementWidget(new OrnServerWidget(*this, &Module::isAdministratorHierarchy, nullptr));
    connectElementWidgets();
}

// Whatever the request carried, the console's dispatch gets no record: the task makes its own.
bool OrnServiceModule::performOperation(ContextOperation *context, OperationType operation,
                                        ElementData *, int n)
{
    Element *element = context->contextType() == ContextOperation::ElementContext
                           ? context->elementContext()
                           : nullptr;
    if (element && element->elementType() == QLatin1String("OrnServer")
        && operation == OperationType::Read) {
        auto *task = new OrnServerReadHeavyTast(element);
        const bool dispatched = Module::performOperation(context, OperationType::Read, nullptr, n);
        TaskObserver::instance(nullptr)->performTask(task);
        return dispatched;
    }
    return Module::performOperation(context, operation, nullptr, n);
}
