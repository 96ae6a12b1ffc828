#pragma once

#include "base/ObservableObject.h"

namespace kelo::passkey {

/// Resets the busy flag when the flow ends, whether it returns, throws or is destroyed.
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
