#pragma once

#include "platform/Published.h"

namespace kelo {

/// Sets a flow's busy flag back when the flow ends, in whatever way.
class BusyScope {
public:
    explicit BusyScope(platform::Published<bool>& busy) : busy(busy) {}
    ~BusyScope() { busy = false; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

private:
    platform::Published<bool>& busy;
};

} // namespace kelo
