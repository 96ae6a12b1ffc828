#pragma once

#include "base/Url.h"

#include <optional>
#include <string>
#include <vector>

namespace Gtk {
class Application;
}

namespace kelo::gtk {

/// The action that shows a page. Its parameter is the address, as text.
inline constexpr const char* showPageAction = "show-page";

/// Runs actions, by name, in the process of the program that is already running for this user, and
/// has it show the page. False if there is none, or no session bus. Needs no display, so that an
/// action on a desktop's shortcut key does not wait for the toolkit to start.
bool askRunningInstance(const std::vector<std::string>& actions, const std::optional<Url>& page);

/// Registers this process as the running one, unless there is one already. That one may be about to
/// end, and is then waited for.
void registerApplication(Gtk::Application& application);

} // namespace kelo::gtk
