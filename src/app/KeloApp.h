#pragma once

#include "app/AppDelegate.h"
#include "app/StateObject.h"
#include "passkey/PasskeyAuthenticator.h"
#include "passkey/PasskeyRegistrar.h"
#include "platform/Application.h"
#include "voice/VoiceController.h"
#include "web/WebModel.h"

namespace kelo::app {

/// The program: its long-lived objects, each made when first read, and the scenes that show them.
/// Every behaviour it wires together has its own home.
class KeloApp final : public platform::App {
public:
    /// Only notes how the objects are made; none is made yet.
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
