#include "linux/tray/StatusNotifierItem.h"

#include <string>
#include <utility>

namespace kelo::tray {

namespace {

using Text = Glib::Variant<Glib::ustring>;
using Values = ExportedObject::Values;

// ContextMenu and Scroll are missing on purpose: on the error "unknown method" a host shows the
// menu by itself, or does nothing.
constexpr const char* before = R"xml(<node><interface name="org.kde.StatusNotifierItem">
<property name="Category" type="s" access="read"/>
<property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="WindowId" type="i" access="read"/>
<property name="IconThemePath" type="s" access="read"/>
<property name="IconName" type="s" access="read"/>
<property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="OverlayIconName" type="s" access="read"/>
<property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionIconName" type="s" access="read"/>
<property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionMovieName" type="s" access="read"/>
<property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
<property name="ItemIsMenu" type="b" access="read"/>
<property name="Menu" type="o" access="read"/>
)xml";
constexpr const char* activation = R"xml(
<method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>)xml";
constexpr const char* after = R"xml(
<method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="ProvideXdgActivationToken"><arg type="s" direction="in"/></method>
<signal name="NewTitle"/><signal name="NewIcon"/><signal name="NewAttentionIcon"/>
<signal name="NewOverlayIcon"/><signal name="NewToolTip"/><signal name="NewMenu"/>
<signal name="NewStatus"><arg type="s"/></signal>
</interface></node>)xml";

} // namespace

StatusNotifierItem::StatusNotifierItem(Glib::RefPtr<Gio::DBus::Connection> connection,
                                       Identity identity, TrayIcon icon,
                                       std::function<void()> activate)
    : connection(std::move(connection)),
      identity(std::move(identity)),
      icon(std::move(icon)),
      activate(std::move(activate)) {
    exportObject();
}

void StatusNotifierItem::exportObject() {
    const std::string description =
        std::string(before) + (isActivationOffered ? activation : "") + after;
    object.reset();
    object.emplace(connection, identity.path, description.c_str(), members());
}

void StatusNotifierItem::offer(bool activation, bool iconName) {
    isIconNamed = iconName;
    if (std::exchange(isActivationOffered, activation) != activation)
        exportObject();
}

ExportedObject::Members StatusNotifierItem::members() {
    const auto text = [](std::string value) { return [value] { return Text::create(value); }; };
    const auto nothing = text("");
    const auto noPixmaps = [] { return iconPixmaps({}, 0); };

    ExportedObject::Members members;
    members.properties = {
        {"Category", text("ApplicationStatus")},
        {"Id", text(identity.identifier)},
        {"Title", text(identity.title)},
        {"Status", text("Active")},
        {"WindowId", [] { return Glib::Variant<gint32>::create(0); }},
        {"IconThemePath", text(icon.themePath)},
        {"IconName", [this] { return Text::create(isIconNamed ? icon.name : ""); }},
        {"IconPixmap",
         [this] {
             if (!pixmaps.gobj())
                 pixmaps = iconPixmaps(icon.masks, icon.color);
             return pixmaps;
         }},
        // Some hosts consider an item broken if one of these is missing.
        {"OverlayIconName", nothing},
        {"OverlayIconPixmap", noPixmaps},
        {"AttentionIconName", nothing},
        {"AttentionIconPixmap", noPixmaps},
        {"AttentionMovieName", nothing},
        {"ToolTip",
         [this] {
             return Glib::VariantBase(g_variant_new(
                 "(s@a(iiay)ss)", "", g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0),
                 identity.title.c_str(), ""));
         }},
        // A click should open the menu. Hosts that cannot do that call Activate instead.
        {"ItemIsMenu", [] { return Glib::Variant<bool>::create(true); }},
        {"Menu",
         [this] { return Glib::Variant<Glib::DBusObjectPathString>::create(identity.menuPath); }},
    };
    const auto activated = [this](const Values&) {
        activate();
        return Values();
    };
    members.methods = {
        {"Activate", activated},
        {"SecondaryActivate", activated},
        {"ProvideXdgActivationToken",
         [this](const Values& arguments) {
             Text token;
             arguments.get_child(token, 0);
             activationToken = token.get();
             return Values();
         }},
    };
    return members;
}

void StatusNotifierItem::setColor(std::uint32_t color) {
    if (std::exchange(icon.color, color) == color)
        return;
    pixmaps = {};
    object->emit("NewIcon");
}

std::string StatusNotifierItem::takeActivationToken() {
    return std::exchange(activationToken, {});
}

} // namespace kelo::tray
