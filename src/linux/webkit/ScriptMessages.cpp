#include "linux/webkit/ScriptMessages.h"

#include "base/Invariant.h"
#include "linux/webkit/GuardScript.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelo::webkit {

using platform::ScriptMessage;
using platform::ScriptMessageHandler;
using platform::ScriptMessageRegistration;
using platform::ScriptValue;

namespace {

// Both take the name of the handler in place of HANDLER. What the page may have replaced later, a
// CustomEvent of its own for instance, is taken while it is still the engine's.
constexpr std::string_view definingScript = R"((() => {
  const {CustomEvent, dispatchEvent} = window;
  const primitive = ['string', 'number', 'boolean'];
  const handler = Object.freeze({
    postMessage(value) {
      const detail = primitive.includes(typeof value) ? value : null;
      dispatchEvent.call(window, new CustomEvent('kelo-post-HANDLER', {detail}));
    },
  });
  window.webkit ??= {};
  window.webkit.messageHandlers ??= {};
  window.webkit.messageHandlers['HANDLER'] = handler;
})())";

constexpr std::string_view postingScript = R"(
addEventListener('kelo-post-HANDLER',
                 (event) => webkit.messageHandlers['HANDLER'].postMessage(event.detail));
)";

std::string forHandler(std::string_view script, const std::string& name) {
    constexpr std::string_view placeholder = "HANDLER";
    std::string text(script);
    for (auto at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + name.size()))
        text.replace(at, placeholder.size(), name);
    return text;
}

// It goes into the scripts as it is.
bool isHandlerName(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](char character) {
        return g_ascii_isalnum(character) || character == '_';
    });
}

// By its length: a text may hold a zero.
std::string textOf(JSCValue* value) {
    GBytes* const bytes = jsc_value_to_string_as_bytes(value);
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    std::string text(data, size);
    g_bytes_unref(bytes);
    return text;
}

// A String object is an object, like all that is no plain text, number or truth value.
ScriptValue scriptValue(JSCValue* value) {
    if (jsc_value_is_string(value))
        return textOf(value);
    if (jsc_value_is_number(value))
        return jsc_value_to_double(value);
    if (jsc_value_is_boolean(value))
        return jsc_value_to_boolean(value) == TRUE;
    return std::monostate();
}

} // namespace

struct ScriptMessages::Channel {
    platform::EmbeddedWebView& view;
    std::shared_ptr<ScriptMessageHandler> handler;
    std::string name;

    // The handler may let go of the view, and so end this: nothing is touched after it.
    static void received(WebKitUserContentManager*, JSCValue* value, Channel* channel) {
        const auto handler = channel->handler;
        const ScriptMessage message{channel->name, scriptValue(value)};
        handler->didReceiveScriptMessage(channel->view, message);
    }
};

ScriptMessages::ScriptMessages(platform::EmbeddedWebView& view, WebKitUserContentManager* manager,
                               const Url& service,
                               const std::vector<ScriptMessageRegistration>& registrations)
    : view(view), manager(gobject::GObjectPointer<WebKitUserContentManager>::share(manager)) {
    for (const auto& registration : registrations)
        open(registration, service);
}

ScriptMessages::~ScriptMessages() {
    for (const auto& channel : channels)
        g_signal_handlers_disconnect_by_data(manager.get(), channel.get());
}

void ScriptMessages::open(const ScriptMessageRegistration& registration, const Url& service) {
    if (!isHandlerName(registration.name))
        invariantBroken("a script message handler is named with letters and digits");
    channels.push_back(std::make_unique<Channel>(view, registration.handler, registration.name));
    // The documented order: nothing that is posted from here on is missed.
    const std::string signal = "script-message-received::" + registration.name;
    g_signal_connect(manager.get(), signal.c_str(), G_CALLBACK(Channel::received),
                     channels.back().get());
    webkit_user_content_manager_register_script_message_handler(
        manager.get(), registration.name.c_str(), ownScriptWorld);

    GuardScript script;
    script.frames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
    script.allowed = {pagesOfHost(service)};
    script.source = onlyIn(service, forHandler(postingScript, registration.name));
    script.world = ownScriptWorld;
    addGuardScript(manager.get(), script);
    script.source = onlyIn(service, forHandler(definingScript, registration.name));
    script.world = nullptr;
    addGuardScript(manager.get(), script);
}

} // namespace kelo::webkit
