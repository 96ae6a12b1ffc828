#include "linux/input/evdev/EvdevKeyboard.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <span>
#include <utility>

namespace kelo::input {

EvdevKeyboard::Refusal EvdevKeyboard::admit(EvdevDevice& device) {
    if (!device.isKeyboard())
        return Refusal::noKeyboard;
    return device.deliverOnlyHeldKeys() ? Refusal::none : Refusal::everyKey;
}

std::shared_ptr<EvdevKeyboard> EvdevKeyboard::watch(std::unique_ptr<EvdevDevice> device,
                                                    Handlers handlers) {
    // This also discards other keys, which were pressed before the kernel began to hold them back.
    const HeldKeys initially = device->heldKeys().value_or(HeldKeys{});
    return std::make_shared<EvdevKeyboard>(std::move(device), std::move(handlers), initially);
}

EvdevKeyboard::EvdevKeyboard(std::unique_ptr<EvdevDevice> opened, Handlers handlers,
                             HeldKeys initially)
    : held(initially),
      device(std::move(opened)),
      handlers(std::move(handlers)),
      reader(initially, [this] { return device->heldKeys(); }) {
    readable.emplace(device->descriptor(), [this] { read(); });
}

void EvdevKeyboard::update(HeldKeys reported) {
    held = reported;
    disregarded = disregarded & held;
}

bool EvdevKeyboard::listen() {
    if (!device->deliverOtherKeys())
        return false;
    const auto down = device->keysDown();
    if (!down)
        return false;
    update(down->held);
    reader.restart(held);
    return down->others;
}

bool EvdevKeyboard::stopListening() {
    return device->deliverOnlyHeldKeys();
}

void EvdevKeyboard::read() {
    const auto self = shared_from_this();
    std::array<std::byte, 64 * sizeof(input_event)> bytes;
    const ssize_t count = ::read(device->descriptor(), bytes.data(), bytes.size());
    if (count > 0) {
        const auto reports = reader.take(std::span(bytes).first(static_cast<std::size_t>(count)));
        if (!reports.empty())
            handlers.reported(*this, reports);
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
        readable.reset();
        handlers.gone(*this);
    }
}

} // namespace kelo::input
