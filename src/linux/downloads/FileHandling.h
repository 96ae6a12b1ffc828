#pragma once

#include <functional>
#include <string>

namespace kelo::downloads {

/// What the desktop does with files that were saved. Paths are absolute.
struct FileHandling {
    /// Whether one click may open it: it is a document, a picture or the like. A program or a page
    /// that could run something is left to the user's file manager.
    std::function<bool(const std::string& path)> mayBeOpened;
    /// Opens it in the user's program for it.
    std::function<void(const std::string& path)> open;
    /// Shows it in the file manager, selected where that is possible.
    std::function<void(const std::string& path)> showInFolder;
};

/// The handling on this desktop. openAddress opens a URL in the user's program for it. The calls
/// return at once.
FileHandling desktopFileHandling(std::function<void(const std::string& address)> openAddress);

} // namespace kelo::downloads
