#pragma once

#include "linux/panel/HeldKeyGrab.h"
#include "linux/panel/PanelWindow.h"
#include "linux/panel/X11Connection.h"
#include "linux/panel/X11Keyboard.h"
#include "linux/window/ModalWindows.h"
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
    void makeKeyAndOrderFront() override;
    void makeFirstResponder(const std::shared_ptr<platform::EmbeddedWebView>& view) override;
    void orderOut() override;

private:
    void realize();
    void listen();
    /// Adapts shape and place to the scale, and to whether the display blends windows now.
    void reshape();
    void move() const;
    void takeKeyboard();
    void keyboardLost();
    void watchPresses(bool wanted) const;
    /// The user has pressed a mouse button anywhere on the screen.
    void pressed(Time time);
    bool reportsScreens(const XEvent& event) const;
    void screensChanged();
    /// Forgets a press that would have given the keyboard back.
    void stay();
    /// A dialog of this program has appeared; null: the last one has gone.
    void dialogsChanged(GtkWindow* appeared);
    void dialogMapped(XID dialog);
    void noteFocus(bool focused);
    gboolean handle(const XEvent& event);
    int scale() const;
    XID xid() const { return gdk_x11_surface_get_xid(window.surface()); }

    X11Connection connection;
    PanelWindow window;
    int selectionEvent;
    bool mayHaveKeyboard;
    /// Whether a compositor blends the shadow. Otherwise, the shadow is cut off.
    bool isTranslucent = false;
    std::optional<X11Keyboard> keyboard;
    /// How often the keyboard may still be taken back from nobody during this show.
    int retakesLeft = 0;
    /// Whether the panel gets the keyboard when the last dialog has gone.
    bool waitsForDialog = false;
    /// The dialog that gets the keyboard as soon as it is on the screen.
    XID dialogToFocus = None;
    /// How often the keyboard may still be taken back from a window that got it from a dialog.
    int reclaimsLeft = 0;
    std::function<void()> screensHandler;
    int randrEvents;
    /// The idle source that calls the handler; 0 for none.
    guint screensSource = 0;
    /// The timer after which a press outside gives the keyboard back; 0 for none.
    guint leaving = 0;
    Time pressTime = CurrentTime;
    XID pressedWindow = None;
    HeldKeyGrab heldKey;
    platform::Point origin;
    // Last, because its handler uses the others.
    window::ModalWindows dialogs;
};

} // namespace kelo::panel
