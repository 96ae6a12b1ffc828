#pragma once

#include "base/Published.h"

namespace kelo::passkey {

/// Sets a flow's busy flag back when the flow ends, in whatever way.
class BusyScope {
public:
    explicit BusyScope(Published<bool>& busy) : busy(busy) {}
    ~BusyScope() { busy = false; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    Published<bool>& busy;
};

} // namespace kelo::passkey
