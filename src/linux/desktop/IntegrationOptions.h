#pragma once

#include "linux/command/Report.h"

namespace kelo::desktop {

/// --integrate
command::ReportOption integrateOption();
/// --remove
command::ReportOption removeOption();

} // namespace kelo::desktop
