#pragma once

#include "linux/panel/PanelWindow.h"
#include "linux/panel/X11Connection.h"
#include "linux/panel/X11Keyboard.h"
#include "platform/Panel.h"

#include <memory>
#include <optional>

namespace kelo::desktop {

/// A panel on X11. Its window is hidden from the window manager (override-redirect): that alone
/// puts it over full-screen windows and on every workspace under every window manager, keeps it out
/// of task bars and switchers, and leaves place and keyboard to us. Main thread only.
///
/// Of the description, this is meant: backing and defer say how a window is built up, which the X
/// server decides; hidesOnDeactivate is never followed, for there is nobody who would tell; the
/// style mask, level, floatingPanel and collection behaviour all come with the kind of window.
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
    void makeKeyAndOrderFront() override;
    void makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) override;
    void orderOut() override;

private:
    void realize();
    void listen();
    /// Fits shape and place to what the display can do now.
    void reshape();
    void move() const;
    void takeKeyboard();
    void noteFocus(bool focused);
    gboolean handle(const XEvent& event);
    int scale() const;
    XID xid() const { return gdk_x11_surface_get_xid(window.surface()); }

    X11Connection connection;
    PanelWindow window;
    int selectionEvent;
    bool mayHaveKeyboard;
    /// The compositor blends the shadow with what lies behind; without one, the window is cut.
    bool isTranslucent = false;
    std::optional<X11Keyboard> keyboard;
    platform::Point origin;
};

} // namespace kelo::desktop
