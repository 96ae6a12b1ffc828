#pragma once

#include "linux/input/evdev/HeldKeys.h"

#include <linux/input.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace kelo::input {

/// Parses the bytes of one keyboard device (records of struct input_event) into states of its keys.
/// Any bytes are safe. Unknown records are skipped.
class EvdevReader {
public:
    /// Returns the keys that are down on the device now. Empty on failure, which counts as no key
    /// down.
    using Snapshot = std::function<std::optional<HeldKeys>()>;

    explicit EvdevReader(HeldKeys initially, Snapshot snapshot);

    /// Parses the bytes of one read. A record may be split between two reads. Returns the state
    /// after each report that changed it, in order.
    std::vector<HeldKeys> take(std::span<const std::byte> bytes);

private:
    enum class Outcome { unfinished, reportEnded, askedAnew };

    Outcome handle(const input_event& event);

    Snapshot snapshot;
    std::array<std::byte, sizeof(input_event)> record{};
    std::size_t filled = 0;
    /// The state according to the unfinished report.
    HeldKeys next;
    HeldKeys reported;
    /// The kernel dropped events. The rest of the report is invalid.
    bool lost = false;
};

} // namespace kelo::input
