#pragma once

#include "passkey/PasskeyAuthenticator.h"
#include "platform/SceneGraph.h"
#include "web/WebModel.h"

#include <memory>

namespace kelo::web {

/// Content of the main window: the web application and, over its login page only, the native
/// sign-in button. Stateless: everything follows from path, busy and errorMessage.
struct ContentView {
    std::shared_ptr<WebModel> web;
    std::shared_ptr<passkey::PasskeyAuthenticator> passkey;

    platform::WebContentDescription body() const;

private:
    bool isOnLoginPage() const;
    platform::OverlayDescription overlay() const;
    static Task<void> signIn(std::shared_ptr<WebModel> web,
                             std::shared_ptr<passkey::PasskeyAuthenticator> passkey);
};

} // namespace kelo::web
