#include "testing/rig/PlaceInWindow.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace kelo::rig {

namespace {

/// Around a box, in pixels. Where more is free, its contents do not fill it.
constexpr int widestPadding = 32;

std::optional<ObjectAddress> referenceIn(const VariantPointer& value) {
    if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE("(so)")))
        return std::nullopt;
    const char* name = nullptr;
    const char* path = nullptr;
    g_variant_get(value.get(), "(&s&o)", &name, &path);
    return ObjectAddress{name, path};
}

std::optional<Accessible> parentOf(const AccessibilityBus& bus, const Accessible& object) {
    const auto parent =
        referenceIn(bus.property(object.address(), "org.a11y.atspi.Accessible", "Parent"));
    return parent ? std::optional(Accessible(bus, *parent)) : std::nullopt;
}

int paddingFor(int free) {
    return free > 0 && free / 2 <= widestPadding ? free / 2 : 0;
}

/// Whether the window's toolkit is one that errs.
bool errs(const AccessibilityBus& bus, const Accessible& window) {
    const auto program = parentOf(bus, window);
    const VariantPointer version =
        program ? bus.property(program->address(), "org.a11y.atspi.Application", "Version")
                : nullptr;
    int minor = 0;
    return version && g_variant_is_of_type(version.get(), G_VARIANT_TYPE_STRING) &&
           std::sscanf(g_variant_get_string(version.get(), nullptr), "4.%d", &minor) == 1 &&
           minor >= 18;
}

} // namespace

// GTK 4.18 adds up places that each count from inside a box's padding as if they counted from its
// edge (GTK 4.8 does not). How wide a padding is, the bus does not say, but what the contents leave
// free of the box is twice the padding.
Extents placeInWindow(const AccessibilityBus& bus, const Accessible& window,
                      const Accessible& object) {
    const Extents frame = window.extents();
    Extents place = object.extents();
    place.x -= frame.x;
    place.y -= frame.y;
    if (!errs(bus, window))
        return place;
    for (auto box = parentOf(bus, object); box && box->address() != window.address();
         box = parentOf(bus, *box)) {
        const Extents outside = box->extents();
        int right = 0;
        int bottom = 0;
        for (const Accessible& child : box->children()) {
            const Extents inside = child.extents();
            right = std::max(right, inside.x + inside.width - outside.x);
            bottom = std::max(bottom, inside.y + inside.height - outside.y);
        }
        place.x += paddingFor(outside.width - right);
        place.y += paddingFor(outside.height - bottom);
    }
    return place;
}

} // namespace kelo::rig
