#include "linux/session/LoginSession.h"

#include <glibmm/variant.h>

#include <map>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace kelo::session {

namespace {

constexpr const char* managerName = "org.freedesktop.login1";
constexpr const char* managerPath = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
/// The caller's own session, or the user's graphical one if the caller belongs to none.
constexpr const char* ownSession = "auto";

using Properties = std::map<Glib::ustring, Glib::VariantBase>;

/// A child of the values by its place; nothing if there is none of this type.
template <typename T>
std::optional<T> child(const Glib::VariantContainerBase& values, gsize place) {
    if (place >= values.get_n_children())
        return std::nullopt;
    Glib::VariantBase value;
    values.get_child(value, place);
    if (!value.is_of_type(Glib::Variant<T>::variant_type()))
        return std::nullopt;
    return Glib::VariantBase::cast_dynamic<Glib::Variant<T>>(value).get();
}

void read(const Properties& properties, const char* name, bool& into) {
    const auto found = properties.find(name);
    if (found != properties.end() && found->second.is_of_type(Glib::VARIANT_TYPE_BOOL))
        into = Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(found->second).get();
}

} // namespace

LoginSession::LoginSession(Bus& systemBus, Changed changed)
    : changed(std::move(changed)),
      service(
          systemBus, managerName, [this] { came(); }, [this] { giveUp(); }) {}

void LoginSession::came() {
    service.call(
        managerPath, managerInterface, "GetSession",
        Glib::Variant<std::tuple<Glib::ustring>>::create({ownSession}),
        [this](const BusService::Values& values) {
            if (values.get_n_children() == 1 && values.get_type_string() == "(o)") {
                Glib::VariantBase value;
                values.get_child(value, 0);
                found(g_variant_get_string(value.gobj(), nullptr));
            } else {
                giveUp();
            }
        },
        [this] { giveUp(); });
}

void LoginSession::found(const std::string& session) {
    path = session;
    // Heard before it is asked: a change in between would be lost otherwise.
    service.hear(path, propertiesInterface, "PropertiesChanged",
                 [this](const BusService::Values& values) {
                     if (child<Glib::ustring>(values, 0) != sessionInterface)
                         return;
                     if (const auto invalidated = child<std::vector<Glib::ustring>>(values, 2);
                         invalidated && !invalidated->empty())
                         readProperties();
                     if (const auto properties = child<Properties>(values, 1))
                         note(*properties);
                 });
    readProperties();
}

void LoginSession::readProperties() {
    service.call(
        path, propertiesInterface, "GetAll",
        Glib::Variant<std::tuple<Glib::ustring>>::create({sessionInterface}),
        [this](const BusService::Values& values) {
            certain = true;
            note(child<Properties>(values, 0).value_or(Properties()));
        },
        [this] { giveUp(); });
}

void LoginSession::note(const Properties& properties) {
    read(properties, "LockedHint", lockedHint);
    read(properties, "Active", active);
    changed();
}

// Without a session of ours, nobody locks it.
void LoginSession::giveUp() {
    certain = true;
    lockedHint = false;
    active = true;
    changed();
}

} // namespace kelo::session
