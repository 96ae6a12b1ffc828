#include "component/packaging/Packages.h"

#include "layers/Command.h"

namespace kelo::tests {

Outcome runCommand(const std::string& command) {
    const auto result =
        layers::run("unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS KELO_APPCAST_KEY\n" +
                    std::string("{ ") + command + "\n}");
    return {result.status, result.output};
}

const Packages& Packages::ofThisBuild() {
    static const Packages packages;
    return packages;
}

Packages::Packages() : name(KELO_TREE_NAME) {
    const auto made =
        runCommand("cd '" + folder.path().string() +
                   "' && '" KELO_CPACK "' --config '" KELO_BUILD_FOLDER "/CPackConfig.cmake' -B '" +
                   (folder / "packages").string() + "'");
    log_ = made.output;
    const auto unpacked =
        runCommand("mkdir '" + (folder / "home").string() + "' && tar -xf '" + archive().string() +
                   "' -C '" + (folder / "home").string() + "'");
    log_ += unpacked.output;
}

std::filesystem::path Packages::package() const {
    return folder / "packages/" KELO_PACKAGE_NAME ".deb";
}

std::filesystem::path Packages::archive() const {
    return folder / ("packages/" + name + ".tar.zst");
}

} // namespace kelo::tests
