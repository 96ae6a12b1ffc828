#include "linux/downloads/FileHandling.h"

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

namespace kelo::downloads {

namespace {

using OpenAddress = std::function<void(const std::string& address)>;

// Kinds that are only looked at, heard or read. A list of the dangerous ones would never be
// complete.
constexpr std::array<const char*, 28> harmlessTypes = {
    "application/pdf",
    "application/epub+zip",
    "application/json",
    "application/msword",
    "application/rtf",
    "application/vnd.ms-excel",
    "application/vnd.ms-powerpoint",
    "application/vnd.oasis.opendocument.graphics",
    "application/vnd.oasis.opendocument.presentation",
    "application/vnd.oasis.opendocument.spreadsheet",
    "application/vnd.oasis.opendocument.text",
    "application/vnd.openxmlformats-officedocument.presentationml.presentation",
    "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet",
    "application/vnd.openxmlformats-officedocument.wordprocessingml.document",
    "application/gzip",
    "application/x-7z-compressed",
    "application/x-bzip-compressed-tar",
    "application/x-compressed-tar",
    "application/x-tar",
    "application/x-xz-compressed-tar",
    "application/zip",
    "text/calendar",
    "text/csv",
    "text/markdown",
    "text/plain",
    "text/tab-separated-values",
    "text/vcard",
    "text/x-log"};
constexpr std::array<std::string_view, 3> harmlessFamilies = {"image/", "audio/", "video/"};

// A drawing can hold scripts, and browsers run them.
constexpr std::array<const char*, 2> exceptions = {"image/svg+xml", "image/svg+xml-compressed"};

bool isOneOf(const char* type, std::span<const char* const> types) {
    return std::ranges::any_of(
        types, [&](const char* known) { return g_content_type_equals(type, known) != 0; });
}

bool isHarmlessType(const char* type) {
    if (!type || isOneOf(type, exceptions))
        return false;
    return isOneOf(type, harmlessTypes) ||
           std::ranges::any_of(harmlessFamilies, [&](std::string_view family) {
               return std::string_view(type).starts_with(family);
           });
}

// The name alone says one type, and name and contents together another. Which of them decides about
// the program that opens the file is up to the desktop.
bool isHarmless(const std::string& path) {
    constexpr const char* byName = G_FILE_ATTRIBUTE_STANDARD_FAST_CONTENT_TYPE;
    constexpr const char* byContents = G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE;
    const auto file = gobject::GObjectPointer<GFile>::adopt(g_file_new_for_path(path.c_str()));
    const auto info = gobject::GObjectPointer<GFileInfo>::adopt(
        g_file_query_info(file.get(), (std::string(byName) + "," + byContents).c_str(),
                          G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    return info && isHarmlessType(g_file_info_get_attribute_string(info.get(), byName)) &&
           isHarmlessType(g_file_info_get_attribute_string(info.get(), byContents));
}

std::string addressOf(const std::string& path) {
    const gobject::GText address(g_filename_to_uri(path.c_str(), nullptr, nullptr));
    return address ? address.get() : "";
}

/// What is left to do when the file manager cannot be asked.
struct Fallback {
    OpenAddress openAddress;
    std::string folder;
};

void answered(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Fallback> fallback(static_cast<Fallback*>(data));
    GError* error = nullptr;
    const gobject::GVariantPointer answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
    const gobject::GErrorPointer failure(error);
    if (!failure)
        return;
    g_debug("downloads: no file manager shows the file: %s", failure->message);
    fallback->openAddress(addressOf(fallback->folder));
}

void connected(GObject*, GAsyncResult* result, gpointer data) {
    std::unique_ptr<std::pair<std::string, Fallback>> asked(
        static_cast<std::pair<std::string, Fallback>*>(data));
    const auto bus =
        gobject::GObjectPointer<GDBusConnection>::adopt(g_bus_get_finish(result, nullptr));
    if (!bus) {
        asked->second.openAddress(addressOf(asked->second.folder));
        return;
    }
    const std::array<const char*, 2> addresses = {asked->first.c_str(), nullptr};
    g_dbus_connection_call(bus.get(), "org.freedesktop.FileManager1",
                           "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1",
                           "ShowItems", g_variant_new("(^ass)", addresses.data(), ""), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, answered,
                           std::make_unique<Fallback>(std::move(asked->second)).release());
}

void showInFolder(const OpenAddress& openAddress, const std::string& path) {
    auto asked = std::make_unique<std::pair<std::string, Fallback>>(
        addressOf(path), Fallback{openAddress, std::filesystem::path(path).parent_path()});
    g_bus_get(G_BUS_TYPE_SESSION, nullptr, connected, asked.release());
}

} // namespace

// In a sandbox the library hands every address to the portal, and no file manager is on the bus:
// the folder is then opened by the portal as well.
FileHandling desktopFileHandling(OpenAddress openAddress) {
    return {isHarmless, [openAddress](const std::string& path) { openAddress(addressOf(path)); },
            [openAddress](const std::string& path) { showInFolder(openAddress, path); }};
}

} // namespace kelo::downloads
