#pragma once

#include "base/ObservableObject.h"
#include "platform/EmbeddedWebView.h"
#include "platform/Geometry.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What the user sees, as values. The system computes them from its published state, and the
/// desktop draws them. Lengths are points (one CSS pixel each). Texts are shown literally, without
/// markup or mnemonics.
namespace kelo::platform {

/// A value that is computed for each drawing, and the objects to observe. A change of any of them
/// causes another drawing.
template <typename T>
struct Drawn {
    std::function<T()> body;
    /// Called once for each place where the value is drawn, after the first body(), because calling
    /// it earlier would create objects too early. Null if the value never changes.
    std::function<std::vector<std::shared_ptr<ObservableObject>>()> observed = nullptr;
};

enum class ControlSize { regular, large };
enum class ButtonStyle { regular, borderedProminent };

struct ButtonDescription {
    std::string label;
    /// Name of a symbolic icon; empty for no icon.
    std::string systemImage;
    double labelMaximumWidth = 0;
    ControlSize controlSize = ControlSize::regular;
    ButtonStyle style = ButtonStyle::regular;
    bool enabled = true;
    std::function<void()> action;
};

enum class TextColor { primary, red };
enum class TextFont { body, caption };

struct TextDescription {
    std::string text;
    TextFont font = TextFont::body;
    TextColor color = TextColor::primary;
};

/// A rounded, translucent panel at the bottom centre of the web view: a button and an optional text
/// below it, both centred.
struct OverlayDescription {
    ButtonDescription button;
    std::optional<TextDescription> text;
    double spacing = 0;       ///< between button and text
    double padding = 0;       ///< around both, inside the panel
    double cornerRadius = 0;  ///< of the panel
    double bottomPadding = 0; ///< between the panel and the window's lower edge
};

/// A web view that fills the content area of a window.
struct WebContentDescription {
    std::shared_ptr<EmbeddedWebView> webView;
    std::optional<OverlayDescription> overlay;
    Size minimumSize;
};

/// The key that is held for a shortcut.
enum class KeyModifier {
    none,
    /// The modifier of the desktop's own menu shortcuts: the Control key on Linux desktops.
    command,
};

struct KeyboardShortcut {
    /// The character on the key, letters in lower case: "q", ",". If the current keyboard layout
    /// does not have it, the key that has it in another of the user's layouts counts.
    std::string key;
    KeyModifier modifier = KeyModifier::none;
};

struct MenuItem {
    std::string label;
    bool enabled = true;
    std::function<void()> action;
    /// Shown beside the label. Works while the item is enabled: for the main menu in every window
    /// of the program, for a menu bar extra while its menu is open, if the desktop's tray supports
    /// it.
    std::optional<KeyboardShortcut> shortcut = std::nullopt;
    /// For an item of the main menu that is on or off: whether a check mark stands beside it.
    std::optional<bool> checked = std::nullopt;
};

struct MenuSeparator {};

/// A menu entry that opens or raises the settings scene.
struct SettingsLink {
    std::string label;
};

using MenuEntry = std::variant<MenuItem, MenuSeparator, SettingsLink>;
using Menu = std::vector<MenuEntry>;

struct CommandMenu {
    std::string title;
    Drawn<Menu> items;
};

struct WindowGroup {
    std::string identifier;
    /// The body is computed once when a window is built, and again for each redrawing.
    Drawn<WebContentDescription> content;
    /// Run each time a window of the group has appeared on the screen.
    std::function<void()> onAppear;
    Size defaultSize;
    std::vector<CommandMenu> commands;
};

struct MenuBarExtra {
    std::string title;
    std::string systemImage;
    Drawn<Menu> content;
};

struct LabeledRow {
    std::string label;
    std::string value;
};

struct SettingsDescription {
    std::vector<LabeledRow> rows;
    Size size;
};

struct SettingsScene {
    Drawn<SettingsDescription> content;
};

using Scene = std::variant<WindowGroup, MenuBarExtra, SettingsScene>;

/// In the order of declaration. A window of the first window group opens at launch.
using SceneGraph = std::vector<Scene>;

} // namespace kelo::platform
