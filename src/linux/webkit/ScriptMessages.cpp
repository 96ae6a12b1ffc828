#include "linux/webkit/ScriptMessages.h"

#include "base/Invariant.h"
#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/SignalHandler.h"
#include "linux/webkit/content/DocumentStartScript.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelo::webkit {

using platform::ScriptMessage;
using platform::ScriptMessageHandler;
using platform::ScriptMessageRegistration;
using platform::ScriptValue;

namespace {

// HANDLER stands for the name of the handler in both scripts. They take CustomEvent and
// dispatchEvent at document start, before a page can replace them.
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

// The name is inserted into the scripts without quoting.
bool isHandlerName(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](char character) {
        return g_ascii_isalnum(character) || character == '_';
    });
}

// A script's text may contain NUL, so its length counts.
std::string textOf(JSCValue* value) {
    const gobject::GBytesPointer bytes(jsc_value_to_string_as_bytes(value));
    gsize size = 0;
    const auto* const data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    return {data, size};
}

// A String object is an object, not a text.
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
    Channel(platform::EmbeddedWebView& view, const ScriptMessageRegistration& registration)
        : view(view), handler(registration.handler), name(registration.name) {}

    platform::EmbeddedWebView& view;
    std::shared_ptr<ScriptMessageHandler> handler;
    std::string name;
    gobject::SignalConnection connection;

    // The handler may destroy the view, and this channel with it, so no member is used afterwards.
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

ScriptMessages::~ScriptMessages() = default;

void ScriptMessages::open(const ScriptMessageRegistration& registration, const Url& service) {
    if (!isHandlerName(registration.name))
        invariantBroken("a script message handler is named with letters and digits");
    channels.push_back(std::make_unique<Channel>(view, registration));
    // Connect first, so that no message is lost.
    const std::string signal = "script-message-received::" + registration.name;
    channels.back()->connection = gobject::connectSignal(manager.get(), signal.c_str(),
                                                         Channel::received, channels.back().get());
    webkit_user_content_manager_register_script_message_handler(
        manager.get(), registration.name.c_str(), ownScriptWorld);

    DocumentStartScript script;
    script.frames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
    script.allowed = {pagesOfHost(service)};
    script.source = onlyIn(service, forHandler(postingScript, registration.name));
    script.world = ownScriptWorld;
    addDocumentStartScript(manager.get(), script);
    script.source = onlyIn(service, forHandler(definingScript, registration.name));
    script.world = nullptr;
    addDocumentStartScript(manager.get(), script);
}

} // namespace kelo::webkit
