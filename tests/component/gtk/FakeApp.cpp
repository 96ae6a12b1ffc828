#include "component/gtk/FakeApp.h"

#include <gtkmm/window.h>

#include <algorithm>

namespace kelo::tests {

std::vector<platform::ProgramAction> FakeApp::actions() {
    return {{"wave", [this] { events.emplace_back("wave"); }}};
}

platform::SceneGraph FakeApp::body() {
    events.push_back("body");
    const auto observed = [this] { return std::vector<std::shared_ptr<ObservableObject>>{state}; };
    platform::WindowGroup main;
    main.identifier = "main";
    main.content = {[this] { return content(); }, observed};
    main.onAppear = [this] { events.push_back("appear"); };
    main.defaultSize = {1100, 760};
    main.commands.push_back({"Account", {[this] { return accountMenu(); }, observed}});

    platform::MenuBarExtra extra{"Kelo", "brain", {[this] { return trayMenu(); }, observed}};

    return {main, extra, platform::SettingsScene{{[this] { return settings(); }, observed}}};
}

int FakeApp::count(const std::string& event) const {
    return static_cast<int>(std::count(events.begin(), events.end(), event));
}

platform::WebContentDescription FakeApp::content() {
    if (!page) {
        // Records how far the window is, for the rules about what comes first.
        for (const auto* const window : Gtk::Window::list_toplevels()) {
            events.push_back(window->get_mapped() ? "page after its window"
                                                  : "page before a window");
            events.push_back(window->get_focus() ? "page after the focus"
                                                 : "page before the focus");
        }
        page = std::make_shared<FakePage>();
    }
    events.push_back("content");
    platform::WebContentDescription description;
    description.webView = page;
    description.minimumSize = {800, 600};
    if (!state->onLogin.get())
        return description;

    platform::OverlayDescription overlay;
    overlay.button.label = state->busy.get() ? "Waiting for passkey…" : "Sign in with passkey";
    overlay.button.systemImage = "person.badge.key";
    overlay.button.labelMaximumWidth = 320;
    overlay.button.controlSize = platform::ControlSize::large;
    overlay.button.style = platform::ButtonStyle::borderedProminent;
    overlay.button.enabled = !state->busy.get();
    overlay.button.action = [this] { events.push_back("sign in"); };
    if (const auto& error = state->error.get())
        overlay.text = platform::TextDescription{*error, platform::TextFont::caption,
                                                 platform::TextColor::red};
    overlay.spacing = 6;
    overlay.padding = 16;
    overlay.cornerRadius = 12;
    overlay.bottomPadding = 28;
    if (adjustOverlay)
        adjustOverlay(overlay);
    description.overlay = overlay;
    return description;
}

platform::Menu FakeApp::accountMenu() {
    platform::MenuItem item;
    item.label = "Register a Passkey on This Mac…";
    item.enabled = !state->registering.get();
    item.action = [this] { events.push_back("register"); };
    platform::MenuItem copy;
    copy.label = "Copy Address";
    copy.enabled = !state->registering.get();
    copy.action = [this] { events.push_back("copy"); };
    copy.shortcut = platform::KeyboardShortcut{"l", platform::KeyModifier::command};
    return {item, copy};
}

platform::Menu FakeApp::trayMenu() {
    return {platform::MenuItem{state->version.get(), true, [this] { events.push_back("version"); }},
            platform::SettingsLink{"Settings…"}};
}

platform::SettingsDescription FakeApp::settings() {
    return {{{"Version", state->version.get()}, {"Backend", "assistant.example.com"}}, {360, 140}};
}

} // namespace kelo::tests
