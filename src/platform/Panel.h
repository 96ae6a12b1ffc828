#pragma once

#include "platform/EmbeddedWebView.h"
#include "platform/Geometry.h"
#include "platform/Window.h"

#include <cstdint>
#include <memory>

namespace kelo::platform {

using WindowStyleMask = std::uint64_t;

namespace window_style {
/// Without title bar, border and buttons.
inline constexpr WindowStyleMask borderless = 0;
/// Clicking it does not bring the program to the front.
inline constexpr WindowStyleMask nonactivatingPanel = 128;
} // namespace window_style

/// How the window's contents are kept while it is built up.
enum class BackingStore { buffered = 2 };

enum class WindowLevel { normal = 0, floating = 3 };

using CollectionBehavior = std::uint64_t;

namespace collection_behavior {
/// On every workspace.
inline constexpr CollectionBehavior canJoinAllSpaces = 1;
/// Also over a window that fills the screen.
inline constexpr CollectionBehavior fullScreenAuxiliary = 256;
} // namespace collection_behavior

enum class BackgroundColor { standard, clear };

using AutoresizingMask = std::uint64_t;

namespace autoresizing {
inline constexpr AutoresizingMask widthSizable = 2;
inline constexpr AutoresizingMask heightSizable = 16;
} // namespace autoresizing

/// A panel as it is asked for; it never changes afterwards.
struct PanelDescription {
    /// Of the whole panel where the style has no title bar.
    Rectangle contentRectangle;
    WindowStyleMask styleMask = window_style::borderless;
    BackingStore backing = BackingStore::buffered;
    /// Whether the window system hears of the panel only when it is first shown.
    bool defer = false;

    /// Whether it may have the keyboard.
    bool canBecomeKeyWindow = false;
    /// Whether the program's menus and commands may refer to it.
    bool canBecomeMainWindow = false;

    WindowLevel level = WindowLevel::normal;
    /// Over the ordinary windows of all programs.
    bool floatingPanel = false;
    /// Whether it goes away while another program is in front.
    bool hidesOnDeactivate = false;
    bool opaque = true;
    BackgroundColor backgroundColor = BackgroundColor::standard;
    bool hasShadow = false;
    CollectionBehavior collectionBehavior = 0;
};

/// A web view as the contents of a panel.
struct PanelContent {
    std::shared_ptr<EmbeddedWebView> webView;
    /// How the view follows the panel's size.
    AutoresizingMask autoresizingMask = 0;
    double cornerRadius = 0;
    /// Whether the view is cut off at its rounded corners.
    bool masksToBounds = false;
};

/// A window without decoration that floats over the other programs' windows. Not visible until it
/// is ordered to the front. Main thread only.
class Panel : public Window {
public:
    virtual void setContentView(PanelContent content) = 0;

    /// On the screen, perhaps behind something else.
    virtual bool isVisible() const = 0;
    virtual Rectangle frame() const = 0;
    /// Moves the panel's lower left corner there, now or when it is next shown.
    virtual void setFrameOrigin(Point origin) = 0;

    /// Shows the panel over everything else and gives it the keyboard, without bringing the rest of
    /// the program to the front.
    virtual void makeKeyAndOrderFront() = 0;
    /// Which part of the panel gets the keys. A view that is not in the panel is ignored.
    virtual void makeFirstResponder(const std::shared_ptr<EmbeddedWebView>& view) = 0;
    /// Takes the panel off the screen; when it has the keyboard, who had it before gets it back.
    virtual void orderOut() = 0;
};

} // namespace kelo::platform
