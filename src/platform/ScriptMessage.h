#pragma once

#include <string>
#include <variant>

namespace kelo::platform {

class EmbeddedWebView;

/// What a page's script posted. Lists, objects and the like are std::monostate: nobody reads them.
using ScriptValue = std::variant<std::monostate, bool, double, std::string>;

struct ScriptMessage {
    /// Of the handler that the page posted to.
    std::string name;
    ScriptValue body;
};

/// Hears the messages that pages post under a registered name. Only the service's own pages can,
/// and only from the main frame: see what implements EmbeddedWebView. Main thread only.
class ScriptMessageHandler {
public:
    virtual ~ScriptMessageHandler() = default;
    virtual void didReceiveScriptMessage(EmbeddedWebView& webView,
                                         const ScriptMessage& message) = 0;
};

} // namespace kelo::platform
