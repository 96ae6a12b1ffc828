#pragma once

#include "base/Url.h"
#include "platform/CookieStore.h"

#include <libsoup/soup.h>

namespace kelo::http {

/// Whether a cookie keeps what its name promises (RFC 6265bis, section 4.1.3). "__Secure-" promises
/// that it is sent over TLS alone; "__Host-" promises besides that it belongs to one host and to
/// all of its paths, so that no other host can have set it. The case of the letters does not
/// matter. Names without such a prefix promise nothing.
bool keepsPromiseOfName(const platform::HttpCookie& cookie);

/// Takes those Set-Cookie fields out of a reply from this URL whose cookies do not.
void dropFalseCookies(SoupMessageHeaders* reply, const Url& url);

} // namespace kelo::http
