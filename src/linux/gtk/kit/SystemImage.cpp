#include "linux/gtk/kit/SystemImage.h"

#include <array>
#include <utility>

namespace kelo::gtk {

std::string iconName(std::string_view systemImage) {
    // The theme's folder is shared by every program, hence the prefix.
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 2> drawn{{
        {"brain", "kelo-brain-symbolic"},
        {"person.badge.key", "kelo-person-badge-key-symbolic"},
    }};
    for (const auto& [image, icon] : drawn)
        if (image == systemImage)
            return std::string(icon);
    return "image-missing";
}

} // namespace kelo::gtk
