#pragma once

#include "linux/panel/PanelKeyboard.h"
#include "linux/panel/PanelWindow.h"
#include "linux/panel/X11Connection.h"
#include "linux/panel/X11ScreensWatch.h"
#include "platform/Panel.h"

#include <memory>
#include <optional>

namespace kelo::panel {

/// A floating panel on X11. Window managers do not manage its window (override-redirect). Under all
/// of them, this puts it over full-screen windows and on every workspace and keeps it out of task
/// bars and switchers. Place and keyboard focus are then up to this class. Main thread only.
class X11Panel final : public platform::Panel {
public:
    static std::shared_ptr<X11Panel> make(GdkDisplay* display,
                                          const platform::PanelDescription& description);
    X11Panel(GdkDisplay* display, const platform::PanelDescription& description);
    ~X11Panel() override;
    X11Panel(const X11Panel&) = delete;
    X11Panel& operator=(const X11Panel&) = delete;

    void setContentView(platform::PanelContent content) override;
    bool isVisible() const override;
    platform::Rectangle frame() const override;
    void setFrameOrigin(platform::Point origin) override;
    void setScreensHandler(std::function<void()> handler) override;
    void setCloseHandler(std::function<void()> handler) override;
    void makeKeyAndOrderFront() override;
    void makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) override;
    void orderOut() override;

private:
    void realize();
    void listen();
    /// Puts the window in front of all others, before the toolkit does. It must have been shown
    /// once, and be hidden.
    void appear();
    /// Adapts shape and place to the scale, and to whether the display blends windows now.
    void reshape();
    void move() const;
    void handle(const XEvent& event);
    int scale() const;
    XID xid() const { return window::xlibWindow(window.surface()); }

    X11Connection connection;
    PanelWindow window;
    int selectionEvent;
    bool mayHaveKeyboard;
    /// Whether a compositor blends the shadow. Otherwise, the shadow is cut off.
    bool isTranslucent = false;
    /// Whether the panel is outside the screen, because one of our dialogs needs its place.
    bool isAside = false;
    X11ScreensWatch screens;
    platform::Point origin;
    /// Empty until the window is realized.
    std::optional<PanelKeyboard> keyboard;
};

} // namespace kelo::panel
