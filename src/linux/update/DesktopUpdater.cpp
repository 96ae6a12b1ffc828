#include "linux/update/DesktopUpdater.h"

#include "base/Translation.h"
#include "bundle/ProgramPlace.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/gobject/WorkerThread.h"
#include "linux/startup/OwnVariables.h"
#include "linux/update/DesktopNetwork.h"
#include "linux/update/SoupTransport.h"
#include "posix/SystemClock.h"
#include "updater/Updater.h"
#include "updater/appcast/Version.h"
#include "updater/install/SystemInstaller.h"
#include "updater/tree/ProgramStart.h"

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

void writeToLog(const std::string& line) {
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

/// The system as the names of packages end with it. cmake/PackageVersion.cmake makes them.
std::string packageSystem() {
    const gobject::GText identifier(g_get_os_info(G_OS_INFO_KEY_ID));
    const gobject::GText number(g_get_os_info(G_OS_INFO_KEY_VERSION_ID));
    const gobject::GText name(g_get_os_info(G_OS_INFO_KEY_VERSION_CODENAME));
    if (!identifier || !(number || name))
        return {};
    const std::string system = identifier.get();
    return (system == "debian" ? "deb" : system) + (number ? number.get() : name.get());
}

/// The processor's name as packages of this system have it.
std::string packageArchitecture() {
    const std::string machine = thisSystem().architecture;
    if (machine == "x86_64")
        return "amd64";
    return machine == "aarch64" ? "arm64" : machine;
}

/// Whether it is one of the variables that this program set for itself.
bool isOurs(const std::string& setting) {
    const auto variables = startup::ownVariables();
    return std::any_of(variables.begin(), variables.end(),
                       [&](const std::string& name) { return setting.starts_with(name + "="); });
}

/// This process's environment without those variables.
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

/// The compiled-in authority, for the feed's host as well as for the service's.
std::shared_ptr<const http::TrustedAuthority>
authorityFor(const updater::UpdaterSettings& settings) {
    return settings.feed ? http::TrustedAuthority::compiledInFor(settings.feed->host())
                         : http::TrustedAuthority::compiledIn();
}

/// The services that the updater works with.
struct Services {
    Services(const updater::UpdaterSettings& settings, std::function<void()> terminate)
        : transport(authorityFor(settings)),
          installer(
              updater::findInstalledCopy(bundle::programPath(), g_get_home_dir()), worker,
              {std::move(terminate), environmentAsFound, packageSystem(), packageArchitecture()}) {}

    posix::SystemClock clock;
    DesktopNetwork network;
    SoupTransport transport;
    gobject::WorkerThread worker;
    updater::SystemInstaller installer;
};

/// Services is the first base class, so that it is constructed before the updater that refers to it
/// and destroyed after it.
class DesktopUpdater final : Services, public updater::Updater {
public:
    template <typename MakeContext>
    DesktopUpdater(const updater::UpdaterSettings& settings, std::function<void()> terminate,
                   const MakeContext& makeContext)
        : Services(settings, std::move(terminate)),
          updater::Updater(makeContext(static_cast<Services&>(*this))) {}
};

std::shared_ptr<updater::FileStateStore> stateStore() {
    const std::filesystem::path states = g_get_user_state_dir();
    return std::make_shared<updater::FileStateStore>(states / "kelo" / "updater", writeToLog);
}

updater::UpdaterSettings settingsOf(platform::Bundle& bundle) {
    return updater::UpdaterSettings(
        bundle.infoDictionary().value_or(platform::InformationDictionary()));
}

std::string takenBackSentence(const updater::UpdaterSettings& settings,
                              const updater::TreeUpdate& failed) {
    return translated(
        "%1 %2 did not start on this computer, so %1 %3 was put back. You can go on with it; tell "
        "the publisher of %1, and try again with the version that follows.",
        {settings.programName, failed.shownVersion, settings.installedDisplayVersion});
}

} // namespace

std::unique_ptr<platform::StandardUpdaterController> makeStandardUpdaterController(
    platform::Bundle& bundle, std::function<std::unique_ptr<updater::UserDriver>()> makeUserDriver,
    std::function<void(const std::string& address)> openLink, std::function<void()> terminate) {
    const std::filesystem::path caches = g_get_user_cache_dir();
    const updater::UpdaterSettings settings = settingsOf(bundle);
    const auto makeContext = [&](Services& services) {
        return updater::UpdaterContext{
            settings,
            thisSystem(),
            caches / "kelo" / "updates",
            services.transport,
            services.installer,
            services.worker,
            services.clock,
            services.network,
            stateStore(),
            std::move(makeUserDriver),
            [openLink = std::move(openLink)](const Url& url) { openLink(url.absoluteString()); },
            [] { return std::random_device()(); },
            writeToLog};
    };
    auto made = std::make_unique<DesktopUpdater>(settings, std::move(terminate), makeContext);
    made->start();
    return made;
}

Task<void> tellOfFailedUpdate(platform::Bundle& bundle, updater::TreeUpdate failed,
                              std::unique_ptr<updater::UserDriver> driver) {
    const updater::UpdaterSettings settings = settingsOf(bundle);
    const auto store = stateStore();
    updater::UpdaterState state = store->load();
    if (state.skippedVersion.empty() || updater::isOlder(state.skippedVersion, failed.version)) {
        state.skippedVersion = failed.version;
        store->save(state);
    }
    co_await driver->showFailure(takenBackSentence(settings, failed));
    driver->dismiss();
}

void relaunchAfterThisProcess(const std::string& program) {
    if (!updater::relaunchAfterThisProcess(program, environmentAsFound()))
        g_warning("The program could not be told to start again");
}

} // namespace kelo::update
