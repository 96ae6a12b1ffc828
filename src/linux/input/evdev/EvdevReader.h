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

/// What one report of a device says.
struct KeyReport {
    /// The watched keys that are down after it.
    HeldKeys held;
    /// Whether it says that another key, one of isOtherKey(), went down.
    bool otherPress = false;
    /// Whether the kernel, and no finger, released keys: the keyboard is unplugged or put to sleep.
    bool byKernel = false;

    bool operator==(const KeyReport&) const = default;
};

/// Parses the bytes of one keyboard device (records of struct input_event) into states of its keys.
/// Which other key was pressed does not leave this class. Any bytes are safe. Unknown records are
/// skipped.
class EvdevReader {
public:
    /// Returns the keys that are down on the device now. Empty on failure, which counts as no key
    /// down.
    using Snapshot = std::function<std::optional<HeldKeys>()>;

    explicit EvdevReader(HeldKeys initially, Snapshot snapshot);

    /// Parses the bytes of one read. A record may be split between two reads. Returns the reports
    /// that changed the state or tell of another press, in order.
    std::vector<KeyReport> take(std::span<const std::byte> bytes);
    /// Takes the state from a device that was asked. Events that were read before are outdated.
    void restart(HeldKeys held);

private:
    enum class Outcome { unfinished, reportEnded, madeUpReportEnded, askedAnew };

    Outcome handle(const input_event& event);

    Snapshot snapshot;
    std::array<std::byte, sizeof(input_event)> record{};
    std::size_t filled = 0;
    /// The state according to the unfinished report.
    HeldKeys next;
    HeldKeys reported;
    /// Whether the unfinished report says that another key went down.
    bool otherPress = false;
    /// The kernel dropped events. The rest of the report is invalid.
    bool lost = false;
};

} // namespace kelo::input
