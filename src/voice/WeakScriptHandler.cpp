#include "voice/WeakScriptHandler.h"

#include <utility>

namespace kelo::voice {

WeakScriptHandler::WeakScriptHandler(std::weak_ptr<platform::ScriptMessageHandler> target)
    : target(std::move(target)) {}

void WeakScriptHandler::didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                                const platform::ScriptMessage& message) {
    if (const auto handler = target.lock())
        handler->didReceiveScriptMessage(webView, message);
}

} // namespace kelo::voice
