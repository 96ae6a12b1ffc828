#pragma once

#include "updater/UpdateSelection.h"
#include "updater/UpdaterSettings.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/driver/UserDriver.h"

#include <string>

namespace kelo::updater {

/// A heading and a sentence for a window.
struct UpdateMessage {
    std::string heading;
    std::string sentence;
};

UpdateMessage upToDateMessage(const UpdaterSettings& settings);
UpdateMessage unsupportedMessage(const UpdaterSettings& settings, const AppcastItem& item,
                                 const SystemDescription& system);
UpdateMessage notSetUpMessage(const UpdaterSettings& settings);
UpdateMessage noLinkMessage(const UpdaterSettings& settings, const AppcastItem& item);
UpdateMessage handedOverMessage(const UpdaterSettings& settings, const AppcastItem& item);

/// Everything about an offer but its notes.
UpdateOffer offerOf(const UpdaterSettings& settings, const SelectedUpdate& update);

} // namespace kelo::updater
