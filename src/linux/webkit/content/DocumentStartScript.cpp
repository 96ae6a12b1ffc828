#include "linux/webkit/content/DocumentStartScript.h"

#include "base/Invariant.h"
#include "linux/gobject/GObjectPointer.h"
#include "linux/webkit/content/EngineHandles.h"

namespace kelo::webkit {

namespace {

// The C library wants lists that end with a null pointer.
std::vector<const char*> pointers(const std::vector<std::string>& texts) {
    std::vector<const char*> list;
    for (const std::string& text : texts)
        list.push_back(text.c_str());
    list.push_back(nullptr);
    return list;
}

} // namespace

void addDocumentStartScript(WebKitUserContentManager* manager, const DocumentStartScript& script) {
    const auto allowed = pointers(script.allowed);
    // Null stands for all addresses; an empty list would allow none.
    const auto* const allowList = script.allowed.empty() ? nullptr : allowed.data();
    constexpr auto atStart = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
    const char* const source = script.source.c_str();
    const UserScriptPointer native(
        script.world ? webkit_user_script_new_for_world(source, script.frames, atStart,
                                                        script.world, allowList, nullptr)
                     : webkit_user_script_new(source, script.frames, atStart, allowList, nullptr));
    webkit_user_content_manager_add_script(manager, native.get());
}

std::string originText(const Url& url) {
    const SecurityOriginPointer native(
        webkit_security_origin_new_for_uri(url.absoluteString().c_str()));
    const gobject::GText text(webkit_security_origin_to_string(native.get()));
    if (!text)
        invariantBroken("the service has an origin");
    return text.get();
}

std::string onlyIn(const Url& origin, const std::string& source) {
    return "if (self.origin === '" + originText(origin) + "') {" + source + "}";
}

std::string exceptIn(const Url& origin, const std::string& source) {
    return "if (self.origin !== '" + originText(origin) + "') {" + source + "}";
}

std::string pagesOfHost(const Url& url) {
    return url.scheme() + "://" + url.host() + "/*";
}

} // namespace kelo::webkit
