#pragma once

#include "base/async/MainLoop.h"
#include "platform/Application.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kelo::fakes {

/// Opens, raises and closes windows without a screen, by the rules of the scene graph.
class FakeApplication final : public platform::Application {
public:
    struct FakeWindow final : platform::Window {
        std::string identifier;
        platform::WebContentDescription content;
        platform::Size size;
        int redrawings = 0;
        std::vector<Observation> observations;
    };

    /// Reads the scenes and opens a window of the first group; comes back at once.
    int run(platform::App& app) override {
        delegate = &app.applicationDelegate();
        actions = app.actions();
        scenes = app.body();
        openWindow(mainWindowGroup().identifier);
        return 0;
    }
    void activate() override { calls.push_back("activate"); }
    void terminate() override { terminated = true; }
    void openWindow(std::string_view identifier) override {
        calls.push_back("open " + std::string(identifier));
        const auto isOpen = std::find_if(open.begin(), open.end(), [&](const auto& window) {
            const auto* ours = dynamic_cast<const FakeWindow*>(window.get());
            return ours && ours->identifier == identifier;
        });
        if (isOpen != open.end())
            std::rotate(open.begin(), isOpen, isOpen + 1);
        else if (const auto* group = windowGroup(identifier))
            openNew(*group);
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
    std::vector<std::shared_ptr<platform::Window>> open; ///< most recently used first
    std::shared_ptr<platform::Window> key;
    std::vector<std::string> calls;
    bool terminated = false;

private:
    const platform::WindowGroup* windowGroup(std::string_view identifier) const {
        for (const auto& scene : scenes)
            if (const auto* group = std::get_if<platform::WindowGroup>(&scene))
                if (group->identifier == identifier)
                    return group;
        return nullptr;
    }
    void openNew(const platform::WindowGroup& group) {
        auto window = std::make_shared<FakeWindow>();
        window->identifier = group.identifier;
        window->content = group.content.body();
        window->size = group.defaultSize;
        if (group.content.observed)
            for (const auto& object : group.content.observed())
                window->observations.push_back(object->observe(redrawing(window, group)));
        for (const auto& menu : group.commands)
            menu.items.body();
        open.insert(open.begin(), window);
        group.onAppear();
    }
    /// Objects notify before they change, so drawing happens in a later turn of the main loop.
    static std::function<void()> redrawing(const std::weak_ptr<FakeWindow>& window,
                                           const platform::WindowGroup& group) {
        return [window, draw = group.content.body] {
            MainLoop::main().post([window, draw] {
                if (const auto open = window.lock()) {
                    open->content = draw();
                    ++open->redrawings;
                }
            });
        };
    }

    platform::ApplicationDelegate* delegate = nullptr;
};

} // namespace kelo::fakes
