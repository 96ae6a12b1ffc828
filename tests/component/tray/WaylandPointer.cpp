#include "component/tray/WaylandPointer.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <wayland-client.h>

namespace kelo::tests {

namespace {

// No library declares this protocol of a family of compositors, so its tables are here. The order
// of the requests defines their numbers on the wire.
enum ManagerRequest : std::uint32_t { createPointer };
enum PointerRequest : std::uint32_t {
    moveAbsolute = 1,
    turnButton,
    endFrame = 4,
    destroyPointer = 8
};

extern const wl_interface pointerInterface;

const std::array<const wl_interface*, 5> noTypes{};
const std::array<const wl_interface*, 2> createTypes{&wl_seat_interface, &pointerInterface};

const std::array<wl_message, 2> managerRequests{{
    {"create_virtual_pointer", "?on", const_cast<const wl_interface**>(createTypes.data())},
    {"destroy", "", const_cast<const wl_interface**>(noTypes.data())},
}};
const wl_interface managerInterface{"zwlr_virtual_pointer_manager_v1",
                                    1,
                                    managerRequests.size(),
                                    managerRequests.data(),
                                    0,
                                    nullptr};

const std::array<wl_message, 9> pointerRequests{{
    {"motion", "uff", const_cast<const wl_interface**>(noTypes.data())},
    {"motion_absolute", "uuuuu", const_cast<const wl_interface**>(noTypes.data())},
    {"button", "uuu", const_cast<const wl_interface**>(noTypes.data())},
    {"axis", "uuf", const_cast<const wl_interface**>(noTypes.data())},
    {"frame", "", const_cast<const wl_interface**>(noTypes.data())},
    {"axis_source", "u", const_cast<const wl_interface**>(noTypes.data())},
    {"axis_stop", "uu", const_cast<const wl_interface**>(noTypes.data())},
    {"axis_discrete", "uufi", const_cast<const wl_interface**>(noTypes.data())},
    {"destroy", "", const_cast<const wl_interface**>(noTypes.data())},
}};
const wl_interface pointerInterface{"zwlr_virtual_pointer_v1", 1, pointerRequests.size(),
                                    pointerRequests.data(),    0, nullptr};

std::uint32_t now() {
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

struct DestroyLocally {
    void operator()(void* proxy) const noexcept { wl_proxy_destroy(static_cast<wl_proxy*>(proxy)); }
};

std::uint32_t managerName(wl_display* display, wl_registry* registry) {
    std::uint32_t found = 0;
    static const wl_registry_listener listener{
        [](void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t) {
            if (std::string_view(interface) == managerInterface.name)
                *static_cast<std::uint32_t*>(data) = name;
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(registry, &listener, &found);
    wl_display_roundtrip(display);
    return found;
}

} // namespace

void WaylandPointer::Disconnect::operator()(wl_display* display) const noexcept {
    wl_display_disconnect(display);
}

void WaylandPointer::Destroy::operator()(wl_proxy* proxy) const noexcept {
    wl_proxy_marshal_flags(proxy, destroyPointer, nullptr, 1, WL_MARSHAL_FLAG_DESTROY);
}

WaylandPointer::WaylandPointer(std::uint32_t width, std::uint32_t height)
    : width(width), height(height), display(wl_display_connect(nullptr)) {
    if (!display)
        throw std::runtime_error("there is no Wayland compositor");
    const std::unique_ptr<wl_registry, DestroyLocally> registry(
        wl_display_get_registry(display.get()));
    const auto name = managerName(display.get(), registry.get());
    if (name == 0)
        throw std::runtime_error(std::string("the compositor has no ") + managerInterface.name);
    const std::unique_ptr<wl_proxy, DestroyLocally> manager(
        static_cast<wl_proxy*>(wl_registry_bind(registry.get(), name, &managerInterface, 1)));
    // A null seat lets the compositor choose one.
    pointer.reset(wl_proxy_marshal_flags(manager.get(), createPointer, &pointerInterface, 1, 0,
                                         static_cast<wl_proxy*>(nullptr), nullptr));
    settle();
}

void WaylandPointer::moveTo(std::uint32_t x, std::uint32_t y) {
    wl_proxy_marshal_flags(pointer.get(), moveAbsolute, nullptr, 1, 0, now(), x, y, width, height);
    frame();
    settle();
}

void WaylandPointer::click(std::uint32_t button) {
    turn(button, true);
    turn(button, false);
    settle();
}

void WaylandPointer::turn(std::uint32_t button, bool isDown) {
    const std::uint32_t state =
        isDown ? WL_POINTER_BUTTON_STATE_PRESSED : WL_POINTER_BUTTON_STATE_RELEASED;
    wl_proxy_marshal_flags(pointer.get(), turnButton, nullptr, 1, 0, now(), button, state);
    frame();
}

void WaylandPointer::frame() {
    wl_proxy_marshal_flags(pointer.get(), endFrame, nullptr, 1, 0);
}

void WaylandPointer::settle() {
    if (wl_display_roundtrip(display.get()) < 0)
        throw std::runtime_error("the compositor ended the connection of the pointer");
}

} // namespace kelo::tests
