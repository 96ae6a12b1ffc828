#include "linux/desktop/StartAtLogin.h"

#include "bundle/ProgramPlace.h"
#include "deployment/Deployment.h"
#include "linux/gobject/GLibHandles.h"

#include <glib/gstdio.h>

#include <filesystem>
#include <utility>

namespace kelo::desktop {

namespace {

const bus::Object background{"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                             "org.freedesktop.portal.Background"};

bool startsProgram(const std::string& entry) {
    GKeyFile* const file = g_key_file_new();
    const bool isThere = g_key_file_load_from_file(file, entry.c_str(), G_KEY_FILE_NONE, nullptr) &&
                         !g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP,
                                                 G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr);
    g_key_file_unref(file);
    return isThere;
}

GVariant* requestFor(const std::string& program, bool wanted) {
    GVariantBuilder command;
    g_variant_builder_init(&command, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&command, "s", program.c_str());
    g_variant_builder_add(&command, "s", "--background");
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string("kelologin"));
    g_variant_builder_add(&options, "{sv}", "autostart", g_variant_new_boolean(wanted));
    g_variant_builder_add(&options, "{sv}", "commandline", g_variant_builder_end(&command));
    return g_variant_new("(sa{sv})", "", &options);
}

} // namespace

StartAtLogin::Settings StartAtLogin::Settings::standard() {
    const std::filesystem::path folder = g_get_user_config_dir();
    const std::string name = std::string(deployment::applicationIdentifier) + ".desktop";
    return {bus::sessionAddress(), folder / "autostart" / name, bundle::programPath()};
}

StartAtLogin::StartAtLogin(Settings given)
    : settings(std::move(given)), on(*this, startsProgram(settings.entry)) {}

void StartAtLogin::setOn(bool wanted) {
    // Turning it off waits for nobody.
    if (!wanted)
        settle(false);
    connection = std::make_shared<bus::SharedConnection>(settings.bus);
    connection->whenOpen([weak = weak_from_this(), wanted](const bus::Connection& opened) {
        const auto self = weak.lock();
        if (!self)
            return;
        if (opened)
            self->askPortal(opened, wanted);
        else
            self->settle(wanted);
    });
}

void StartAtLogin::askPortal(const bus::Connection& opened, bool wanted) {
    request.clear();
    // Subscribed before the call, so that no response is missed.
    response.emplace(opened, bus::Object{background.owner, "", "org.freedesktop.portal.Request"},
                     "Response", [this, wanted](const std::string& from, GVariant* values) {
                         if (from == request)
                             portalResponded(wanted, values);
                     });
    calls.call(opened, background, "RequestBackground", requestFor(settings.program, wanted),
               [this, wanted](const gobject::GVariantPointer& answer,
                              const gobject::GErrorPointer& failure) {
                   if (answer && g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(o)"))) {
                       const char* path = nullptr;
                       g_variant_get(answer.get(), "(&o)", &path);
                       request = path;
                       return;
                   }
                   g_debug("start at login: no portal: %s", failure ? failure->message : "");
                   settle(wanted);
               });
}

void StartAtLogin::portalResponded(bool wanted, GVariant* values) {
    constexpr guint32 refusedByUser = 1;
    guint32 answer = 0;
    if (g_variant_is_of_type(values, G_VARIANT_TYPE("(ua{sv})")))
        g_variant_get_child(values, 0, "u", &answer);
    settle(wanted && answer != refusedByUser);
}

// The portal may have written the entry, but not every portal knows under which name.
void StartAtLogin::settle(bool wanted) {
    if (!wanted)
        g_unlink(settings.entry.c_str());
    else if (!startsProgram(settings.entry))
        writeEntry();
    on = startsProgram(settings.entry);
}

void StartAtLogin::writeEntry() const {
    const std::string text =
        "[Desktop Entry]\nType=Application\nName=Kelo\nExec=" + execWord(settings.program) +
        " --background\nIcon=" + std::string(deployment::applicationIdentifier) + "\n";
    constexpr int onlyForUser = 0700;
    constexpr int readable = 0644;
    g_mkdir_with_parents(std::filesystem::path(settings.entry).parent_path().c_str(), onlyForUser);
    GError* failure = nullptr;
    g_file_set_contents_full(settings.entry.c_str(), text.data(), static_cast<gssize>(text.size()),
                             G_FILE_SET_CONTENTS_CONSISTENT, readable, &failure);
    const gobject::GErrorPointer owned(failure);
    if (owned)
        g_warning("The entry for the start at login cannot be written: %s", owned->message);
}

gtk::LoginStart StartAtLogin::menuItem(const std::shared_ptr<StartAtLogin>& start) {
    return {[start] { return start->isOn(); }, [start](bool wanted) { start->setOn(wanted); },
            start};
}

// Quoted once for the command line and once more for the file, in which a backslash is written
// twice. A percent sign would begin a field code.
std::string execWord(const std::string& word) {
    std::string quoted = "\"";
    for (const char character : word) {
        if (character == '\\')
            quoted += "\\\\\\\\";
        else if (character == '"' || character == '`' || character == '$')
            quoted += std::string("\\\\") + character;
        else if (character == '%')
            quoted += "%%";
        else
            quoted += character;
    }
    return quoted + "\"";
}

} // namespace kelo::desktop
