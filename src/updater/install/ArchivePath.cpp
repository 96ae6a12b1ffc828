#include "updater/install/ArchivePath.h"

#include <algorithm>

namespace kelo::updater {

namespace {

constexpr std::size_t deepest = 32;
constexpr std::size_t longestName = 255;

std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const auto slash = std::min(path.find('/'), path.size());
        const auto component = path.substr(0, slash);
        if (!component.empty() && component != ".")
            components.emplace_back(component);
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return components;
}

} // namespace

std::optional<std::vector<std::string>> archivePath(std::string_view path) {
    if (path.empty() || path.front() == '/')
        return std::nullopt;
    auto components = split(path);
    const auto isBad = [](const std::string& component) {
        return component == ".." || component.size() > longestName;
    };
    if (components.size() > deepest || std::ranges::any_of(components, isBad))
        return std::nullopt;
    return components;
}

bool staysInTree(const std::vector<std::string>& link, std::string_view target) {
    if (link.size() < 2 || target.empty() || target.front() == '/')
        return false;
    // The link's folder is link.size() - 1 deep, so this many ".." still end in the top folder.
    const std::size_t mostUps = link.size() - 2;
    const auto components = split(target);
    const auto isUp = [](const std::string& component) { return component == ".."; };
    const auto down = std::ranges::find_if_not(components, isUp);
    return static_cast<std::size_t>(down - components.begin()) <= mostUps &&
           std::none_of(down, components.end(), isUp);
}

} // namespace kelo::updater
