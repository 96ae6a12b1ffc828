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

/// What the user sees, as values: computed by the system from its published state, drawn by the
/// desktop. Lengths are points (one CSS pixel each). Texts are shown as they stand.
namespace kelo::platform {

/// A value that is computed anew at every drawing, and the objects whose changes ask for one.
template <typename T>
struct Drawn {
    std::function<T()> body;
    /// Asked once for each place the value is drawn in, after the first body(); null when nothing
    /// can change. Asking earlier would create objects before their turn.
    std::function<std::vector<std::shared_ptr<ObservableObject>>()> observed = nullptr;
};

enum class ControlSize { regular, large };
enum class ButtonStyle { regular, borderedProminent };

struct ButtonDescription {
    std::string label;
    /// Name of a symbolic icon; empty for none.
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

/// A rounded, translucent panel that floats over the bottom centre of the web view: a button and,
/// below it, perhaps a text, centred on one another.
struct OverlayDescription {
    ButtonDescription button;
    std::optional<TextDescription> text;
    double spacing = 0;       ///< between button and text
    double padding = 0;       ///< around both, inside the panel
    double cornerRadius = 0;  ///< of the panel
    double bottomPadding = 0; ///< between the panel and the window's lower edge
};

/// A web view to every edge of a window's content area.
struct WebContentDescription {
    std::shared_ptr<EmbeddedWebView> webView;
    std::optional<OverlayDescription> overlay;
    Size minimumSize;
};

enum class KeyModifier { none, command };

struct KeyboardShortcut {
    std::string key;
    KeyModifier modifier = KeyModifier::none;
};

struct MenuItem {
    std::string label;
    bool enabled = true;
    std::function<void()> action;
    std::optional<KeyboardShortcut> shortcut = std::nullopt;
};

struct MenuSeparator {};

/// Opens or raises the settings scene.
struct SettingsLink {
    std::string label;
};

using Menu = std::vector<std::variant<MenuItem, MenuSeparator, SettingsLink>>;

struct CommandMenu {
    std::string title;
    Drawn<Menu> items;
};

struct WindowGroup {
    std::string identifier;
    /// The body is read once for each window as it is built, and at every redrawing.
    Drawn<WebContentDescription> content;
    /// Run each time a window of the group has come onto the screen.
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

/// In the order declared; a window of the first window group is opened at launch.
using SceneGraph = std::vector<Scene>;

} // namespace kelo::platform
