#include "component/bus/StartingBus.h"

#include "component/ScopedMainLoop.h"
#include "linux/bus/Connection.h"

#include <fstream>
#include <utility>

namespace kelo::test {

StartingBus::StartingBus(std::filesystem::path folder, const std::vector<std::string>& services)
    : folder(std::move(folder)) {
    for (const std::string& service : services)
        std::ofstream(this->folder / (service + ".service"))
            << "[D-BUS Service]\nName=" << service << "\nExec=/usr/bin/touch "
            << fileOf(service).string() << "\n";
    const auto configuration = this->folder / "starting.conf";
    std::ofstream(configuration)
        << "<busconfig><type>session</type><listen>unix:dir=" << this->folder.string()
        << "</listen><servicedir>" << this->folder.string()
        << "</servicedir><policy context='default'><allow send_destination='*' "
           "eavesdrop='true'/><allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
    daemon = Child(
        {"dbus-daemon", "--nofork", "--print-address=1", "--config-file=" + configuration.string()},
        {});
    address_ = daemon.readLine();
}

std::filesystem::path StartingBus::fileOf(const std::string& service) const {
    return folder / (service + ".started");
}

bool StartingBus::hasStarted(const std::string& service) const {
    return std::filesystem::exists(fileOf(service));
}

bool StartingBus::waitUntilStarted(const std::string& service) const {
    // Wakes the loop up.
    const auto file =
        gobject::GObjectPointer<GFile>::adopt(g_file_new_for_path(fileOf(service).c_str()));
    const auto monitor = gobject::GObjectPointer<GFileMonitor>::adopt(
        g_file_monitor_file(file.get(), G_FILE_MONITOR_NONE, nullptr, nullptr));
    return ScopedMainLoop::runUntil([&] { return hasStarted(service); });
}

bool StartingBus::start(const std::string& service) const {
    const bus::Connection connection = bus::openConnection(address_);
    if (!connection)
        return false;
    g_dbus_connection_call(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "StartServiceByName",
                           g_variant_new("(su)", service.c_str(), 0U), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    return waitUntilStarted(service);
}

} // namespace kelo::test
