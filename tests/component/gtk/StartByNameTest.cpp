#include "component/gtk/RunningProgram.h"
#include "deployment/Deployment.h"
#include "testing/TemporaryFolder.h"

#include <giomm/dbusconnection.h>
#include <giomm/init.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace kelo::tests {
namespace {

using Parameters = std::vector<Glib::VariantBase>;
using Data = std::map<Glib::ustring, Glib::VariantBase>;

/// The session bus starts the program, as a desktop does that finds "DBusActivatable" in its entry.
class StartByName : public testing::Test {
protected:
    StartByName() {
        const auto services =
            std::filesystem::path(Glib::getenv("XDG_DATA_HOME")) / "dbus-1" / "services";
        std::filesystem::create_directories(services);
        service = services / (name + ".service");
        // The command of the installed file, with its output where it can be read.
        std::ofstream(service) << "[D-BUS Service]\nName=" << name
                               << "\nExec=/bin/sh -c \"exec " KELO_START_PROGRAM " --background >'"
                               << output << "'\"\n";
        ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig",
            {});
    }
    ~StartByName() override { std::filesystem::remove(service); }

    void ask(const std::string& owner, const std::string& path, const std::string& interface,
             const std::string& method, const Glib::VariantContainerBase& parameters) {
        bus->call_sync(path, interface, method, parameters, owner, milliseconds);
    }
    /// What the program printed until it ended.
    std::string told() {
        RunningProgram::until("the program has ended", [&] {
            const auto owned = bus->call_sync(
                "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                Glib::Variant<std::tuple<Glib::ustring>>::create({name}), "org.freedesktop.DBus");
            return owned.print() == "(false,)";
        });
        std::ostringstream text;
        text << std::ifstream(output).rdbuf();
        return text.str();
    }

    static constexpr int milliseconds = 20000;
    const std::string name{deployment::applicationIdentifier};
    const test::TemporaryFolder folder;
    const std::string output = folder / "output";
    std::filesystem::path service;
    const Glib::RefPtr<Gio::DBus::Connection> bus = [] {
        Gio::init();
        return Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    }();
};

TEST_F(StartByName, OpensTheWindow) {
    ask(name, "/app/kelo/Kelo", "org.freedesktop.Application", "Activate",
        Glib::Variant<std::tuple<Data>>::create({Data{}}));
    EXPECT_EQ(told(), "body\nappear\n");
}

TEST_F(StartByName, WithAnActionRunsItAndOpensNoWindow) {
    ask(name, "/app/kelo/Kelo", "org.freedesktop.Application", "ActivateAction",
        Glib::Variant<std::tuple<Glib::ustring, Parameters, Data>>::create({"wave", {}, Data{}}));
    EXPECT_EQ(told(), "body\nwave\n");
}

TEST_F(StartByName, ToQuitEndsWithoutAWindow) {
    ask(name, "/app/kelo/Kelo", "org.freedesktop.Application", "ActivateAction",
        Glib::Variant<std::tuple<Glib::ustring, Parameters, Data>>::create({"quit", {}, Data{}}));
    EXPECT_EQ(told(), "body\n");
}

} // namespace
} // namespace kelo::tests
