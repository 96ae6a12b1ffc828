#include "updater/UpdateTexts.h"

#include "updater/appcast/Version.h"

namespace kelo::updater {

UpdateMessage upToDateMessage(const UpdaterSettings& settings) {
    return {settings.programName + " is up to date", settings.programName + " " +
                                                         settings.installedDisplayVersion +
                                                         " is the newest version there is."};
}

UpdateMessage unsupportedMessage(const UpdaterSettings& settings, const AppcastItem& item,
                                 const SystemDescription& system) {
    const bool tooOld =
        !item.minimumSystemVersion.empty() && isOlder(system.version, item.minimumSystemVersion);
    const std::string version = settings.programName + " " + item.displayVersion();
    return {"This computer cannot run the newest version",
            tooOld ? version + " is available, but needs a newer system than this one. Update "
                               "the system first, then check again."
                   : version + " is available, but was made for an older system than this one. "
                               "Please check again later."};
}

UpdateMessage notSetUpMessage(const UpdaterSettings& settings) {
    if (settings.feedRefused)
        return {"Updates are not set up safely",
                "This copy of " + settings.programName +
                    " has an update address that is not secure (https), so it is not used. Please "
                    "ask its publisher."};
    return {"Updates are not set up",
            "This copy of " + settings.programName +
                " was built without an update address. Get newer versions from where you got this "
                "one."};
}

UpdateMessage noLinkMessage(const UpdaterSettings& settings, const AppcastItem& item) {
    return {"A newer version is available",
            settings.programName + " " + item.displayVersion() +
                " cannot be installed from here. Get it from where you got this copy."};
}

UpdateMessage handedOverMessage(const UpdaterSettings& settings, const AppcastItem& item) {
    return {"The update is ready to install",
            settings.programName + " " + item.displayVersion() +
                " was verified and opened in the system's installer. Follow the steps there, then "
                "start " +
                settings.programName + " again."};
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
