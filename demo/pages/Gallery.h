#pragma once

#include "demo/http/Http.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::demo {

/// Pages from a folder, to try a browser with. They may run scripts of their own and open windows,
/// which the pages of the service do not.
class Gallery {
public:
    /// Throws ServiceError if the folder cannot be read.
    explicit Gallery(std::filesystem::path folder);

    /// The names of all files, which do not change while the service runs.
    const std::vector<std::string>& names() const { return names_; }
    /// One of them, as it is in the folder now.
    Reply file(const std::string& name) const;

private:
    std::filesystem::path folder;
    std::vector<std::string> names_;
};

} // namespace kelo::demo
