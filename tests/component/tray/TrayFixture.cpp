#include "component/tray/TrayFixture.h"

#include "linux/gobject/GObjectPointer.h"

#include <giomm/dbuserror.h>
#include <giomm/init.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

namespace kelo::tests {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* description =
    R"xml(<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
</interface></node>)xml";

Glib::RefPtr<Gio::DBus::Connection> connect() {
    Gio::init();
    return Gio::DBus::Connection::create_for_address_sync(
        Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
        Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
            Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
}

/// Removes the type annotations of empty containers.
std::string plain(std::string text) {
    for (const std::string type : {"@av ", "@a{sv} "})
        for (auto at = text.find(type); at != std::string::npos; at = text.find(type))
            text.erase(at, type.size());
    return text;
}

void askBus(TrayFixture& tray, const char* method, const std::string& arguments) {
    tray.theirs->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                           Glib::VariantContainerBase(g_variant_new_parsed(arguments.c_str())),
                           "org.freedesktop.DBus");
}

} // namespace

TrayFixture::TrayFixture() : ours(connect()), theirs(connect()) {
    const auto item = [this](const std::string& event) { return [this, event] { note(event); }; };
    content = {platform::MenuItem{"Open Kelo", true, item("open")},
               platform::MenuSeparator{},
               platform::MenuItem{"Check for Updates…", true, item("check")},
               platform::SettingsLink{"Settings…"},
               platform::MenuSeparator{},
               platform::MenuItem{"Quit Kelo", true, item("quit"),
                                  platform::KeyboardShortcut{"q", platform::KeyModifier::command}}};
    subscription = theirs->signal_subscribe(
        [this](const Glib::RefPtr<Gio::DBus::Connection>&, const Glib::ustring&,
               const Glib::ustring&, const Glib::ustring&, const Glib::ustring& name,
               const Glib::VariantContainerBase& values) {
            signals.push_back(name.raw() + " " + values.print(false).raw());
        },
        ours->get_unique_name());
}

TrayFixture::~TrayFixture() {
    theirs->signal_unsubscribe(subscription);
    shown.reset();
}

void TrayFixture::show() {
    platform::MenuBarExtra extra{"Kelo", "brain", {[this] { return content; }}};
    shown = std::make_unique<tray::TrayItem>(
        ours, "/StatusNotifierItem", "app.kelo.Kelo", extra, icon,
        tray::TrayItem::Handlers{[this] { note("activate"); }, [this] { note("settings"); },
                                 [this](const std::string& token) {
                                     if (!token.empty())
                                         note("token " + token);
                                 }});
}

TrayFixture::Answer TrayFixture::call(const std::string& path, const std::string& interface,
                                      const std::string& method, const std::string& arguments) {
    Answer answer;
    bool isThere = false;
    theirs->call(
        path, interface, method,
        Glib::VariantContainerBase(g_variant_new_parsed(arguments.c_str())),
        [&](const Glib::RefPtr<Gio::AsyncResult>& result) {
            isThere = true;
            GError* failure = nullptr;
            GVariant* values =
                g_dbus_connection_call_finish(theirs->gobj(), result->gobj(), &failure);
            if (values) {
                answer.values = Glib::VariantContainerBase(values);
                answer.text = plain(answer.values.print(false));
            } else {
                const gobject::GErrorPointer owner(failure);
                const gobject::GText name(g_dbus_error_get_remote_error(failure));
                answer.error = name ? name.get() : failure->message;
            }
        },
        ours->get_unique_name());
    until("an answer to " + method, [&] { return isThere; });
    return answer;
}

TrayFixture::Answer TrayFixture::menu(const std::string& method, const std::string& arguments) {
    return call("/StatusNotifierItem/Menu", menuInterface, method, arguments);
}

TrayFixture::Answer TrayFixture::item(const std::string& method, const std::string& arguments) {
    return call("/StatusNotifierItem", itemInterface, method, arguments);
}

void TrayFixture::until(const std::string& what, const std::function<bool()>& condition) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(20);
    const guint tick = g_timeout_add(
        100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while (!condition() && Clock::now() < end)
        g_main_context_iteration(nullptr, TRUE);
    g_source_remove(tick);
    if (!condition())
        throw std::runtime_error("never happened: " + what);
}

void TrayFixture::settle() {
    // Signals and replies of one client arrive in order, and posted jobs run in order.
    bool isPosted = false;
    mainLoop.post([&] { isPosted = true; });
    until("the jobs have run", [&] { return isPosted; });
    call("/StatusNotifierItem", "org.freedesktop.DBus.Peer", "Ping", "()");
}

FakeWatcher::FakeWatcher(TrayFixture& tray, std::vector<std::string> others)
    : tray(tray),
      object(tray.theirs, "/StatusNotifierWatcher", description,
             {{{"RegisterStatusNotifierItem",
                [this](const tray::ExportedObject::Values& arguments) {
                    Glib::Variant<Glib::ustring> path;
                    arguments.get_child(path, 0);
                    registered.push_back(path.get());
                    look(path.get());
                    return tray::ExportedObject::Values();
                }}},
              {}}),
      names(std::move(others)) {
    names.emplace_back("org.kde.StatusNotifierWatcher");
    for (const std::string& name : names)
        askBus(tray, "RequestName", ("('" + name + "', uint32 0)").c_str());
}

FakeWatcher::~FakeWatcher() {
    for (const std::string& name : names)
        askBus(tray, "ReleaseName", ("('" + name + "',)").c_str());
}

void FakeWatcher::look(const std::string& path) {
    const auto ask = [this](const std::string& object, const char* interface, const char* method,
                            const char* arguments, std::function<void(const std::string&)> then) {
        tray.theirs->call(
            object, interface, method, Glib::VariantContainerBase(g_variant_new_parsed(arguments)),
            [this, then,
             weak = std::weak_ptr(alive)](const Glib::RefPtr<Gio::AsyncResult>& result) {
                if (weak.expired())
                    return;
                try {
                    then(tray.theirs->call_finish(result).print(false));
                } catch (const Glib::Error& error) {
                    ADD_FAILURE() << "registered before it was there: " << error.what();
                }
            },
            tray.ours->get_unique_name());
    };
    ask(path, "org.freedesktop.DBus.Properties", "Get", "('org.kde.StatusNotifierItem', 'Id')",
        [this](const std::string& answer) { identifiers.push_back(answer); });
    ask(path + "/Menu", menuInterface, "GetLayout", "(0, -1, @as [])",
        [this](const std::string&) { ++layouts; });
}

} // namespace kelo::tests
