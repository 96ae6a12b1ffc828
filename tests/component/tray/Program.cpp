// The desktop side of the program with the menu of its item in the tray, for the tests with real
// trays. Prints what the user chose.
#include "component/gtk/FakePage.h"
#include "linux/gobject/GLibMainLoop.h"
#include "linux/gtk/application/GtkApplicationHost.h"

#include <iostream>
#include <utility>

namespace kelo::tests {
namespace {

class TrayApp final : public platform::App, private platform::ApplicationDelegate {
public:
    explicit TrayApp(platform::Application& application) : application(application) {}

    platform::ApplicationDelegate& applicationDelegate() override { return *this; }
    std::vector<platform::ProgramAction> actions() override {
        return {{"nothing", [] { say("started"); }}};
    }
    platform::SceneGraph body() override {
        platform::WindowGroup main;
        main.identifier = "main";
        main.content.body = [this] {
            if (!page)
                page = std::make_shared<FakePage>();
            platform::WebContentDescription content;
            content.webView = page;
            content.minimumSize = {300, 200};
            return content;
        };
        main.onAppear = [this] { say(appearances++ == 0 ? "appeared" : "appeared again"); };
        main.defaultSize = {500, 300};
        platform::MenuBarExtra extra{"Kelo", "brain", {[this] { return menu(); }}};
        platform::SettingsDescription settings{{{"Version", "1.0 (1)"}}, {360, 140}};
        return {main, extra, platform::SettingsScene{{[settings] { return settings; }}}};
    }

private:
    int appearances = 0;

    static void say(const char* what) { std::cout << what << std::endl; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return false; }

    platform::Menu menu() {
        return {
            platform::MenuItem{"Open Kelo", true,
                               [this] {
                                   say("open");
                                   application.activate();
                                   application.openWindow("main");
                               }},
            platform::MenuSeparator{},
            platform::MenuItem{"Check for Updates…", true, [] { say("check"); }},
            platform::SettingsLink{"Settings…"},
            platform::MenuSeparator{},
            platform::MenuItem{"Quit Kelo", true,
                               [this] {
                                   say("quit");
                                   application.terminate();
                               },
                               platform::KeyboardShortcut{"q", platform::KeyModifier::command}}};
    }

    platform::Application& application;
    std::shared_ptr<FakePage> page;
};

} // namespace
} // namespace kelo::tests

int main(int count, char** words) {
    kelo::gobject::GLibMainLoop loop;
    const kelo::MainLoop::Installation installation(loop);
    kelo::gtk::HostSettings settings;
    settings.options.push_back({"nothing", "Start without a window"});
    kelo::gtk::GtkApplicationHost host({words, words + count}, {}, std::move(settings));
    kelo::tests::TrayApp app(host);
    return host.run(app);
}
