#include "linux/desktop/ProgramVersion.h"

#include "base/Translation.h"
#include "bundle/InstalledBundle.h"

namespace kelo::desktop {

std::string programVersion() {
    bundle::InstalledBundle installed;
    return platform::versionString(installed);
}

gtk::ReportOption versionOption() {
    return {"version", translated("Show the version, then exit"),
            [] { return "Kelo " + programVersion() + "\n"; }};
}

} // namespace kelo::desktop
