#include "linux/bundle/InstalledBundle.h"

#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"

namespace kelo::desktop {

std::optional<platform::InformationDictionary> InstalledBundle::infoDictionary() {
    const auto prefix = bundle::installationPrefix(bundle::programPath());
    return bundle::readInformationFile(bundle::informationPath(prefix));
}

} // namespace kelo::desktop
