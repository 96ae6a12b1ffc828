#include "linux/update/DesktopUpdater.h"

#include "bundle/ProgramPlace.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/startup/RendererChoice.h"
#include "linux/update/SoupTransport.h"
#include "updater/FileStateStore.h"
#include "updater/Updater.h"
#include "updater/install/SystemInstaller.h"

#include <glib.h>
#include <gnu/libc-version.h>
#include <sys/utsname.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <utility>
#include <vector>

namespace kelo::update {

namespace {

class SystemClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override {
        return std::chrono::system_clock::now();
    }
};

void writeToJournal(const std::string& line) {
    g_message("%s", line.c_str());
}

updater::SystemDescription thisSystem() {
    updater::SystemDescription system;
    utsname names{};
    if (uname(&names) == 0)
        system.architecture = names.machine;
    system.version = gnu_get_libc_version();
    return system;
}

bool isOurs(const std::string& setting) {
    const auto& variables = startup::rendererVariables();
    return std::any_of(variables.begin(), variables.end(),
                       [&](const std::string& name) { return setting.starts_with(name + "="); });
}

std::vector<std::string> environmentAsFound() {
    struct ListDeleter {
        void operator()(char** list) const { g_strfreev(list); }
    };
    const std::unique_ptr<char*, ListDeleter> settings(g_get_environ());
    std::vector<std::string> kept;
    for (char** setting = settings.get(); *setting; ++setting)
        if (!isOurs(*setting))
            kept.emplace_back(*setting);
    return kept;
}

updater::InstallerHost installerHost(std::function<void()> terminate) {
    updater::InstallerHost host;
    host.terminate = std::move(terminate);
    host.environment = environmentAsFound;
    return host;
}

class DesktopUpdater final : public platform::StandardUpdaterController {
public:
    explicit DesktopUpdater(UpdaterSurroundings surroundings)
        : transport(http::TrustedAuthority::compiledIn()),
          installer(updater::findInstalledCopy(bundle::programPath(), g_get_home_dir()), worker,
                    installerHost(std::move(surroundings.terminate))),
          updater(parts(surroundings)) {
        updater.start();
    }

    void checkForUpdates() override { updater.checkForUpdates(); }

private:
    updater::UpdaterParts parts(UpdaterSurroundings& surroundings) {
        const auto open = [openLink = std::move(surroundings.openLink)](const Url& url) {
            openLink(url.absoluteString());
        };
        const std::filesystem::path states = g_get_user_state_dir();
        const std::filesystem::path caches = g_get_user_cache_dir();
        return {
            updater::UpdaterSettings(
                surroundings.bundle.infoDictionary().value_or(platform::InformationDictionary())),
            thisSystem(),
            caches / "kelo" / "updates",
            transport,
            installer,
            worker,
            clock,
            std::make_shared<updater::FileStateStore>(states / "kelo" / "updater", writeToJournal),
            std::move(surroundings.makeUserDriver),
            open,
            [] { return std::random_device()(); },
            writeToJournal};
    }

    SystemClock clock;
    SoupTransport transport;
    gobject::WorkerThread worker;
    updater::SystemInstaller installer;
    updater::Updater updater;
};

} // namespace

std::unique_ptr<platform::StandardUpdaterController>
makeStandardUpdaterController(UpdaterSurroundings surroundings) {
    return std::make_unique<DesktopUpdater>(std::move(surroundings));
}

} // namespace kelo::update
