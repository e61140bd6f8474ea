#pragma once

#include "module.h"

// The plug-in's module: owns the server element and its form, and turns a read of the element
// into a reading task. Its translations use the context of its framework base.
class OrnServiceModule : public Module
{
public:
    explicit OrnServiceModule(QObject *parent);

    bool performOperation(ContextOperation *context, OperationType operation, ElementData *data,
                          int n) override;
};
