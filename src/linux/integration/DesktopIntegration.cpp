#include "linux/integration/DesktopIntegration.h"

#include "base/Translation.h"
#include "base/async/MainLoop.h"
#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"
#include "deployment/Deployment.h"
#include "linux/bus/Connection.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/integration/MadeFiles.h"
#include "linux/integration/MenuFiles.h"
#include "linux/login/StartAtLogin.h"
#include "updater/tree/InstalledCopy.h"

#include <gio/gio.h>

#include <algorithm>
#include <chrono>
#include <system_error>

namespace kelo::integration {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds startedAfter{10};

std::string buildOf(const fs::path& tree) {
    const auto information = bundle::readInformationFile(bundle::informationPath(tree));
    return information ? platform::informationValue<std::string>(*information, "CFBundleVersion")
                             .value_or("")
                       : "";
}

bool isInstalledForAll(const Places& places) {
    const auto copy = updater::findInstalledCopy(places.program, places.home);
    if (copy.owner == updater::CopyOwner::packageManager)
        return true;
    std::error_code ignored;
    return std::ranges::any_of(places.systemData, [&](const fs::path& folder) {
        return folder != places.data && fs::exists(folder / entryPath(), ignored);
    });
}

/// The icons' folder must look newer than a cache of it, which otherwise hides what is new there.
void outdateIconCache(const Places& places) {
    std::error_code ignored;
    fs::last_write_time(places.data / "icons" / "hicolor", fs::file_time_type::clock::now(),
                        ignored);
}

/// A bus that started before its folder was there does not watch it.
void tellBus(const std::string& address) {
    constexpr int deadline = 2000; // ms
    const auto bus = address.empty() ? bus::Connection() : bus::openConnection(address);
    if (!bus)
        return;
    GError* failure = nullptr;
    const gobject::GVariantPointer answer(g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "ReloadConfig", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, deadline, nullptr, &failure));
    const gobject::GErrorPointer owned(failure);
    if (owned)
        g_debug("integration: the bus was not told: %s", owned->message);
}

fs::path loginEntry(const Places& places) {
    return places.config / "autostart" /
           (std::string(deployment::applicationIdentifier) + ".desktop");
}

void replaceAll(std::string& text, const std::string& old, const std::string& fresh) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += fresh.size())
        text.replace(at, old.size(), fresh);
}

/// Whoever had the copy start at login wants that also of where it is now.
void moveLoginEntry(const Places& places, const std::string& before) {
    auto text = readFile(loginEntry(places)).value_or("");
    const std::string now = places.program;
    if (before.empty() || before == now || text.find(login::entryText(before)) == text.npos)
        return;
    replaceAll(text, login::execWord(before), login::execWord(now));
    replaceAll(text, login::entryText(before), login::entryText(now));
    writeFile(loginEntry(places), text);
}

void removeLoginEntry(const Places& places, const std::string& program) {
    const auto text = readFile(loginEntry(places)).value_or("");
    std::error_code ignored;
    if (text.find(login::entryText(program)) != text.npos)
        fs::remove(loginEntry(places), ignored);
}

Outcome writeMenu(const Places& places, const MadeFiles::Contents& files) {
    MadeFiles made(places.data);
    if (const auto foreign = made.foreignAmong(files); !foreign.empty())
        return {false, translated("“%1” is there already and was not made by this command, so "
                                  "nothing was changed. Move it away and try again.",
                                  {foreign.string()})};
    const std::string before = made.program();
    try {
        made.write(files, places.program.string(),
                   buildOf(bundle::installationPrefix(places.program)));
        moveLoginEntry(places, before);
    } catch (const WriteFailure& failure) {
        return {false, translated("“%1” could not be written, so Kelo is not in the menu as it "
                                  "should be. See that there is room and that you may write "
                                  "there, then try again.",
                                  {failure.what()})};
    }
    outdateIconCache(places);
    return {true, translated("Kelo is in your menu now and starts from “%1”.",
                             {places.program.string()})};
}

} // namespace

Places Places::standard() {
    Places places{
        bundle::programPath(), g_get_home_dir(), g_get_user_data_dir(), g_get_user_config_dir(), {},
        bus::sessionAddress()};
    for (const char* const* folder = g_get_system_data_dirs(); *folder; ++folder)
        places.systemData.emplace_back(*folder);
    return places;
}

Outcome integrate(const Places& places) {
    if (isInstalledForAll(places))
        return {false, translated("Kelo is installed on this computer for everyone and has its "
                                  "place in the menu, so nothing was changed.")};
    const auto files = menuFiles(bundle::installationPrefix(places.program), places.program);
    if (!files)
        return {false, translated("This copy of Kelo was not unpacked from an archive, so nothing "
                                  "was changed. Unpack one, and give this command to its "
                                  "program.")};
    if (!canBeNamed(places.program))
        return {false, translated("A menu cannot hold the name of the folder that Kelo is in, so "
                                  "nothing was changed. Give the folder a plain name and try "
                                  "again.")};
    const Outcome outcome = writeMenu(places, *files);
    if (outcome.done)
        tellBus(places.bus);
    return outcome;
}

Outcome remove(const Places& places) {
    MadeFiles made(places.data);
    if (made.isEmpty())
        return {true, translated("This command has put nothing into your menu, so there was "
                                 "nothing to remove.")};
    removeLoginEntry(places, made.program());
    const auto kept = made.removeAll();
    outdateIconCache(places);
    tellBus(places.bus);
    if (!kept.empty())
        return {false, translated("“%1” was changed after Kelo had made it, so it stays. All else "
                                  "of Kelo's is gone from your menu.",
                                  {kept.front().string()})};
    return {true, translated("Kelo is gone from your menu. The copy itself and what you made with "
                             "it stay.")};
}

void follow(const Places& places) {
    const MadeFiles made(places.data);
    if (made.isEmpty() || places.program.empty() || isInstalledForAll(places))
        return;
    std::error_code ignored;
    const bool isThis = made.program() == places.program;
    const bool isOutdated =
        isThis && made.build() != buildOf(bundle::installationPrefix(places.program));
    if (!isOutdated && (isThis || fs::exists(made.program(), ignored)))
        return;
    const auto files = menuFiles(bundle::installationPrefix(places.program), places.program);
    if (files && canBeNamed(places.program))
        g_message("%s", writeMenu(places, *files).sentence.c_str());
}

void followLater() {
    MainLoop::main().scheduleTimer(startedAfter, [] { follow(Places::standard()); });
}

} // namespace kelo::integration
