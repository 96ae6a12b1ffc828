#pragma once

#include "linux/gtk/application/CommandLine.h"

#include <string>

namespace kelo::desktop {

/// Version and build of the installed program, "1.4.2 (57)", with "?" for what it does not say.
std::string programVersion();

/// --version
gtk::ReportOption versionOption();

} // namespace kelo::desktop
