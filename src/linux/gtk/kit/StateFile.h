#pragma once

#include <glibmm/keyfile.h>

#include <optional>
#include <string>

namespace kelo::gtk {

/// What the windows remember from one start of the program to the next: numbers and flags in a file
/// that only the user can read. What is missing or cannot be read was never remembered. Main thread
/// only.
class StateFile {
public:
    /// path: empty to remember nothing.
    explicit StateFile(std::string path);

    std::optional<int> number(const char* group, const char* key) const;
    bool flag(const char* group, const char* key) const;
    void setNumber(const char* group, const char* key, int value);
    void setFlag(const char* group, const char* key, bool value);

    /// Writes the file if anything has changed. A failure is logged.
    void save();

private:
    std::string path;
    Glib::RefPtr<Glib::KeyFile> values = Glib::KeyFile::create();
    std::string saved;
};

} // namespace kelo::gtk
