#pragma once

#include <string>
#include <variant>

namespace kelo::platform {

class EmbeddedWebView;

/// The value that a page's script posted. Arrays, objects and null arrive as std::monostate.
using ScriptValue = std::variant<std::monostate, bool, double, std::string>;

struct ScriptMessage {
    /// The name of the handler that the page posted to.
    std::string name;
    ScriptValue body;
};

/// Receives the messages that pages post to a registered name. Only the main frame can post, and
/// only while it shows a page of the service. Main thread only.
class ScriptMessageHandler {
public:
    virtual ~ScriptMessageHandler() = default;
    virtual void didReceiveScriptMessage(EmbeddedWebView& webView,
                                         const ScriptMessage& message) = 0;
};

} // namespace kelo::platform
