#include "web/ContentView.h"

#include "base/Failure.h"
#include "base/async/Spawn.h"
#include "web/UserScript.h"
#include "web/WebView.h"

namespace kelo::web {

platform::WebContentDescription ContentView::body() const {
    platform::WebContentDescription content;
    content.webView = WebView{web}.makeView();
    if (isOnLoginPage())
        content.overlay = overlay();
    content.minimumSize = {800, 600};
    return content;
}

bool ContentView::isOnLoginPage() const {
    return web->path.get().starts_with("/login");
}

platform::OverlayDescription ContentView::overlay() const {
    platform::OverlayDescription overlay;
    overlay.button.label = passkey->busy ? waitingLabel : signInLabel;
    overlay.button.systemImage = "person.badge.key";
    overlay.button.labelMaximumWidth = 320;
    overlay.button.controlSize = platform::ControlSize::large;
    overlay.button.style = platform::ButtonStyle::borderedProminent;
    overlay.button.enabled = !passkey->busy;
    overlay.button.action = [web = web, passkey = passkey] { spawn(signIn(web, passkey)); };
    if (const auto& text = passkey->errorMessage.get())
        overlay.text =
            platform::TextDescription{*text, platform::TextFont::caption, platform::TextColor::red};
    overlay.spacing = 6;
    overlay.padding = 16;
    overlay.cornerRadius = 12;
    overlay.bottomPadding = 28;
    return overlay;
}

Task<void> ContentView::signIn(std::shared_ptr<WebModel> web,
                               std::shared_ptr<passkey::PasskeyAuthenticator> passkey) {
    try {
        auto cookies = co_await passkey->signIn();
        co_await web->injectCookies(std::move(cookies));
    } catch (...) {
        passkey->errorMessage = localizedDescription(std::current_exception());
    }
}

} // namespace kelo::web
