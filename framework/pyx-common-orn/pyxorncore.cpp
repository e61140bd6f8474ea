#include "pyxorncore.h"

#include "orncore.h"

PyxOrnCore *PyxOrnCore::instance()
{
    static PyxOrnCore instance;
    return &instance;
}

PyxOrnCore::~PyxOrnCore()
{
    delete m_core.exchange(nullptr);
}

void PyxOrnCore::setOrnCore(std::unique_ptr<OrnCore> core)
{
    delete m_core.exchange(core.release());
}
