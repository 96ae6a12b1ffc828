#pragma once

#include "testing/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace kelo::test {

/// Locales that this machine does not offer its users, made for a test. A program uses them when
/// LOCPATH names the folder. They are gone with this object.
class LocaleFolder {
public:
    /// Makes "de_DE.UTF-8" from "de_DE". It stays missing where the machine cannot make locales.
    void add(const std::string& name, const std::string& characters = "UTF-8") {
        const std::string place = (folder / (name + "." + characters)).string();
        // Its status is of no use: it is 1 after a mere warning.
        [[maybe_unused]] const int status = std::system(
            ("localedef -c -i " + name + " -f " + characters + " '" + place + "' >/dev/null 2>&1")
                .c_str());
    }
    bool holds(const std::string& name) const {
        return std::filesystem::exists(folder / (name + ".UTF-8") / "LC_CTYPE");
    }
    std::string path() const { return folder.path().string(); }

private:
    TemporaryFolder folder;
};

} // namespace kelo::test
