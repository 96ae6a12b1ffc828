#pragma once

#include "platform/ScriptMessage.h"

#include <memory>

namespace kelo::voice {

/// Forwards messages to a handler that it holds weakly. A web view owns its handlers. A handler
/// that owns the web view is registered through this class, so that the two do not keep each other
/// alive.
class WeakScriptHandler final : public platform::ScriptMessageHandler {
public:
    explicit WeakScriptHandler(std::weak_ptr<platform::ScriptMessageHandler> target);

    void didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                 const platform::ScriptMessage& message) override;

private:
    std::weak_ptr<platform::ScriptMessageHandler> target;
};

} // namespace kelo::voice
