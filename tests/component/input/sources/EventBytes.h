#pragma once

#include <linux/input.h>

#include <cstddef>
#include <cstring>
#include <span>
#include <vector>

namespace kelo {

using Bytes = std::vector<std::byte>;

/// A record as the kernel writes it.
inline Bytes record(int type, int code, int value) {
    input_event event{};
    event.type = static_cast<decltype(event.type)>(type);
    event.code = static_cast<decltype(event.code)>(code);
    event.value = value;
    Bytes bytes(sizeof(event));
    std::memcpy(bytes.data(), &event, sizeof(event));
    return bytes;
}

inline Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline Bytes down(int code) {
    return record(EV_KEY, code, 1);
}
inline Bytes up(int code) {
    return record(EV_KEY, code, 0);
}
inline Bytes repeated(int code) {
    return record(EV_KEY, code, 2);
}
inline Bytes report() {
    return record(EV_SYN, SYN_REPORT, 0);
}
inline Bytes dropped() {
    return record(EV_SYN, SYN_DROPPED, 0);
}

} // namespace kelo
