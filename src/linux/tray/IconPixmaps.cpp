#include "linux/tray/IconPixmaps.h"

#include <gdkmm/texture.h>
#include <gtk/gtk.h>

#include <array>

// Generated when building. Naming it keeps the linker from leaving the data out.
extern "C" GResource* kelo_tray_get_resource(void);

namespace kelo::desktop {

namespace {

IconMask maskOf(const Gdk::Texture& texture) {
    const int size = texture.get_width();
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size) *
                                      static_cast<std::size_t>(texture.get_height()));
    // Each pixel is one number of this machine's byte order, with the alpha in its upper byte.
    gdk_texture_download(const_cast<GdkTexture*>(texture.gobj()),
                         reinterpret_cast<guchar*>(pixels.data()),
                         static_cast<std::size_t>(size) * sizeof(std::uint32_t));
    IconMask mask{size, {}};
    for (const auto pixel : pixels)
        mask.coverage.push_back(static_cast<std::uint8_t>(pixel >> 24));
    return mask;
}

} // namespace

std::vector<IconMask> iconMasks(const std::string& iconName) {
    g_resources_register(kelo_tray_get_resource());
    std::vector<IconMask> masks;
    try {
        for (const char* size : {"16", "22", "24", "32", "48"})
            masks.push_back(maskOf(*Gdk::Texture::create_from_resource(
                "/app/kelo/Kelo/tray/" + iconName + "-" + size + ".png")));
    } catch (const Glib::Error&) {
        return {};
    }
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

} // namespace kelo::desktop
