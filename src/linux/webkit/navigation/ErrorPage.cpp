#include "linux/webkit/navigation/ErrorPage.h"

#include "linux/gobject/GObjectPointer.h"

namespace kelo::webkit {

namespace {

std::string escaped(const std::string& text) {
    const gobject::GText result(
        g_markup_escape_text(text.c_str(), static_cast<gssize>(text.size())));
    return result.get();
}

constexpr const char* style = R"(
:root { color-scheme: light dark; --text: #1d1d1f; --quiet: #5c5c63; --back: #f6f6f7;
        --button: #2f5fd0; --label: #ffffff; }
@media (prefers-color-scheme: dark) {
  :root { --text: #f2f2f4; --quiet: #b0b0b8; --back: #1f1f22; --button: #8fb0ff; --label: #10131c; }
}
html, body { height: 100%; margin: 0; }
body { display: flex; align-items: center; justify-content: center; background: var(--back);
       color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
main { max-width: 30em; padding: 2em; text-align: center; }
h1 { font-size: 1.25em; margin: 0 0 .5em; }
p { color: var(--quiet); margin: 0 0 1.75em; overflow-wrap: anywhere; }
a { display: inline-block; padding: .55em 1.4em; border-radius: .6em; background: var(--button);
    color: var(--label); text-decoration: none; font-weight: 600; }
a:focus-visible { outline: 3px solid var(--text); outline-offset: 3px; }
)";

} // namespace

std::string errorPage(const std::string& heading, const std::string& sentence) {
    return "<!doctype html><html lang=\"en\"><head><meta charset=\"utf-8\"><title>" +
           escaped(heading) + "</title><style>" + style + "</style></head><body><main><h1>" +
           escaped(heading) + "</h1><p>" + escaped(sentence) + "</p><a role=\"button\" href=\"" +
           tryAgainAddress + "\">Try again</a></main></body></html>";
}

} // namespace kelo::webkit
