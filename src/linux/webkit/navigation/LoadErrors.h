#pragma once

#include "base/Url.h"

#include <glib.h>

#include <optional>
#include <string>

namespace kelo::webkit {

/// Whether a load has ended because another came in its place, or because it became a download.
bool isReplaced(const GError& error);

/// Whether the engine has lost a load through its own fault, so that it may be repeated.
bool isLostByTheEngine(const GError& error);

/// What to call a page that could not be reached. Nothing: its address is no URL. isOnline: whether
/// this computer has a network.
std::string unreachableHeading(const std::optional<Url>& page, bool isOnline);

/// Whether this computer has a network, as far as the desktop knows.
bool isOnline();

} // namespace kelo::webkit
