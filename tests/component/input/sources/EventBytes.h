#pragma once

#include <linux/input.h>

#include <cstddef>
#include <cstring>
#include <span>
#include <vector>

namespace kelo {

using EventBytes = std::vector<std::byte>;

/// A record as the kernel writes it.
inline EventBytes record(int type, int code, int value) {
    input_event event{};
    event.type = static_cast<decltype(event.type)>(type);
    event.code = static_cast<decltype(event.code)>(code);
    event.value = value;
    EventBytes bytes(sizeof(event));
    std::memcpy(bytes.data(), &event, sizeof(event));
    return bytes;
}

inline EventBytes operator+(EventBytes first, const EventBytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline EventBytes down(int code) {
    return record(EV_KEY, code, 1);
}
inline EventBytes up(int code) {
    return record(EV_KEY, code, 0);
}
inline EventBytes repeated(int code) {
    return record(EV_KEY, code, 2);
}
inline EventBytes report() {
    return record(EV_SYN, SYN_REPORT, 0);
}
/// The end of a report that the kernel has made up, as when it releases what is down on a keyboard
/// that is unplugged.
inline EventBytes madeUpReport() {
    return record(EV_SYN, SYN_REPORT, 1);
}
inline EventBytes dropped() {
    return record(EV_SYN, SYN_DROPPED, 0);
}

} // namespace kelo
