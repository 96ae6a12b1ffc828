#include "linux/tray/BusMenu.h"

#include "linux/menu/MenuEntry.h"

#include <giomm/dbuserror.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <variant>

namespace kelo::tray {

namespace {

using Text = Glib::ustring;
using Node = std::tuple<gint32, EntryProperties, std::vector<Glib::VariantBase>>;
template <typename... Types>
using Tuple = Glib::Variant<std::tuple<Types...>>;

/// The identifier of the menu itself, the parent of all entries.
constexpr gint32 root = 0;
constexpr guint32 protocolVersion = 3;

constexpr const char* description = R"xml(<node><interface name="com.canonical.dbusmenu">
<property name="Version" type="u" access="read"/>
<property name="TextDirection" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" direction="in"/><arg type="i" direction="in"/>
<arg type="as" direction="in"/><arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/>
</method>
<method name="GetGroupProperties"><arg type="ai" direction="in"/><arg type="as" direction="in"/>
<arg type="a(ia{sv})" direction="out"/></method>
<method name="GetProperty"><arg type="i" direction="in"/><arg type="s" direction="in"/>
<arg type="v" direction="out"/></method>
<method name="Event"><arg type="i" direction="in"/><arg type="s" direction="in"/>
<arg type="v" direction="in"/><arg type="u" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
<method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" direction="in"/><arg type="ai" direction="out"/>
<arg type="ai" direction="out"/></method>
<signal name="ItemsPropertiesUpdated"><arg type="a(ia{sv})"/><arg type="a(ias)"/></signal>
<signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
<signal name="ItemActivationRequested"><arg type="i"/><arg type="u"/></signal>
</interface></node>)xml";

template <typename T>
T argument(const Glib::VariantContainerBase& arguments, gsize index) {
    Glib::Variant<T> value;
    arguments.get_child(value, index);
    return value.get();
}

[[noreturn]] void refuse(const std::string& why) {
    throw Gio::DBus::Error(Gio::DBus::Error::INVALID_ARGS, why);
}

EntryProperties rootProperties() {
    return {{"children-display", Glib::Variant<Text>::create("submenu")}};
}

/// The properties with these names; all properties if the list is empty.
EntryProperties only(const std::vector<Text>& names, const EntryProperties& properties) {
    if (names.empty())
        return properties;
    EntryProperties chosen;
    for (const auto& [name, value] : properties)
        if (std::find(names.begin(), names.end(), name) != names.end())
            chosen[name] = value;
    return chosen;
}

/// The value of each property that is left out of a reply.
EntryProperties defaults() {
    return {{"type", Glib::Variant<Text>::create("standard")},
            {"label", Glib::Variant<Text>::create("")},
            {"enabled", Glib::Variant<bool>::create(true)},
            {"visible", Glib::Variant<bool>::create(true)},
            {"icon-name", Glib::Variant<Text>::create("")},
            {"toggle-type", Glib::Variant<Text>::create("")},
            {"toggle-state", Glib::Variant<gint32>::create(-1)},
            {"children-display", Glib::Variant<Text>::create("")}};
}

} // namespace

BusMenu::BusMenu(Glib::RefPtr<Gio::DBus::Connection> connection, std::string path, Draw draw,
                 Chosen chosen)
    : draw(std::move(draw)),
      chosen(std::move(chosen)),
      object((entries.update(this->draw()), std::move(connection)), std::move(path), description,
             members()) {}

ExportedObject::Members BusMenu::members() {
    ExportedObject::Members members;
    members.properties = {
        {"Version", [] { return Glib::Variant<guint32>::create(protocolVersion); }},
        {"TextDirection",
         [] { return Glib::Variant<Text>::create("ltr"); }}, // our texts are English
        {"Status", [] { return Glib::Variant<Text>::create("normal"); }},
        {"IconThemePath", [] { return Glib::Variant<std::vector<Text>>::create({}); }},
    };
    members.methods = {
        {"GetLayout", [this](const Values& values) { return layout(values); }},
        {"GetGroupProperties", [this](const Values& values) { return groupProperties(values); }},
        {"GetProperty", [this](const Values& values) { return property(values); }},
        {"Event", [this](const Values& values) { return event(values); }},
        {"EventGroup", [this](const Values& values) { return eventGroup(values); }},
        {"AboutToShow", [this](const Values& values) { return aboutToShow(values); }},
        {"AboutToShowGroup", [this](const Values& values) { return aboutToShowGroup(values); }},
    };
    return members;
}

bool BusMenu::isKnown(std::int32_t identifier) const {
    return identifier == root || entries.find(identifier);
}

void BusMenu::requireKnown(std::int32_t identifier) const {
    if (!isKnown(identifier))
        refuse("The menu has no entry " + std::to_string(identifier));
}

BusMenu::Values BusMenu::layout(const Values& arguments) const {
    const auto parent = argument<gint32>(arguments, 0);
    const auto depth = argument<gint32>(arguments, 1);
    const auto names = argument<std::vector<Text>>(arguments, 2);
    requireKnown(parent);
    Node top{parent, EntryProperties{}, std::vector<Glib::VariantBase>{}};
    if (parent != root) {
        std::get<EntryProperties>(top) = only(names, entries.find(parent)->properties);
    } else {
        std::get<EntryProperties>(top) = only(names, rootProperties());
        if (depth != 0)
            for (const auto& entry : entries.all())
                std::get<2>(top).push_back(
                    Glib::Variant<Node>::create({entry.identifier, only(names, entry.properties),
                                                 std::vector<Glib::VariantBase>{}}));
    }
    return Tuple<guint32, Node>::create({revision, top});
}

BusMenu::Values BusMenu::groupProperties(const Values& arguments) const {
    const auto identifiers = argument<std::vector<gint32>>(arguments, 0);
    const auto names = argument<std::vector<Text>>(arguments, 1);
    const auto isAskedFor = [&](gint32 identifier) {
        return identifiers.empty() ||
               std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end();
    };
    std::vector<std::tuple<gint32, EntryProperties>> group;
    if (isAskedFor(root))
        group.emplace_back(root, only(names, rootProperties()));
    for (const auto& entry : entries.all())
        if (isAskedFor(entry.identifier))
            group.emplace_back(entry.identifier, only(names, entry.properties));
    return Tuple<decltype(group)>::create({group});
}

BusMenu::Values BusMenu::property(const Values& arguments) const {
    const auto identifier = argument<gint32>(arguments, 0);
    const auto name = argument<Text>(arguments, 1);
    requireKnown(identifier);
    auto properties = identifier == root ? rootProperties() : entries.find(identifier)->properties;
    properties.merge(defaults());
    const auto found = properties.find(name);
    if (found == properties.end())
        refuse("Entries of the menu have no property of that name");
    return Tuple<Glib::VariantBase>::create({found->second});
}

BusMenu::Values BusMenu::event(const Values& arguments) {
    const auto identifier = argument<gint32>(arguments, 0);
    requireKnown(identifier);
    happened(identifier, argument<Text>(arguments, 1));
    return {};
}

BusMenu::Values BusMenu::eventGroup(const Values& arguments) {
    using Event = std::tuple<gint32, Text, Glib::VariantBase, guint32>;
    const auto events = argument<std::vector<Event>>(arguments, 0);
    std::vector<gint32> unknown;
    for (const auto& one : events)
        if (!isKnown(std::get<gint32>(one)))
            unknown.push_back(std::get<gint32>(one));
    if (!events.empty() && unknown.size() == events.size())
        refuse("The menu has none of these entries");
    for (const auto& one : events)
        if (isKnown(std::get<gint32>(one)))
            happened(std::get<gint32>(one), std::get<Text>(one));
    return Tuple<std::vector<gint32>>::create({unknown});
}

BusMenu::Values BusMenu::aboutToShow(const Values& arguments) {
    requireKnown(argument<gint32>(arguments, 0));
    return Tuple<bool>::create({update()});
}

BusMenu::Values BusMenu::aboutToShowGroup(const Values& arguments) {
    const auto identifiers = argument<std::vector<gint32>>(arguments, 0);
    std::vector<gint32> unknown;
    std::vector<gint32> changed;
    for (const gint32 identifier : identifiers)
        if (!isKnown(identifier))
            unknown.push_back(identifier);
    if (!identifiers.empty() && unknown.size() == identifiers.size())
        refuse("The menu has none of these entries");
    if (update())
        changed.push_back(root);
    return Tuple<std::vector<gint32>, std::vector<gint32>>::create(
        {std::move(changed), std::move(unknown)});
}

void BusMenu::happened(std::int32_t identifier, const Text& event) {
    const auto* entry = entries.find(identifier);
    if (event == "clicked" && entry && menu::canBeChosen(entry->content))
        chosen(entry->content);
}

bool BusMenu::update() {
    const auto change = entries.update(draw());
    if (change.layout) {
        ++revision;
        object.emit("LayoutUpdated", Tuple<guint32, gint32>::create({revision, root}));
    } else if (!change.isEmpty()) {
        std::vector<std::tuple<gint32, EntryProperties>> updated(change.updated.begin(),
                                                                 change.updated.end());
        std::vector<std::tuple<gint32, std::vector<Text>>> removed(change.removed.begin(),
                                                                   change.removed.end());
        object.emit("ItemsPropertiesUpdated",
                    Tuple<decltype(updated), decltype(removed)>::create({updated, removed}));
    }
    return !change.isEmpty();
}

} // namespace kelo::tray
