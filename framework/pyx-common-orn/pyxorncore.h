#pragma once

#include "pyx_common_orn_export.h"

#include <atomic>
#include <memory>

class OrnCore;

// Access point to the directory core. The console installs a core at start; tests install their
// own. Replace the core only while no reading task runs: readers hold the bare pointer.
class PYX_COMMON_ORN_EXPORT PyxOrnCore
{
public:
    static PyxOrnCore *instance();

    // Null when no directory core has been initialised.
    OrnCore *ornCore() const { return m_core.load(); }
    // Takes ownership; null leaves the process without a core.
    void setOrnCore(std::unique_ptr<OrnCore> core);

private:
    PyxOrnCore() = default;
    ~PyxOrnCore();

    std::atomic<OrnCore *> m_core{nullptr};
};
