#include "linux/session/ScreenSaver.h"

#include <glibmm/variant.h>

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

std::optional<bool> onlyValue(const BusService::Values& values) {
    if (values.get_type_string() != "(b)")
        return std::nullopt;
    Glib::Variant<bool> value;
    values.get_child(value, 0);
    return value.get();
}

} // namespace

ScreenSaver::ScreenSaver(Bus& sessionBus, const std::string& name, std::string path,
                         Changed changed)
    : name(name),
      path(std::move(path)),
      changed(std::move(changed)),
      service(
          sessionBus, name, [this] { came(); }, [this] { note(false); }) {}

void ScreenSaver::came() {
    // Heard before it is asked: a change in between would be lost otherwise.
    // From every object, because one desktop has two.
    service.hear("", name, "ActiveChanged", [this](const BusService::Values& values) {
        if (const auto value = onlyValue(values))
            note(*value);
    });
    service.call(
        path, name, "GetActive", {},
        [this](const BusService::Values& values) { note(onlyValue(values).value_or(false)); },
        [this] { note(false); });
}

void ScreenSaver::note(bool isActive) {
    certain = true;
    active = isActive;
    changed();
}

std::vector<std::unique_ptr<LockSource>> screenSavers(Bus& sessionBus,
                                                      const LockSource::Changed& changed) {
    std::vector<std::unique_ptr<LockSource>> all;
    for (const auto& [name, path] : known)
        all.push_back(std::make_unique<ScreenSaver>(sessionBus, name, path, changed));
    return all;
}

} // namespace kelo::session
