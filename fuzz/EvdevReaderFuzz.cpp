#include "linux/input/evdev/EvdevReader.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

using kelo::input::EvdevReader;
using kelo::input::HeldKeys;
using kelo::input::KeyReport;

namespace {

/// What a reader makes of bytes that come in two reads, and whether it had to ask the device.
struct Reading {
    std::vector<KeyReport> reports;
    bool asked = false;

    Reading(std::span<const std::byte> first, std::span<const std::byte> second) {
        EvdevReader reader({}, [this]() -> std::optional<HeldKeys> {
            asked = true;
            return HeldKeys{.leftControl = false, .rightControl = true, .leftAlt = false};
        });
        reports = reader.take(first);
        for (const KeyReport& report : reader.take(second))
            reports.push_back(report);
    }
};

} // namespace

// Whatever bytes a device gives and wherever a read ends: no report says nothing new, and the
// place where a read ends makes no difference unless the device is asked in between.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const auto bytes = std::as_bytes(std::span(data, size)).subspan(1);
    const std::size_t split = bytes.empty() ? 0 : data[0] % (bytes.size() + 1);
    const Reading whole(bytes, {});
    const Reading parts(bytes.first(split), bytes.subspan(split));

    HeldKeys last;
    for (const KeyReport& report : parts.reports)
        if (std::exchange(last, report.held) == report.held && !report.otherPress)
            std::abort();
    if (!whole.asked && !parts.asked && whole.reports != parts.reports)
        std::abort();
    return 0;
}
