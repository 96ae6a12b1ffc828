#include "linux/desktop/ProgramVersion.h"

#include "bundle/InstalledBundle.h"

namespace kelo::desktop {

std::string programVersion() {
    bundle::InstalledBundle installed;
    return platform::versionString(installed);
}

gtk::ReportOption versionOption() {
    return {"version", "Show the version, then exit",
            [] { return "Kelo " + programVersion() + "\n"; }};
}

} // namespace kelo::desktop
