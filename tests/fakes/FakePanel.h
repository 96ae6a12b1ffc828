#pragma once

#include "platform/Panel.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::fakes {

/// A panel without a screen. It records all calls.
class FakePanel final : public platform::Panel {
public:
    explicit FakePanel(platform::PanelDescription description)
        : description(description), frame_(description.contentRectangle) {}

    void setContentView(platform::PanelContent newContent) override {
        content = std::move(newContent);
    }
    bool isVisible() const override { return visible; }
    platform::Rectangle frame() const override { return frame_; }
    void setScreensHandler(std::function<void()> handler) override {
        screensChanged = std::move(handler);
    }
    void setCloseHandler(std::function<void()> handler) override { closed = std::move(handler); }
    void setFrameOrigin(platform::Point origin) override {
        calls.emplace_back("setFrameOrigin");
        frame_.x = origin.x;
        frame_.y = origin.y;
    }
    void makeKeyAndOrderFront() override {
        calls.emplace_back("makeKeyAndOrderFront");
        if (onOrderFront)
            onOrderFront();
        visible = true;
    }
    void makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) override {
        calls.emplace_back("makeFirstResponder");
        // A view that is not in the panel is ignored.
        if (view && view == content.webView)
            firstResponder = view;
    }
    void orderOut() override {
        calls.emplace_back("orderOut");
        visible = false;
    }

    const platform::PanelDescription description;
    platform::PanelContent content;
    std::shared_ptr<platform::EmbeddedWebView> firstResponder;
    std::vector<std::string> calls;
    /// What the panel's owner does when the monitors have changed.
    std::function<void()> screensChanged;
    /// What the panel's owner does when the desktop has hidden it.
    std::function<void()> closed;
    /// Run each time the panel is about to appear.
    std::function<void()> onOrderFront;
    bool visible = false;

private:
    platform::Rectangle frame_;
};

} // namespace kelo::fakes
