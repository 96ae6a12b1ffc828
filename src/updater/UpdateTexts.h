#pragma once

#include "updater/UpdateSelection.h"
#include "updater/UpdaterSettings.h"
#include "updater/appcast/AppcastItem.h"
#include "updater/driver/UserDriver.h"

#include <string>

namespace kelo::updater {

/// Heading and sentence of a message window.
struct UpdateMessage {
    std::string heading;
    std::string sentence;
};

UpdateMessage upToDateMessage(const UpdaterSettings& settings);
UpdateMessage unsupportedMessage(const UpdaterSettings& settings, const AppcastItem& item,
                                 const SystemDescription& system);
UpdateMessage notSetUpMessage(const UpdaterSettings& settings);
/// obstacle: what the user can do so that it can be installed, as a sentence; may be empty.
UpdateMessage noLinkMessage(const UpdaterSettings& settings, const AppcastItem& item,
                            const std::string& obstacle);
UpdateMessage handedOverMessage(const UpdaterSettings& settings, const AppcastItem& item);

/// The offer for the user, without release notes.
UpdateOffer offerOf(const UpdaterSettings& settings, const SelectedUpdate& update);

} // namespace kelo::updater
