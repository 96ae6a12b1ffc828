#include "linux/permission/Permissions.h"

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace kelo::permission {

namespace {

constexpr const char* group = "permissions";
constexpr const char* serviceKey = "service";
constexpr const char* allowed = "allowed";
constexpr const char* denied = "denied";

struct KeyFileDeleter {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
using KeyFilePointer = std::unique_ptr<GKeyFile, KeyFileDeleter>;

std::string textOf(GKeyFile* file, const char* key) {
    char* const text = g_key_file_get_string(file, group, key, nullptr);
    const std::string copy = text ? text : "";
    g_free(text);
    return copy;
}

const char* keyOf(Capability capability) {
    switch (capability) {
    case Capability::microphone:
        return "microphone";
    case Capability::camera:
        return "camera";
    case Capability::notifications:
        return "notifications";
    }
    return "";
}

} // namespace

Permissions::Permissions(std::string path, std::string service)
    : path(std::move(path)), service(std::move(service)) {
    load();
}

Answer Permissions::answer(Capability capability) const {
    return answers[static_cast<std::size_t>(capability)];
}

void Permissions::remember(Capability capability, Answer answer) {
    objectWillChange();
    answers[static_cast<std::size_t>(capability)] = answer;
    save();
}

void Permissions::load() {
    const KeyFilePointer file(g_key_file_new());
    if (path.empty() ||
        !g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr) ||
        textOf(file.get(), serviceKey) != service)
        return;
    for (const auto capability : capabilities) {
        const std::string text = textOf(file.get(), keyOf(capability));
        answers[static_cast<std::size_t>(capability)] = text == allowed  ? Answer::allowed
                                                        : text == denied ? Answer::denied
                                                                         : Answer::ask;
    }
}

void Permissions::save() const {
    if (path.empty())
        return;
    const KeyFilePointer file(g_key_file_new());
    g_key_file_set_string(file.get(), group, serviceKey, service.c_str());
    for (const auto capability : capabilities)
        if (const auto given = answer(capability); given != Answer::ask)
            g_key_file_set_string(file.get(), group, keyOf(capability),
                                  given == Answer::allowed ? allowed : denied);
    gsize length = 0;
    char* const text = g_key_file_to_data(file.get(), &length, nullptr);
    g_mkdir_with_parents(std::filesystem::path(path).parent_path().c_str(), 0700);
    GError* failure = nullptr;
    if (!g_file_set_contents_full(path.c_str(), text, static_cast<gssize>(length),
                                  G_FILE_SET_CONTENTS_CONSISTENT, 0600, &failure)) {
        g_warning("What the pages are allowed cannot be written: %s", failure->message);
        g_error_free(failure);
        // It may allow what the user has just taken back.
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }
    g_free(text);
}

} // namespace kelo::permission
