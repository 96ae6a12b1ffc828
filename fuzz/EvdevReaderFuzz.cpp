#include "linux/input/evdev/EvdevReader.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

using kelo::input::EvdevReader;
using kelo::input::HeldKeys;

namespace {

/// What a reader makes of bytes that come in two reads, and whether it had to ask the device.
struct Reading {
    std::vector<HeldKeys> states;
    bool asked = false;

    Reading(std::span<const std::byte> first, std::span<const std::byte> second) {
        EvdevReader reader({}, [this]() -> std::optional<HeldKeys> {
            asked = true;
            return HeldKeys{.leftControl = false, .rightControl = true, .leftAlt = false};
        });
        states = reader.take(first);
        for (const HeldKeys& state : reader.take(second))
            states.push_back(state);
    }
};

} // namespace

// Whatever bytes a device gives and wherever a read ends: no state is told twice in a row, and the
// place where a read ends makes no difference unless the device is asked in between.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const auto bytes = std::as_bytes(std::span(data, size)).subspan(1);
    const std::size_t split = bytes.empty() ? 0 : data[0] % (bytes.size() + 1);
    const Reading whole(bytes, {});
    const Reading parts(bytes.first(split), bytes.subspan(split));

    HeldKeys last;
    for (const HeldKeys& state : parts.states)
        if (std::exchange(last, state) == state)
            std::abort();
    if (!whole.asked && !parts.asked && whole.states != parts.states)
        std::abort();
    return 0;
}
