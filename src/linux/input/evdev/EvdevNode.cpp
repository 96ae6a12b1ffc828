#include "linux/input/evdev/EvdevNode.h"

#include "linux/input/evdev/OtherKeys.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelo::input {

namespace {

/// One bit for each event code, starting with code 0. The kernel uses words of the size of a long,
/// in either byte order. It truncates what it returns, and treats missing words as 0.
template <unsigned highestCode>
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
    using Words = std::array<unsigned long, highestCode / wordBits + 1>;
    Words words{};
};

/// Enough for all codes of HeldKeys, and no place for most of what is typed.
using HeldBits = CodeBits<KEY_RIGHTCTRL>;
static_assert(std::ranges::all_of(HeldKeys::codes,
                                  [](unsigned code) { return code <= KEY_RIGHTCTRL; }));
using KeyBits = CodeBits<KEY_MAX>;

template <typename Bits>
bool allow(int descriptor, std::uint32_t type, Bits codes) {
    input_mask mask{};
    mask.type = type;
    mask.codes_size = Bits::size();
    mask.codes_ptr = reinterpret_cast<std::uintptr_t>(codes.data());
    return ioctl(descriptor, EVIOCSMASK, &mask) >= 0;
}

template <typename Bits>
Bits heldBits() {
    Bits keys;
    for (const unsigned code : HeldKeys::codes)
        keys.set(code);
    return keys;
}

template <typename Bits>
std::optional<Bits> askWhatIsDown(int descriptor) {
    Bits down;
    if (ioctl(descriptor, EVIOCGKEY(Bits::size()), down.data()) < 0)
        return std::nullopt;
    return down;
}

template <typename Bits>
HeldKeys heldIn(const Bits& down) {
    HeldKeys held;
    for (const auto code : HeldKeys::codes)
        held.set(code, down.test(code));
    return held;
}

} // namespace

std::unique_ptr<EvdevDevice> EvdevNode::open(const std::filesystem::path& path) {
    posix::FileDescriptor node(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!node)
        return nullptr;
    return std::make_unique<EvdevNode>(std::move(node));
}

bool EvdevNode::isKeyboard() const {
    HeldBits keys;
    return ioctl(node.get(), EVIOCGBIT(EV_KEY, HeldBits::size()), keys.data()) >= 0 &&
           std::ranges::any_of(HeldKeys::codes, [&](auto code) { return keys.test(code); });
}

bool EvdevNode::deliverOnlyHeldKeys() {
    // For type 0, the mask selects event types. The kernel delivers the ends of reports anyway.
    HeldBits types;
    types.set(EV_SYN);
    types.set(EV_KEY);
    return allow(node.get(), EV_KEY, heldBits<HeldBits>()) && allow(node.get(), EV_SYN, types);
}

bool EvdevNode::deliverOtherKeys() {
    auto keys = heldBits<KeyBits>();
    for (unsigned code = 0; code <= KEY_MAX; ++code)
        if (isOtherKey(code))
            keys.set(code);
    return allow(node.get(), EV_KEY, keys);
}

std::optional<HeldKeys> EvdevNode::heldKeys() const {
    const auto down = askWhatIsDown<HeldBits>(node.get());
    return down ? std::optional(heldIn(*down)) : std::nullopt;
}

std::optional<KeysDown> EvdevNode::keysDown() const {
    const auto down = askWhatIsDown<KeyBits>(node.get());
    if (!down)
        return std::nullopt;
    KeysDown keys{heldIn(*down)};
    for (unsigned code = 0; code <= KEY_MAX; ++code)
        keys.others = keys.others || (isOtherKey(code) && down->test(code));
    return keys;
}

} // namespace kelo::input
