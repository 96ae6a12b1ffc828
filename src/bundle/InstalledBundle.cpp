#include "bundle/InstalledBundle.h"

#include "bundle/InformationFile.h"
#include "bundle/ProgramPlace.h"

namespace kelo::bundle {

std::optional<platform::InformationDictionary> InstalledBundle::infoDictionary() {
    const auto prefix = installationPrefix(programPath());
    return readInformationFile(informationPath(prefix));
}

} // namespace kelo::bundle
