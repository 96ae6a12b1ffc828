#include "linux/tray/IconFiles.h"

#include "bundle/ProgramPlace.h"

#include <glibmm/miscutils.h>

#include <system_error>

namespace kelo::tray {

namespace {

namespace files = std::filesystem;

bool hasIcon(const files::path& iconFolder, const std::string& iconName) {
    std::error_code ignored;
    return files::exists(iconFolder / "hicolor" / "symbolic" / "apps" / (iconName + ".svg"),
                         ignored);
}

} // namespace

IconFiles findIconFiles(const std::string& iconName, const files::path& programFolder,
                        const std::vector<std::string>& dataFolders) {
    for (const auto& folder : dataFolders)
        if (hasIcon(files::path(folder) / "icons", iconName))
            return {true, {}};
    const auto own = programFolder.parent_path() / "share" / "icons";
    if (hasIcon(own, iconName))
        return {true, own.string()};
    return {};
}

IconFiles findIconFiles(const std::string& iconName) {
    std::vector<std::string> folders = Glib::get_system_data_dirs();
    folders.push_back(Glib::get_user_data_dir());
    return findIconFiles(iconName, bundle::programPath().parent_path(), folders);
}

} // namespace kelo::tray
