#include "SessionBus.h"

#include "component/ScopedMainLoop.h"

#include <csignal>
#include <fstream>

namespace kelo {

using gobject::GErrorPointer;
using gobject::GObjectPointer;
using gobject::GText;

Child::Child(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    const auto flags = static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE |
                                                     G_SUBPROCESS_FLAGS_STDOUT_PIPE);
    const auto launcher =
        GObjectPointer<GSubprocessLauncher>::adopt(g_subprocess_launcher_new(flags));
    for (const std::string& assignment : environment) {
        const std::size_t equals = assignment.find('=');
        g_subprocess_launcher_setenv(launcher.get(), assignment.substr(0, equals).c_str(),
                                     assignment.substr(equals + 1).c_str(), TRUE);
    }
    std::vector<const char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(argument.c_str());
    arguments.push_back(nullptr);
    GError* error = nullptr;
    process = GObjectPointer<GSubprocess>::adopt(
        g_subprocess_launcher_spawnv(launcher.get(), arguments.data(), &error));
    const GErrorPointer failure(error);
    if (!process)
        g_error("cannot start %s: %s", command.front().c_str(), failure->message);
    output = GObjectPointer<GDataInputStream>::adopt(
        g_data_input_stream_new(g_subprocess_get_stdout_pipe(process.get())));
}

Child::~Child() {
    if (process)
        kill();
}

void Child::write(const std::string& text) const {
    g_output_stream_write_all(g_subprocess_get_stdin_pipe(process.get()), text.data(), text.size(),
                              nullptr, nullptr, nullptr);
}

void Child::closeInput() const {
    g_output_stream_close(g_subprocess_get_stdin_pipe(process.get()), nullptr, nullptr);
}

std::string Child::readLine() const {
    const GText line(g_data_input_stream_read_line(output.get(), nullptr, nullptr, nullptr));
    return line ? line.get() : "";
}

pid_t Child::identifier() const {
    return static_cast<pid_t>(std::stol(g_subprocess_get_identifier(process.get())));
}

void Child::kill() const {
    g_subprocess_force_exit(process.get());
    g_subprocess_wait(process.get(), nullptr, nullptr);
}

void Child::suspend() const {
    g_subprocess_send_signal(process.get(), SIGSTOP);
}

void Child::resume() const {
    g_subprocess_send_signal(process.get(), SIGCONT);
}

namespace {

std::string configuration(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "bus.conf";
    std::ofstream(file) << "<busconfig><type>session</type><listen>unix:dir=" << folder.string()
                        << "</listen><auth>EXTERNAL</auth><policy context='default'>"
                           "<allow send_destination='*' eavesdrop='true'/>"
                           "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
    return file;
}

} // namespace

SessionBus::SessionBus(const std::filesystem::path& folder)
    : daemon({"dbus-daemon", "--nofork", "--print-address=1",
              "--config-file=" + configuration(folder)},
             {}),
      address_(daemon.readLine()) {
    const auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_ = GObjectPointer<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(address_.c_str(), flags, nullptr, nullptr, nullptr));
    g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
}

namespace {

enum class Ownership { unknown, owned, free };

bool waitFor(GDBusConnection* connection, const char* name, Ownership wanted) {
    Ownership seen = Ownership::unknown;
    const guint watch = g_bus_watch_name_on_connection(
        connection, name, G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, const gchar*, gpointer data) {
            *static_cast<Ownership*>(data) = Ownership::owned;
        },
        [](GDBusConnection*, const gchar*, gpointer data) {
            *static_cast<Ownership*>(data) = Ownership::free;
        },
        &seen, nullptr);
    const bool came = ScopedMainLoop::runUntil([&] { return seen == wanted; });
    g_bus_unwatch_name(watch);
    return came;
}

} // namespace

bool SessionBus::waitForName(const char* name) const {
    return waitFor(connection_.get(), name, Ownership::owned);
}

bool SessionBus::waitForNoName(const char* name) const {
    return waitFor(connection_.get(), name, Ownership::free);
}

bool SessionBus::ping(const char* name) const {
    return GVariantPointer(g_dbus_connection_call_sync(
               connection_.get(), name, "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
               G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr)) != nullptr;
}

GVariantPointer SessionBus::call(const char* interface, const char* method,
                                 GVariant* parameters) const {
    GError* error = nullptr;
    GVariantPointer result(g_dbus_connection_call_sync(
        connection_.get(), "org.freedesktop.secrets", "/org/freedesktop/secrets", interface, method,
        parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, &error));
    if (const GErrorPointer failure(error); failure)
        g_printerr("%s: %s\n", method, failure->message);
    return result;
}

bool SessionBus::lockKeyring() const {
    return call("org.freedesktop.Secret.Service", "Lock",
                g_variant_new_parsed(
                    "([objectpath '/org/freedesktop/secrets/aliases/default'],)")) != nullptr;
}

std::string SessionBus::makeCollection(const std::string& label) const {
    const auto opened = call("org.freedesktop.Secret.Service", "OpenSession",
                             g_variant_new_parsed("('plain', <''>)"));
    if (!opened)
        return "";
    const char* session = nullptr;
    g_variant_get(opened.get(), "(v&o)", nullptr, &session);
    const auto made = call(
        "org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface", "CreateWithMasterPassword",
        g_variant_new_parsed("({'org.freedesktop.Secret.Collection.Label': <%s>},"
                             " (%o, @ay [], @ay [], 'text/plain'))",
                             label.c_str(), session));
    const char* collection = "";
    if (made)
        g_variant_get(made.get(), "(&o)", &collection);
    return collection;
}

bool SessionBus::makeKeyringWithoutPassword(const std::string& label) const {
    const std::string collection = makeCollection(label);
    return !collection.empty() &&
           call("org.freedesktop.Secret.Service", "SetAlias",
                g_variant_new("(so)", "default", collection.c_str())) != nullptr;
}

} // namespace kelo
