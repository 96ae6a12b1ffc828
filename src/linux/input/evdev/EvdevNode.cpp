#include "linux/input/evdev/EvdevNode.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelo::input {

namespace {

/// One bit for each event code, starting with code 0. The kernel uses words of the size of a long,
/// in either byte order.
class CodeBits {
public:
    void set(unsigned code) { words[code / wordBits] |= 1UL << (code % wordBits); }
    bool test(unsigned code) const {
        return (words[code / wordBits] >> (code % wordBits) & 1) != 0;
    }
    void* data() { return words.data(); }
    static constexpr std::size_t size() { return sizeof(Words); }

private:
    static constexpr unsigned wordBits = 8 * sizeof(unsigned long);
    /// Enough for all codes of HeldKeys. The kernel truncates what it returns, and treats missing
    /// words as 0.
    using Words = std::array<unsigned long, KEY_RIGHTCTRL / wordBits + 1>;

    static_assert(std::ranges::all_of(HeldKeys::codes,
                                      [](unsigned code) { return code <= KEY_RIGHTCTRL; }));
    Words words{};
};

bool allow(int descriptor, std::uint32_t type, CodeBits codes) {
    input_mask mask{};
    mask.type = type;
    mask.codes_size = CodeBits::size();
    mask.codes_ptr = reinterpret_cast<std::uintptr_t>(codes.data());
    return ioctl(descriptor, EVIOCSMASK, &mask) >= 0;
}

} // namespace

std::unique_ptr<EvdevDevice> EvdevNode::open(const std::filesystem::path& path) {
    posix::FileDescriptor node(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!node)
        return nullptr;
    return std::make_unique<EvdevNode>(std::move(node));
}

bool EvdevNode::isKeyboard() const {
    CodeBits keys;
    return ioctl(node.get(), EVIOCGBIT(EV_KEY, CodeBits::size()), keys.data()) >= 0 &&
           std::ranges::any_of(HeldKeys::codes, [&](auto code) { return keys.test(code); });
}

bool EvdevNode::deliverOnlyHeldKeys() {
    // For type 0, the mask selects event types. The kernel delivers the ends of reports anyway.
    CodeBits types;
    types.set(EV_SYN);
    types.set(EV_KEY);
    CodeBits keys;
    for (const unsigned code : HeldKeys::codes)
        keys.set(code);
    return allow(node.get(), EV_KEY, keys) && allow(node.get(), EV_SYN, types);
}

std::optional<HeldKeys> EvdevNode::heldKeys() const {
    CodeBits down;
    if (ioctl(node.get(), EVIOCGKEY(CodeBits::size()), down.data()) < 0)
        return std::nullopt;
    HeldKeys held;
    for (const auto code : HeldKeys::codes)
        held.set(code, down.test(code));
    return held;
}

} // namespace kelo::input
