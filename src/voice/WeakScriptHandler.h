#pragma once

#include "platform/ScriptMessage.h"

#include <memory>

namespace kelo::voice {

/// Passes messages on to a handler that it does not keep alive. A web view holds its handlers; one
/// that holds the web view in turn is registered through this.
class WeakScriptHandler final : public platform::ScriptMessageHandler {
public:
    explicit WeakScriptHandler(std::weak_ptr<platform::ScriptMessageHandler> target);

    void didReceiveScriptMessage(platform::EmbeddedWebView& webView,
                                 const platform::ScriptMessage& message) override;

private:
    std::weak_ptr<platform::ScriptMessageHandler> target;
};

} // namespace kelo::voice
