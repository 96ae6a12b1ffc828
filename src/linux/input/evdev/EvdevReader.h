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

/// Turns the bytes of one keyboard device (records of struct input_event) into states of its keys.
/// Reads nothing itself. Any bytes are safe; what is not understood is passed over.
class EvdevReader {
public:
    /// Asks the device which keys are down now; nothing when it does not answer, which counts as
    /// none down.
    using Snapshot = std::function<std::optional<HeldKeys>()>;

    explicit EvdevReader(HeldKeys initially, Snapshot snapshot);

    /// Takes what one read gave; records may be split anywhere between two reads. Returns the
    /// states after each report of the device that changed one, in order.
    std::vector<HeldKeys> take(std::span<const std::byte> bytes);

private:
    enum class Outcome { unfinished, reportEnded, askedAnew };

    Outcome handle(const input_event& event);

    Snapshot snapshot;
    std::array<std::byte, sizeof(input_event)> record{};
    std::size_t filled = 0;
    /// As the events of an unfinished report have it.
    HeldKeys next;
    HeldKeys reported;
    /// The device lost events: what follows up to the end of the report is worthless.
    bool lost = false;
};

} // namespace kelo::input
