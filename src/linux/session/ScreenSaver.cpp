#include "linux/session/ScreenSaver.h"

#include "linux/gobject/GLibHandles.h"

#include <array>
#include <optional>
#include <utility>

namespace kelo::session {

namespace {

struct Known {
    const char* name;
    const char* path;
};
constexpr std::array known{Known{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
                           Known{"org.gnome.ScreenSaver", "/org/gnome/ScreenSaver"},
                           Known{"org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver"},
                           Known{"org.mate.ScreenSaver", "/org/mate/ScreenSaver"},
                           Known{"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver"}};

/// Nothing if there is no value, or one of another type.
std::optional<bool> onlyValue(GVariant* values) {
    if (!values || !g_variant_is_of_type(values, G_VARIANT_TYPE("(b)")))
        return std::nullopt;
    gboolean value = FALSE;
    g_variant_get(values, "(b)", &value);
    return value;
}

} // namespace

ScreenSaver::ScreenSaver(bus::SharedConnection& sessionBus, const std::string& name,
                         std::string path, Changed changed)
    : name(name),
      path(std::move(path)),
      changed(std::move(changed)),
      saver(sessionBus, name, bus::Starting::never,
            [this](const bus::Connection& connection, const std::string& owner) {
                saverChanged(connection, owner);
            }) {}

void ScreenSaver::saverChanged(const bus::Connection& connection, const std::string& owner) {
    change.reset();
    calls.reset();
    if (owner.empty())
        return note(false);
    // Subscribed before it is asked: a change in between would be lost otherwise.
    // To every object, because one desktop has two.
    change.emplace(connection, bus::Object{owner, "", name}, "ActiveChanged",
                   [this](const std::string&, GVariant* values) {
                       if (const auto value = onlyValue(values))
                           note(*value);
                   });
    calls.emplace();
    calls->call(connection, {owner, path, name}, "GetActive", nullptr,
                [this](const gobject::GVariantPointer& answer, const gobject::GErrorPointer&) {
                    note(onlyValue(answer.get()).value_or(false));
                });
}

void ScreenSaver::note(bool isActive) {
    certain = true;
    active = isActive;
    changed();
}

std::vector<std::unique_ptr<LockSource>> screenSavers(bus::SharedConnection& sessionBus,
                                                      const LockSource::Changed& changed) {
    std::vector<std::unique_ptr<LockSource>> all;
    for (const auto& [name, path] : known)
        all.push_back(std::make_unique<ScreenSaver>(sessionBus, name, path, changed));
    return all;
}

} // namespace kelo::session
