#pragma once

#include "platform/EmbeddedWebView.h"
#include "platform/Geometry.h"
#include "platform/Window.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace kelo::platform {

using WindowStyleMask = std::uint64_t;

namespace window_style {
/// No title bar, no border and no buttons.
inline constexpr WindowStyleMask borderless = 0;
/// Borderless, and clicking it does not bring the program to the front.
inline constexpr WindowStyleMask nonactivatingPanel = 128;
} // namespace window_style

/// How a window's pixels are kept until they are shown.
enum class BackingStore { buffered = 2 };

enum class WindowLevel { normal = 0, floating = 3 };

/// A set of the bits below.
using CollectionBehavior = std::uint64_t;

namespace collection_behavior {
/// Shown on every workspace.
inline constexpr CollectionBehavior canJoinAllSpaces = 1;
/// Shown over full-screen windows, too.
inline constexpr CollectionBehavior fullScreenAuxiliary = 256;
} // namespace collection_behavior

enum class BackgroundColor { standard, clear };

/// A set of the bits below.
using AutoresizingMask = std::uint64_t;

namespace autoresizing {
inline constexpr AutoresizingMask widthSizable = 2;
inline constexpr AutoresizingMask heightSizable = 16;
} // namespace autoresizing

/// A request for a panel. It cannot be changed once the panel is made.
///
/// Not every desktop lets a program decide all of this. Each member says what Linux makes of it on
/// X11, on Wayland with the layer shell, and as a plain window: the panel of a Wayland desktop
/// without the layer shell, and of every desktop when the panel is not to float.
struct PanelDescription {
    /// Place and size of the whole panel, which has no title bar. A plain window is placed by the
    /// desktop.
    Rectangle contentRectangle;
    /// Nothing reads it: no panel has a title bar, and clicking a panel never raises the program's
    /// other windows.
    WindowStyleMask styleMask = window_style::borderless;
    /// Nothing reads it: the toolkit buffers every window, and the seam knows no other value.
    BackingStore backing = BackingStore::buffered;
    /// Whether the panel's window is created only when it is first shown. Nothing reads it: the
    /// window is always created then, and nobody can see a window before that.
    bool defer = false;

    /// Whether the panel may have the keyboard. For a plain window the desktop decides.
    bool canBecomeKeyWindow = false;
    /// Whether the program's menus and commands may refer to the panel. Nothing reads it: a panel
    /// does not count among the application's windows, so they never do.
    bool canBecomeMainWindow = false;

    /// A panel floats over the ordinary windows of all programs if its level is `floating` or it is
    /// a floating panel: either is enough. A panel that does not float is a plain window, on X11
    /// and with the layer shell as well.
    WindowLevel level = WindowLevel::normal;
    bool floatingPanel = false;
    /// Whether the panel is hidden when the keyboard goes from it to another program. A panel that
    /// never has the keyboard stays.
    bool hidesOnDeactivate = false;
    /// Unless the panel is not opaque and its background is clear, the theme's window background is
    /// drawn behind the contents.
    bool opaque = true;
    BackgroundColor backgroundColor = BackgroundColor::standard;
    /// X11 draws it only under a compositor. The shadow of a plain window is the desktop's choice.
    bool hasShadow = false;
    /// A floating panel is on every workspace in any case: neither X11 nor the layer shell can keep
    /// it on one. With the layer shell it covers full-screen windows only if fullScreenAuxiliary is
    /// set; on X11 it always does. For a plain window the desktop decides.
    CollectionBehavior collectionBehavior = 0;
};

/// The contents of a panel: a web view.
struct PanelContent {
    std::shared_ptr<EmbeddedWebView> webView;
    /// How the view follows the panel's size.
    AutoresizingMask autoresizingMask = 0;
    /// In points.
    double cornerRadius = 0;
    /// Whether the view is clipped to the rounded corners.
    bool masksToBounds = false;
};

/// A window without decoration, such as one that floats over other programs. It is hidden until
/// makeKeyAndOrderFront() is called. Main thread only.
class Panel : public Window {
public:
    virtual void setContentView(PanelContent content) = 0;

    /// Whether the panel is on the screen. Other windows may cover it.
    virtual bool isVisible() const = 0;
    virtual Rectangle frame() const = 0;
    /// Moves the panel's lower left corner to this point. A hidden panel appears there.
    virtual void setFrameOrigin(Point origin) = 0;

    /// The handler is called in a later turn of the main loop when the monitors or their free areas
    /// have changed while the panel is shown. Not called where the desktop places the panel, and
    /// with the layer shell not for free areas.
    virtual void setScreensHandler(std::function<void()> handler) = 0;

    /// The handler is called after the panel has been hidden by anything but orderOut(): a key of
    /// the desktop that closes windows, the loss of the last monitor, or of the keyboard where the
    /// description says so.
    virtual void setCloseHandler(std::function<void()> handler) = 0;

    /// Shows the panel in front and gives it the keyboard. The program's other windows stay where
    /// they are.
    virtual void makeKeyAndOrderFront() = 0;
    /// Gives the view the keyboard focus within the panel. Ignored if the view is not inside it.
    virtual void makeFirstResponder(const std::shared_ptr<EmbeddedWebView>& view) = 0;
    /// Hides the panel. If it has the keyboard, the window that had it before gets it back.
    virtual void orderOut() = 0;
};

} // namespace kelo::platform
