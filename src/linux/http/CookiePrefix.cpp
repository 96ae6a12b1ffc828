#include "linux/http/CookiePrefix.h"

#include "linux/http/SoupCookies.h"
#include "linux/http/SoupUri.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelo::http {

namespace {

bool beginsWith(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           g_ascii_strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

} // namespace

bool keepsPromiseOfName(const platform::HttpCookie& cookie) {
    // On the wire a cookie without a name looks like one whose name is in the value.
    const bool nameless = cookie.name.empty();
    const std::string& shown = nameless ? cookie.value : cookie.name;
    if (beginsWith(shown, "__Host-"))
        return !nameless && cookie.secure && cookie.path == "/" && !cookie.domain.starts_with('.');
    if (beginsWith(shown, "__Secure-"))
        return !nameless && cookie.secure;
    return true;
}

void dropFalseCookies(SoupMessageHeaders* reply, const Url& url) {
    // "__Host-" demands that the field itself names the path. So the address to parse it for is one
    // whose path is never taken for "/".
    const SoupUri origin = soupUri(Url::parse("https://" + url.host() + "/not/root").value());
    std::vector<std::string> kept;
    bool dropped = false;
    const auto judge = [&](const char* field) {
        const SoupCookiePointer cookie(soup_cookie_parse(field, origin.get()));
        const bool good = !cookie || keepsPromiseOfName(fromSoupCookie(cookie.get()));
        if (good)
            kept.emplace_back(field);
        else
            g_warning("%s set a cookie that lacks what its name promises; it was dropped",
                      url.host().c_str());
        dropped = dropped || !good;
    };
    SoupMessageHeadersIter fields;
    const char* name = nullptr;
    const char* value = nullptr;
    soup_message_headers_iter_init(&fields, reply);
    while (soup_message_headers_iter_next(&fields, &name, &value))
        // Not strcasecmp(): in Turkish, "I" is not the capital of "i".
        if (g_ascii_strcasecmp(name, "Set-Cookie") == 0)
            judge(value);
    if (!dropped)
        return;
    soup_message_headers_remove(reply, "Set-Cookie");
    for (const std::string& field : kept)
        soup_message_headers_append(reply, "Set-Cookie", field.c_str());
}

} // namespace kelo::http
