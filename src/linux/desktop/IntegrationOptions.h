#pragma once

#include "linux/gtk/application/CommandLine.h"

namespace kelo::desktop {

/// --integrate
gtk::ReportOption integrateOption();
/// --remove
gtk::ReportOption removeOption();

} // namespace kelo::desktop
