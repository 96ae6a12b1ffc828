#include "linux/webkit/navigation/ErrorPage.h"

#include "base/Translation.h"
#include "linux/gobject/GObjectPointer.h"

#include <algorithm>

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
p.retry { font-size: .9em; margin: 1.25em 0 0; font-variant-numeric: tabular-nums; }
svg { width: 3.5em; height: 3.5em; color: var(--quiet); margin-bottom: .75em; }
a:focus-visible { outline: 3px solid var(--text); outline-offset: 3px; }
)";

// A cloud that is crossed out.
constexpr const char* icon =
    R"(<svg viewBox="0 0 48 48" fill="none" stroke="currentColor" stroke-width="3" )"
    R"(stroke-linecap="round" stroke-linejoin="round" aria-hidden="true">)"
    R"(<path d="M13 37h22a8 8 0 0 0 1-16 12 12 0 0 0-23-2 9 9 0 0 0 0 18zM8 8l32 34"/></svg>)";

/// The seconds that are left, counted by the style sheet.
std::string countdown(std::chrono::seconds whole) {
    const std::string seconds = std::to_string(whole.count());
    // Translators: %1 is a number that counts down.
    const std::string text = translated("Trying again in %1 s");
    const std::size_t number = std::min(text.find("%1"), text.size());
    const std::string before = text.substr(0, number);
    const std::string after = number < text.size() ? text.substr(number + 2) : "";
    return "<style>@property --left { syntax: '<integer>'; inherits: false; initial-value: " +
           seconds + "; } @keyframes left { from { --left: " + seconds +
           "; } to { --left: 0; } } .retry::after { counter-reset: left var(--left); content: "
           "counter(left) attr(data-after); animation: left " +
           seconds + "s steps(" + seconds +
           ") forwards; }</style><p class=\"retry\" data-after=\"" + escaped(after) + "\">" +
           escaped(before) + "</p>";
}

} // namespace

std::string errorPage(const std::string& heading, const std::string& sentence,
                      std::optional<std::chrono::seconds> retryIn) {
    // Translators: the code of your language, for instance "de".
    const std::string language = translated("en");
    return "<!doctype html><html lang=\"" + escaped(language) +
           "\"><head><meta charset=\"utf-8\"><title>" + escaped(heading) + "</title><style>" +
           style + "</style></head><body><main>" + icon + "<h1>" + escaped(heading) + "</h1><p>" +
           escaped(sentence) + "</p><a role=\"button\" autofocus href=\"" + tryAgainAddress +
           "\">" + escaped(translated("Try again")) + "</a>" +
           (retryIn ? countdown(*retryIn) : "") + "</main></body></html>";
}

} // namespace kelo::webkit
