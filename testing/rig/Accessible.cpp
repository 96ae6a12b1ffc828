#include "testing/rig/Accessible.h"

#include <utility>

namespace kelo::rig {

namespace {

constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* componentInterface = "org.a11y.atspi.Component";
constexpr const char* textInterface = "org.a11y.atspi.Text";

constexpr unsigned stateFocused = 12;
constexpr unsigned stateSensitive = 24;
constexpr unsigned stateVisible = 30;

// To a toolkit's window "window" means what it says. A page takes that for itself, and "screen" for
// the window that shows it, because it does not know either where that stands.
constexpr std::uint32_t screenCoordinates = 0;
constexpr std::uint32_t windowCoordinates = 1;

} // namespace

Accessible::Accessible(const AccessibilityBus& bus, ObjectAddress address)
    : bus(&bus), object(std::move(address)) {}

std::string Accessible::name() const {
    const VariantPointer value = bus->property(object, accessibleInterface, "Name");
    if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING))
        return {};
    return g_variant_get_string(value.get(), nullptr);
}

Role Accessible::role() const {
    const VariantPointer reply = bus->call(object, accessibleInterface, "GetRole");
    std::uint32_t number = 0;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(u)")))
        g_variant_get(reply.get(), "(u)", &number);
    return static_cast<Role>(number);
}

Extents Accessible::extents() const {
    const VariantPointer reply =
        bus->call(object, componentInterface, "GetExtents",
                  g_variant_new("(u)", object.inPage ? screenCoordinates : windowCoordinates));
    Extents result;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("((iiii))")))
        g_variant_get(reply.get(), "((iiii))", &result.x, &result.y, &result.width, &result.height);
    return result;
}

std::vector<Accessible> Accessible::children() const {
    std::vector<Accessible> result;
    const VariantPointer reply = bus->call(object, accessibleInterface, "GetChildren");
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a(so))")))
        return result;
    GVariantIter* iterator = nullptr;
    g_variant_get(reply.get(), "(a(so))", &iterator);
    const char* busName = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(iterator, "(&s&o)", &busName, &path))
        result.emplace_back(*bus, ObjectAddress{busName, path, object.inPage});
    g_variant_iter_free(iterator);
    return result;
}

std::string Accessible::text() const {
    const VariantPointer reply =
        bus->call(object, textInterface, "GetText", g_variant_new("(ii)", 0, -1));
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(s)")))
        return {};
    const char* text = nullptr;
    g_variant_get(reply.get(), "(&s)", &text);
    return text;
}

double Accessible::value() const {
    const VariantPointer found = bus->property(object, "org.a11y.atspi.Value", "CurrentValue");
    if (!found || !g_variant_is_of_type(found.get(), G_VARIANT_TYPE_DOUBLE))
        return 0;
    return g_variant_get_double(found.get());
}

bool Accessible::hasState(unsigned number) const {
    const VariantPointer reply = bus->call(object, accessibleInterface, "GetState");
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(au)")))
        return false;
    const VariantPointer words(g_variant_get_child_value(reply.get(), 0));
    const unsigned word = number / 32;
    if (word >= g_variant_n_children(words.get()))
        return false;
    const VariantPointer bits(g_variant_get_child_value(words.get(), word));
    return (g_variant_get_uint32(bits.get()) >> (number % 32)) & 1U;
}

bool Accessible::isSensitive() const {
    return hasState(stateSensitive);
}

bool Accessible::isFocused() const {
    return hasState(stateFocused);
}

bool Accessible::isShown() const {
    const Extents area = extents();
    return area.width > 0 && area.height > 0 && hasState(stateVisible);
}

void Accessible::focus() const {
    bus->call(object, componentInterface, "GrabFocus");
}

bool Accessible::activate() const {
    const VariantPointer reply =
        bus->call(object, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0));
    gboolean done = FALSE;
    if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(b)")))
        g_variant_get(reply.get(), "(b)", &done);
    return done;
}

} // namespace kelo::rig
