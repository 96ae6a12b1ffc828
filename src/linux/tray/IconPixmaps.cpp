#include "linux/tray/IconPixmaps.h"

#include "linux/gobject/GObjectPointer.h"

#include <gdk/gdk.h>

#include <array>
#include <memory>
#include <optional>
#include <utility>

// Generated at build time. This reference keeps the linker from dropping the data.
extern "C" GResource* kelo_tray_get_resource(void);

namespace kelo::tray {

namespace {

using Bytes = std::unique_ptr<GBytes, decltype(&g_bytes_unref)>;

std::optional<IconMask> maskFrom(const std::string& resource) {
    const Bytes file(
        g_resources_lookup_data(resource.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr),
        &g_bytes_unref);
    if (!file)
        return std::nullopt;
    const auto texture =
        gobject::GObjectPointer<GdkTexture>::adopt(gdk_texture_new_from_bytes(file.get(), nullptr));
    if (!texture)
        return std::nullopt;
    const int size = gdk_texture_get_width(texture.get());
    const auto side = static_cast<std::size_t>(size);
    std::vector<std::uint32_t> pixels(side * side);
    // Each pixel is one integer in this machine's byte order. Its highest byte is the alpha.
    gdk_texture_download(texture.get(), reinterpret_cast<guchar*>(pixels.data()),
                         side * sizeof(std::uint32_t));
    IconMask mask{size, {}};
    for (const auto pixel : pixels)
        mask.coverage.push_back(static_cast<std::uint8_t>(pixel >> 24));
    return mask;
}

} // namespace

std::vector<IconMask> iconMasks(const std::string& iconName) {
    g_resources_register(kelo_tray_get_resource());
    std::vector<IconMask> masks;
    for (const char* size : {"16", "22", "24", "32", "48"})
        if (auto mask = maskFrom("/app/kelo/Kelo/tray/" + iconName + "-" + size + ".png"))
            masks.push_back(std::move(*mask));
    return masks;
}

Glib::VariantBase iconPixmaps(const std::vector<IconMask>& masks, std::uint32_t color) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
    for (const auto& mask : masks) {
        std::vector<std::uint8_t> bytes;
        bytes.reserve(mask.coverage.size() * 4);
        for (const auto coverage : mask.coverage)
            for (const std::uint32_t byte :
                 std::array<std::uint32_t, 4>{coverage, color >> 16, color >> 8, color})
                bytes.push_back(static_cast<std::uint8_t>(byte & 0xff));
        g_variant_builder_add(
            &builder, "(ii@ay)", mask.size, mask.size,
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1));
    }
    return Glib::VariantBase(g_variant_builder_end(&builder));
}

} // namespace kelo::tray
