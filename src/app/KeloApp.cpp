#include "app/KeloApp.h"

#include "app/MenuBarContent.h"
#include "app/RegistrationCommand.h"
#include "app/SettingsView.h"
#include "base/Translation.h"
#include "web/ContentView.h"

namespace kelo::app {

namespace {

using Observed = std::vector<std::shared_ptr<ObservableObject>>;

} // namespace

KeloApp::KeloApp()
    : web(&web::WebModel::make),
      passkey([] { return std::make_shared<passkey::PasskeyAuthenticator>(); }),
      registrar([] { return std::make_shared<passkey::PasskeyRegistrar>(); }),
      voice([] { return std::make_shared<voice::VoiceController>(); }) {}

platform::SceneGraph KeloApp::body() {
    return {mainWindowGroup(), menuBarExtra(), settings()};
}

std::vector<platform::ProgramAction> KeloApp::actions() {
    return {{"widget", [voice = voice] { voice.get()->toggleWidget(); }},
            {"check-for-updates", &checkForUpdates}};
}

platform::WindowGroup KeloApp::mainWindowGroup() const {
    platform::WindowGroup group;
    group.identifier = "main";
    group.content.body = [web = web, passkey = passkey] {
        // Creating the web model starts the first page load, so do that first.
        const auto& model = web.get();
        return web::ContentView{model, passkey.get()}.body();
    };
    group.content.observed = [web = web, passkey = passkey] {
        return Observed{web.get(), passkey.get()};
    };
    // At every appearance, which the controller allows. Not earlier: the hotkey must not work
    // before the first window.
    group.onAppear = [voice = voice, web = web] { voice.get()->start(web.get()); };
    group.defaultSize = {1100, 760};
    group.commands = {accountMenu()};
    return group;
}

platform::CommandMenu KeloApp::accountMenu() const {
    platform::CommandMenu menu;
    menu.title = "Account";
    menu.items.body = [web = web, registrar = registrar] {
        const RegistrationCommand command(registrar.get(),
                                          [web] { return web.get()->currentCookies(); });
        return command.menu();
    };
    menu.items.observed = [registrar = registrar] { return Observed{registrar.get()}; };
    return menu;
}

platform::MenuBarExtra KeloApp::menuBarExtra() {
    platform::MenuBarExtra extra;
    extra.title = "Kelo";
    extra.systemImage = "brain";
    extra.content.body = [] { return MenuBarContent().body(); };
    return extra;
}

platform::SettingsScene KeloApp::settings() {
    platform::SettingsScene scene;
    scene.content.body = [] { return SettingsView().body(); };
    return scene;
}

} // namespace kelo::app
