#include "linux/gtk/kit/StateFile.h"

#include <glibmm/error.h>
#include <glibmm/miscutils.h>

#include <utility>

namespace kelo::gtk {

StateFile::StateFile(std::string path) : path(std::move(path)) {
    if (this->path.empty())
        return;
    try {
        values->load_from_file(this->path);
        saved = values->to_data().raw();
    } catch (const Glib::Error&) {
        // There is no such file before the first window has closed.
        values = Glib::KeyFile::create();
    }
}

std::optional<int> StateFile::number(const char* group, const char* key) const {
    try {
        return values->get_integer(group, key);
    } catch (const Glib::Error&) {
        return std::nullopt;
    }
}

bool StateFile::flag(const char* group, const char* key) const {
    try {
        return values->get_boolean(group, key);
    } catch (const Glib::Error&) {
        return false;
    }
}

void StateFile::setNumber(const char* group, const char* key, int value) {
    values->set_integer(group, key, value);
}

void StateFile::setFlag(const char* group, const char* key, bool value) {
    values->set_boolean(group, key, value);
}

void StateFile::save() {
    const std::string text = values->to_data().raw();
    if (path.empty() || text == saved)
        return;
    g_mkdir_with_parents(Glib::path_get_dirname(path).c_str(), 0700);
    GError* failure = nullptr;
    if (g_file_set_contents_full(path.c_str(), text.data(), static_cast<gssize>(text.size()),
                                 G_FILE_SET_CONTENTS_CONSISTENT, 0600, &failure)) {
        saved = text;
        return;
    }
    g_warning("What the windows remember cannot be written: %s", failure->message);
    g_error_free(failure);
}

} // namespace kelo::gtk
