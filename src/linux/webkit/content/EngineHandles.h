#pragma once

#include <webkit/webkit.h>

#include <memory>

namespace kelo::webkit {

struct EngineDeleter {
    void operator()(WebKitUserScript* script) const { webkit_user_script_unref(script); }
    void operator()(WebKitScriptDialog* dialog) const { webkit_script_dialog_unref(dialog); }
    void operator()(WebKitSecurityOrigin* origin) const { webkit_security_origin_unref(origin); }
};

/// Owning pointers to the engine's types that are no GObjects.
using UserScriptPointer = std::unique_ptr<WebKitUserScript, EngineDeleter>;
using ScriptDialogPointer = std::unique_ptr<WebKitScriptDialog, EngineDeleter>;
using SecurityOriginPointer = std::unique_ptr<WebKitSecurityOrigin, EngineDeleter>;

} // namespace kelo::webkit
