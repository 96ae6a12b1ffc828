#pragma once

#include "platform/Bundle.h"

namespace kelo::bundle {

/// The Info.plist that was installed with the program: share/kelo/Info.plist beside the program's
/// bin folder, wherever the two were put; in a build tree, where the build left it.
class InstalledBundle final : public platform::Bundle {
public:
    std::optional<platform::InformationDictionary> infoDictionary() override;
};

} // namespace kelo::bundle
