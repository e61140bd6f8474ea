#pragma once

#include "readpropertyheavytask.h"

// Reads the state of the local directory server into a fresh record, on a worker thread.
class OrnServerReadHeavyTast : public ReadPropertyHeavyTask
{
public:
    explicit OrnServerReadHeavyTast(Element *element);
    ~OrnServerReadHeavyTast() override;

    void run() override;
};
