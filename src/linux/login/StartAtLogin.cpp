#include "linux/login/StartAtLogin.h"

#include "bundle/ProgramPlace.h"
#include "deployment/Deployment.h"
#include "linux/bus/Calls.h"
#include "linux/bus/Connection.h"
#include "linux/bus/Signal.h"
#include "linux/gobject/GLibHandles.h"

#include <glib/gstdio.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace kelo::login {

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

/// One question to the portal.
class StartAtLogin::Portal {
public:
    /// Receives what is to be, once: the wish, unless the user refused it.
    using Settled = std::function<void(bool wanted)>;

    Portal(const Settings& settings, bool wanted, Settled settled)
        : program(settings.program),
          wanted(wanted),
          settled(std::move(settled)),
          bus(std::make_shared<bus::SharedConnection>(settings.bus)) {
        bus->whenOpen([this, alive = std::weak_ptr(alive)](const bus::Connection& opened) {
            if (alive.expired())
                return;
            if (opened)
                ask(opened);
            else
                this->settled(this->wanted);
        });
    }

private:
    void ask(const bus::Connection& opened) {
        // Subscribed before the call, so that no response is missed.
        response.emplace(opened,
                         bus::Object{background.owner, "", "org.freedesktop.portal.Request"},
                         "Response", [this](const std::string& from, GVariant* values) {
                             if (from == request)
                                 responded(values);
                         });
        calls.call(
            opened, background, "RequestBackground", requestFor(program, wanted),
            [this](const gobject::GVariantPointer& answer, const gobject::GErrorPointer& failure) {
                taken(answer.get(), failure.get());
            });
    }

    void taken(GVariant* answer, const GError* failure) {
        if (answer && g_variant_is_of_type(answer, G_VARIANT_TYPE("(o)"))) {
            const char* path = nullptr;
            g_variant_get(answer, "(&o)", &path);
            request = path;
            return;
        }
        g_debug("start at login: no portal: %s", failure ? failure->message : "");
        settled(wanted);
    }

    void responded(GVariant* values) {
        constexpr guint32 refusedByUser = 1;
        guint32 answer = 0;
        if (g_variant_is_of_type(values, G_VARIANT_TYPE("(ua{sv})")))
            g_variant_get_child(values, 0, "u", &answer);
        settled(wanted && answer != refusedByUser);
    }

    const std::string program;
    const bool wanted;
    const Settled settled;
    std::shared_ptr<bus::SharedConnection> bus;
    bus::Calls calls;
    std::optional<bus::Signal> response;
    std::string request; ///< path of the portal's object that is waited for
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};

StartAtLogin::StartAtLogin(Settings given)
    : settings(std::move(given)), on(*this, startsProgram(settings.entry)) {}

StartAtLogin::~StartAtLogin() = default;

void StartAtLogin::setOn(bool wanted) {
    // Turning it off waits for nobody.
    if (!wanted)
        settle(false);
    portal = std::make_unique<Portal>(settings, wanted, [this](bool settled) { settle(settled); });
}

// The portal may have written the entry, but not every portal knows under which name.
void StartAtLogin::settle(bool wanted) {
    if (!wanted)
        g_unlink(settings.entry.c_str());
    else if (!startsProgram(settings.entry))
        writeEntry();
    on = startsProgram(settings.entry);
}

// With "TryExec" the entry is without effect once the program is gone: whoever removes a package
// cannot remove what is in the users' folders.
void StartAtLogin::writeEntry() const {
    const std::string text =
        "[Desktop Entry]\nType=Application\nName=Kelo\nTryExec=" + entryText(settings.program) +
        "\nExec=" + execWord(settings.program) +
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

std::string entryText(const std::string& text) {
    std::string written;
    for (const char character : text)
        written += character == '\\' ? "\\\\" : std::string(1, character);
    return written;
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

} // namespace kelo::login
