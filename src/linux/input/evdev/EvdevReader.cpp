#include "linux/input/evdev/EvdevReader.h"

#include "linux/input/evdev/OtherKeys.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kelo::input {

namespace {

constexpr int released = 0;
constexpr int pressed = 1;
/// The value of a report's end if the kernel has made the report up.
constexpr int madeUp = 1;

} // namespace

EvdevReader::EvdevReader(HeldKeys initially, Snapshot snapshot)
    : snapshot(std::move(snapshot)), next(initially), reported(initially) {}

std::vector<KeyReport> EvdevReader::take(std::span<const std::byte> bytes) {
    std::vector<KeyReport> reports;
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(record.size() - filled, bytes.size()));
        std::ranges::copy(part, record.begin() + static_cast<std::ptrdiff_t>(filled));
        filled += part.size();
        bytes = bytes.subspan(part.size());
        if (filled < record.size())
            break;
        filled = 0;
        const Outcome outcome = handle(std::bit_cast<input_event>(record));
        // The remaining bytes of this read are older than the snapshot.
        if (outcome == Outcome::askedAnew)
            bytes = bytes.last(bytes.size() % record.size());
        if (outcome == Outcome::unfinished)
            continue;
        const bool other = std::exchange(otherPress, false);
        const bool byKernel = outcome == Outcome::madeUpReportEnded;
        if (std::exchange(reported, next) != next || other)
            reports.push_back({next, other, byKernel});
    }
    return reports;
}

void EvdevReader::restart(HeldKeys held) {
    next = held;
    reported = held;
    otherPress = false;
}

EvdevReader::Outcome EvdevReader::handle(const input_event& event) {
    if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        lost = true;
        otherPress = false;
    } else if (event.type == EV_SYN && event.code == SYN_REPORT) {
        if (!std::exchange(lost, false))
            return event.value == madeUp ? Outcome::madeUpReportEnded : Outcome::reportEnded;
        next = snapshot().value_or(HeldKeys{});
        return Outcome::askedAnew;
    } else if (event.type == EV_KEY && !lost) {
        // The third value is a key repeat, which changes nothing.
        if (event.value == pressed || event.value == released)
            next.set(event.code, event.value == pressed);
        otherPress = otherPress || (event.value == pressed && isOtherKey(event.code));
    }
    return Outcome::unfinished;
}

} // namespace kelo::input
