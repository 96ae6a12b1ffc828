#pragma once

#include "updater/appcast/AppcastItem.h"
#include "updater/appcast/XmlDocument.h"

namespace kelo::updater {

/// What the "item" element says. Throws std::invalid_argument, with the reason for the journal, for
/// an item that cannot be an update: no version, neither archive nor link, an archive that is not
/// fetched over https, a difference to one old version.
AppcastItem readAppcastItem(const XmlElement& element);

} // namespace kelo::updater
