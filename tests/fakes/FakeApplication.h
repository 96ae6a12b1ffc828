#pragma once

#include "platform/Application.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kelo::fakes {

/// Opens and closes windows without a screen, by the rules of the scene graph.
class FakeApplication final : public platform::Application {
public:
    struct FakeWindow final : platform::Window {
        platform::WebContentDescription content;
        platform::Size size;
    };

    /// Reads the scenes and opens the first window; comes back at once.
    int run(platform::App& app) override {
        delegate = &app.applicationDelegate();
        actions = app.actions();
        scenes = app.body();
        openWindow("main");
        return 0;
    }
    void activate() override { calls.push_back("activate"); }
    void terminate() override { terminated = true; }
    void openWindow(std::string_view identifier) override {
        calls.push_back("open " + std::string(identifier));
        const auto& group = mainWindowGroup();
        auto window = std::make_shared<FakeWindow>();
        window->content = group.content.body();
        window->size = group.defaultSize;
        for (const auto& menu : group.commands)
            menu.items.body();
        open.insert(open.begin(), window);
        group.onAppear();
    }
    void closeWindow(const std::shared_ptr<platform::Window>& window) {
        std::erase(open, window);
        if (open.empty() && delegate->applicationShouldTerminateAfterLastWindowClosed())
            terminated = true;
    }

    std::shared_ptr<platform::Window> keyWindow() override { return key; }
    std::vector<std::shared_ptr<platform::Window>> windows() override { return open; }
    std::shared_ptr<platform::Window> makePlainWindow() override {
        calls.push_back("make plain window");
        return std::make_shared<FakeWindow>();
    }

    const platform::WindowGroup& mainWindowGroup() const {
        return std::get<platform::WindowGroup>(scenes.at(0));
    }
    const FakeWindow& windowAt(std::size_t index) const {
        return dynamic_cast<const FakeWindow&>(*open.at(index));
    }

    std::vector<platform::ProgramAction> actions;
    platform::SceneGraph scenes;
    std::vector<std::shared_ptr<platform::Window>> open;
    std::shared_ptr<platform::Window> key;
    std::vector<std::string> calls;
    bool terminated = false;

private:
    platform::ApplicationDelegate* delegate = nullptr;
};

} // namespace kelo::fakes
