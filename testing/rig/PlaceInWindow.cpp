#include "testing/rig/PlaceInWindow.h"

#include <cstdio>
#include <optional>

namespace kelo::rig {

namespace {

constexpr std::uint32_t windowCoordinates = 1;
/// More than all paddings around one object together.
constexpr int farthest = 80;

std::optional<ObjectAddress> referenceIn(const VariantPointer& value) {
    if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE("(so)")))
        return std::nullopt;
    const char* name = nullptr;
    const char* path = nullptr;
    g_variant_get(value.get(), "(&s&o)", &name, &path);
    return ObjectAddress{name, path};
}

/// Whether the window shows the object at the point, or something in it.
bool shows(const AccessibilityBus& bus, const Accessible& window, const Accessible& object, int x,
           int y) {
    const VariantPointer reply =
        bus.call(window.address(), "org.a11y.atspi.Component", "GetAccessibleAtPoint",
                 g_variant_new("(iiu)", x, y, windowCoordinates));
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("((so))")))
        return false;
    auto found = referenceIn(VariantPointer(g_variant_get_child_value(reply.get(), 0)));
    while (found && *found != object.address() && *found != window.address())
        found = referenceIn(bus.property(*found, "org.a11y.atspi.Accessible", "Parent"));
    return found == object.address();
}

/// Whether the window's toolkit is one that errs.
bool errs(const AccessibilityBus& bus, const Accessible& window) {
    const auto program =
        referenceIn(bus.property(window.address(), "org.a11y.atspi.Accessible", "Parent"));
    const VariantPointer version =
        program ? bus.property(*program, "org.a11y.atspi.Application", "Version") : nullptr;
    int minor = 0;
    return version && g_variant_is_of_type(version.get(), G_VARIANT_TYPE_STRING) &&
           std::sscanf(g_variant_get_string(version.get(), nullptr), "4.%d", &minor) == 1 &&
           minor >= 18;
}

} // namespace

// GTK 4.18 adds up places that each count from inside a padding as if they counted from outside
// (GTK 4.8 does not). So the truth lies to the right and below, and only a little.
Extents placeInWindow(const AccessibilityBus& bus, const Accessible& window,
                      const Accessible& object) {
    const Extents frame = window.extents();
    Extents place = object.extents();
    place.x -= frame.x;
    place.y -= frame.y;
    if (!errs(bus, window))
        return place;
    const int middleX = place.x + place.width / 2;
    const int middleY = place.y + place.height / 2;
    const auto isShownAt = [&](int x, int y) { return shows(bus, window, object, x, y); };
    for (int more = 0; more < farthest; more += 4) {
        if (!isShownAt(middleX + more, middleY + more))
            continue;
        int left = place.x;
        while (left < middleX + more && !isShownAt(left, middleY + more))
            ++left;
        int top = place.y;
        while (top < middleY + more && !isShownAt(middleX + more, top))
            ++top;
        return {left, top, place.width, place.height};
    }
    return place;
}

} // namespace kelo::rig
