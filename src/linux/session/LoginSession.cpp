#include "linux/session/LoginSession.h"

#include "linux/gobject/GLibHandles.h"

#include <string_view>
#include <utility>

namespace kelo::session {

namespace {

constexpr const char* managerName = "org.freedesktop.login1";
constexpr const char* managerPath = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";
constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
/// The caller's own session, or the user's graphical one if the caller belongs to none.
constexpr const char* ownSession = "auto";

/// Leaves the value as it was if there is none of this name and type.
void read(GVariant* properties, const char* name, bool& into) {
    gboolean value = FALSE;
    if (g_variant_lookup(properties, name, "b", &value))
        into = value;
}

void readSeat(GVariant* properties, std::string& into) {
    const char* name = nullptr;
    if (g_variant_lookup(properties, "Seat", "(&s&o)", &name, nullptr))
        into = name;
}

bool isOf(const gobject::GVariantPointer& answer, const char* type) {
    return answer && g_variant_is_of_type(answer.get(), G_VARIANT_TYPE(type));
}

} // namespace

LoginSession::LoginSession(bus::SharedConnection& systemBus, std::function<void()> changed)
    : changed(std::move(changed)),
      manager(systemBus, managerName, bus::Starting::never,
              [this](const bus::Connection& opened, const std::string& owner) {
                  managerChanged(opened, owner);
              }) {}

void LoginSession::managerChanged(const bus::Connection& opened, const std::string& owner) {
    change.reset();
    calls.reset();
    if (owner.empty())
        return giveUp();
    connection = opened;
    properties = {owner, "", propertiesInterface};
    calls.emplace();
    calls->call(connection, {owner, managerPath, managerInterface}, "GetSession",
                g_variant_new("(s)", ownSession),
                [this](const gobject::GVariantPointer& answer, const gobject::GErrorPointer&) {
                    if (!isOf(answer, "(o)"))
                        return giveUp();
                    const char* path = nullptr;
                    g_variant_get(answer.get(), "(&o)", &path);
                    found(path);
                });
}

void LoginSession::found(const std::string& path) {
    properties.path = path;
    // Subscribed before it is asked: a change in between would be lost otherwise.
    change.emplace(connection, properties, "PropertiesChanged",
                   [this](const std::string&, GVariant* values) { propertiesChanged(values); });
    readProperties();
}

void LoginSession::readProperties() {
    calls->call(connection, properties, "GetAll", g_variant_new("(s)", sessionInterface),
                [this](const gobject::GVariantPointer& answer, const gobject::GErrorPointer&) {
                    if (!isOf(answer, "(a{sv})"))
                        return giveUp();
                    certain = true;
                    const gobject::GVariantPointer all(g_variant_get_child_value(answer.get(), 0));
                    note(all.get());
                });
}

void LoginSession::propertiesChanged(GVariant* values) {
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(sa{sv}as)")))
        return;
    const char* interface = nullptr;
    g_variant_get_child(values, 0, "&s", &interface);
    if (std::string_view(interface) != sessionInterface)
        return;
    const gobject::GVariantPointer invalidated(g_variant_get_child_value(values, 2));
    if (g_variant_n_children(invalidated.get()) > 0)
        readProperties();
    const gobject::GVariantPointer known(g_variant_get_child_value(values, 1));
    note(known.get());
}

void LoginSession::note(GVariant* known) {
    read(known, "LockedHint", lockedHint);
    read(known, "Active", active);
    readSeat(known, seatName);
    tell();
}

// Without a session of ours, nobody locks it, and whoever is here sits at the first seat.
void LoginSession::giveUp() {
    certain = true;
    lockedHint = false;
    active = true;
    seatName = firstSeat;
    tell();
}

void LoginSession::tell() {
    // A copy, because it may destroy this object.
    const auto told = changed;
    told();
}

std::unique_ptr<SeatSession> followSeatSession(SeatSession::Changed changed) {
    const auto systemBus = std::make_shared<bus::SharedConnection>(bus::systemAddress());
    return std::make_unique<LoginSession>(*systemBus, std::move(changed));
}

} // namespace kelo::session
