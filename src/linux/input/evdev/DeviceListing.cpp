#include "linux/input/evdev/DeviceListing.h"

#include <algorithm>
#include <cctype>
#include <system_error>
#include <utility>

namespace kelo::input {

bool isDeviceName(std::string_view name) {
    constexpr std::string_view prefix = "event";
    return name.starts_with(prefix) && name.size() > prefix.size() &&
           std::ranges::all_of(name.substr(prefix.size()),
                               [](unsigned char each) { return std::isdigit(each) != 0; });
}

DeviceListing listDevices(const std::filesystem::path& folder) {
    DeviceListing listing;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure))
        if (std::string name = entry->path().filename().string(); isDeviceName(name))
            listing.names.push_back(std::move(name));
    std::ranges::sort(listing.names, {},
                      [](const std::string& name) { return std::pair(name.size(), name); });
    listing.refused = failure == std::errc::permission_denied;
    return listing;
}

} // namespace kelo::input
