#include "PrompterInterface.h"

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

// The library's author has not promised that this part of it stays as it is. It has since 2011.
#define GCR_API_SUBJECT_TO_CHANGE
#include <gcr/gcr-base.h>
#include <gio/gio.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

// The part of a desktop that shows the keyring's prompts, with a user who answers each of them:
//   answer PASSWORD   types the password, also where a new one is asked for
//   refuse            dismisses the prompt
// Prints "ready" when the keyring finds it. When its input ends, it prints how many prompts it has
// shown, and ends.

namespace kelo {

namespace {

using gobject::GObjectPointer;
using gobject::GText;

class AnsweringPrompter {
public:
    explicit AnsweringPrompter(std::string password) : password(std::move(password)) {}

    int run() {
        g_bus_own_name(G_BUS_TYPE_SESSION, "org.gnome.keyring.SystemPrompter",
                       G_BUS_NAME_OWNER_FLAGS_NONE, offer, sayReady, nullptr, this, nullptr);
        GIOChannel* input = g_io_channel_unix_new(0);
        g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), endOfInput, this);
        g_io_channel_unref(input);
        while (!hasEnded)
            g_main_context_iteration(nullptr, TRUE);
        std::printf("%d\n", shown);
        return 0;
    }

private:
    static void offer(GDBusConnection* connection, const gchar*, gpointer self) {
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(prompterInterface, nullptr);
        static const GDBusInterfaceVTable calls{onCall, nullptr, nullptr, {}};
        g_dbus_connection_register_object(connection, "/org/gnome/keyring/Prompter",
                                          node->interfaces[0], &calls, self, nullptr, nullptr);
        g_dbus_node_info_unref(node);
    }
    static void sayReady(GDBusConnection*, const gchar*, gpointer) {
        std::puts("ready");
        std::fflush(stdout);
    }
    static gboolean endOfInput(GIOChannel*, GIOCondition, gpointer self) {
        static_cast<AnsweringPrompter*>(self)->hasEnded = true;
        return G_SOURCE_REMOVE;
    }
    static void onCall(GDBusConnection* connection, const gchar* sender, const gchar*, const gchar*,
                       const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation,
                       gpointer self) {
        const gobject::GVariantPointer callback(g_variant_get_child_value(parameters, 0));
        const char* path = g_variant_get_string(callback.get(), nullptr);
        g_dbus_method_invocation_return_value(invocation, nullptr);
        auto& prompter = *static_cast<AnsweringPrompter*>(self);
        if (std::string_view(method) == "BeginPrompting")
            tell(connection, sender, path, "PromptReady", prompter.greet());
        else if (std::string_view(method) == "StopPrompting")
            tell(connection, sender, path, "PromptDone", nullptr);
        else
            tell(connection, sender, path, "PromptReady", prompter.answer(parameters));
    }
    static void tell(GDBusConnection* connection, const char* keyring, const char* path,
                     const char* what, GVariant* parameters) {
        g_dbus_connection_call(
            connection, keyring, path, "org.gnome.keyring.internal.Prompter.Callback", what,
            parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    }
    /// The user has not ticked that the keyring is to be unlocked at each login, and has chosen a
    /// password that is not empty.
    static GVariant* reply(const char* decision, const char* secret) {
        return g_variant_new_parsed(
            "(%s, {'choice-chosen': <<false>>, 'password-strength': <<1>>}, %s)", decision, secret);
    }
    GVariant* greet() {
        exchange = GObjectPointer<GcrSecretExchange>::adopt(
            gcr_secret_exchange_new(GCR_SECRET_EXCHANGE_PROTOCOL_1));
        const GText ours(gcr_secret_exchange_begin(exchange.get()));
        return reply("", ours.get());
    }
    GVariant* answer(GVariant* question) {
        ++shown;
        const char* theirs = nullptr;
        g_variant_get_child(question, 3, "&s", &theirs);
        if (!gcr_secret_exchange_receive(exchange.get(), theirs))
            g_error("the keyring's side of the exchange is not understood");
        const bool refuses = password.empty();
        const GText ours(
            gcr_secret_exchange_send(exchange.get(), refuses ? nullptr : password.c_str(), -1));
        return reply(refuses ? "no" : "yes", ours.get());
    }

    GObjectPointer<GcrSecretExchange> exchange;
    std::string password;
    int shown = 0;
    bool hasEnded = false;
};

} // namespace

} // namespace kelo

int main(int count, char** arguments) {
    return kelo::AnsweringPrompter(count > 2 ? arguments[2] : "").run();
}
