#pragma once

#include "app/AppDelegate.h"
#include "app/StateObject.h"
#include "passkey/PasskeyAuthenticator.h"
#include "passkey/PasskeyRegistrar.h"
#include "platform/Application.h"
#include "voice/VoiceController.h"
#include "web/WebModel.h"

namespace kelo::app {

/// The program: its long-lived objects, each created on first use, and the scenes that show them.
/// It only wires things together; the behaviour is elsewhere.
class KeloApp final : public platform::App {
public:
    /// Stores the factories; creates no object yet.
    KeloApp();

    platform::ApplicationDelegate& applicationDelegate() override { return appDelegate; }
    platform::SceneGraph body() override;
    std::vector<platform::ProgramAction> actions() override;

private:
    platform::WindowGroup mainWindowGroup() const;
    platform::CommandMenu accountMenu() const;
    static platform::MenuBarExtra menuBarExtra();
    static platform::SettingsScene settings();

    AppDelegate appDelegate;
    StateObject<web::WebModel> web;
    StateObject<passkey::PasskeyAuthenticator> passkey;
    StateObject<passkey::PasskeyRegistrar> registrar;
    StateObject<voice::VoiceController> voice;
};

} // namespace kelo::app
