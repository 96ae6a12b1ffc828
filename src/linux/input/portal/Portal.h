#pragma once

/// Names of the desktop's portal, as its interfaces define them.
namespace kelo::input::portal {

inline constexpr const char* busName = "org.freedesktop.portal.Desktop";
inline constexpr const char* path = "/org/freedesktop/portal/desktop";
inline constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";
inline constexpr const char* request = "org.freedesktop.portal.Request";
inline constexpr const char* session = "org.freedesktop.portal.Session";
inline constexpr const char* registry = "org.freedesktop.host.portal.Registry";

} // namespace kelo::input::portal
