#include "updater/UpdateTexts.h"

#include "base/Translation.h"
#include "updater/appcast/Version.h"

namespace kelo::updater {

UpdateMessage upToDateMessage(const UpdaterSettings& settings) {
    return {translated("%1 is up to date", {settings.programName}),
            translated("%1 %2 is the newest version there is.",
                       {settings.programName, settings.installedDisplayVersion})};
}

UpdateMessage unsupportedMessage(const UpdaterSettings& settings, const AppcastItem& item,
                                 const SystemDescription& system) {
    const bool tooOld =
        !item.minimumSystemVersion.empty() && isOlder(system.version, item.minimumSystemVersion);
    const std::string version = item.displayVersion();
    return {translated("This computer cannot run the newest version"),
            tooOld ? translated("%1 %2 is available, but needs a newer system than this one. "
                                "Update the system first, then check again.",
                                {settings.programName, version})
                   : translated("%1 %2 is available, but was made for an older system than this "
                                "one. Please check again later.",
                                {settings.programName, version})};
}

UpdateMessage notSetUpMessage(const UpdaterSettings& settings) {
    if (settings.feedRefused)
        return {translated("Updates are not set up safely"),
                translated("This copy of %1 has an update address that is not secure (https), so "
                           "it is not used. Please ask its publisher.",
                           {settings.programName})};
    return {translated("Updates are not set up"),
            translated("This copy of %1 was built without an update address. Get newer versions "
                       "from where you got this one.",
                       {settings.programName})};
}

UpdateMessage noLinkMessage(const UpdaterSettings& settings, const AppcastItem& item,
                            const std::string& obstacle) {
    if (!obstacle.empty())
        return {translated("A newer version is available"),
                translated("%1 %2 cannot be installed from here.",
                           {settings.programName, item.displayVersion()}) +
                    " " + obstacle};
    return {translated("A newer version is available"),
            translated("%1 %2 cannot be installed from here. Get it from where you got this copy.",
                       {settings.programName, item.displayVersion()})};
}

UpdateMessage handedOverMessage(const UpdaterSettings& settings, const AppcastItem& item) {
    return {translated("The update is ready to install"),
            translated("%1 %2 was verified and opened in the system's installer. Follow the steps "
                       "there, then start %1 again.",
                       {settings.programName, item.displayVersion()})};
}

UpdateOffer offerOf(const UpdaterSettings& settings, const SelectedUpdate& update) {
    UpdateOffer offer;
    offer.programName = settings.programName;
    offer.installedVersion = settings.installedDisplayVersion;
    offer.offeredVersion = update.item.displayVersion();
    // If the versions that users see are equal, add the build numbers that differ.
    if (offer.installedVersion == offer.offeredVersion) {
        offer.installedVersion += " (" + settings.installedVersion + ")";
        offer.offeredVersion += " (" + update.item.version + ")";
    }
    offer.informationalOnly = update.informational;
    offer.critical = update.critical && !update.major;
    return offer;
}

} // namespace kelo::updater
