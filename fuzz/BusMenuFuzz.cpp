#include "FakeExport.h"
#include "FuzzInput.h"
#include "GLibComplaints.h"
#include "linux/menu/MenuEntry.h"
#include "linux/tray/BusMenu.h"

#include <giomm/dbuserror.h>
#include <giomm/init.h>

#include <charconv>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

// What tray hosts ask of the menu. Each line is a call: a letter, numbers and names.
//
//   M iIds          another menu is drawn from now on: items, a disabled one, a separator...
//   L 0 -1 label    GetLayout, and in the same way the other methods; see perform() below
//
// The bus is left out; see FakeExport.h.

using namespace kelo;
using fuzz::require;
using Text = Glib::ustring;
using Values = Glib::VariantContainerBase;
using Properties = tray::EntryProperties;
template <typename... Types>
using Tuple = Glib::Variant<std::tuple<Types...>>;

namespace {

platform::Menu menuOf(std::string_view letters) {
    platform::Menu menu;
    for (const char letter : letters) {
        const std::string label(1, letter);
        if (letter == 's')
            menu.emplace_back(platform::MenuSeparator{});
        else if (letter == 'l' || letter == 'm')
            menu.emplace_back(platform::SettingsLink{label});
        else if (letter == 'd' || letter == 'e')
            menu.emplace_back(platform::MenuItem{label, false, nullptr});
        else if (letter >= 'A' && letter <= 'Z')
            menu.emplace_back(platform::MenuItem{
                label, true, nullptr,
                platform::KeyboardShortcut{label, platform::KeyModifier::command}});
        else if (letter > ' ')
            menu.emplace_back(platform::MenuItem{"_" + label, true, nullptr});
    }
    return menu;
}

/// What one host knows of the menu: it listens to the signals as the protocol prescribes.
struct Host {
    std::uint32_t revision = 0;
    std::vector<std::int32_t> order;
    std::map<std::int32_t, Properties> entries;
};

bool areTheSame(const Properties& one, const Properties& other) {
    const auto same = [](const auto& left, const auto& right) {
        return left.first.raw() == right.first.raw() && left.second.equal(right.second);
    };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), same);
}

bool areTheSame(const Host& one, const Host& other) {
    const auto same = [](const auto& left, const auto& right) {
        return left.first == right.first && areTheSame(left.second, right.second);
    };
    return one.revision == other.revision && one.order == other.order &&
           std::equal(one.entries.begin(), one.entries.end(), other.entries.begin(),
                      other.entries.end(), same);
}

class Session {
public:
    Session() {
        bus.heard = [this](const std::string& signal, const Values& values) {
            heard(signal, values);
        };
        menu.emplace(
            Glib::RefPtr<Gio::DBus::Connection>(), "/MenuBar", [this] { return menuOf(letters); },
            [this](const platform::MenuEntry& entry) {
                require(menu::canBeChosen(entry));
                ++chosen;
            });
        host = layoutOf();
        remember();
    }

    void perform(std::string_view line);

private:
    using Node = std::tuple<gint32, Properties, std::vector<Glib::VariantBase>>;
    using Names = std::vector<Text>;
    using Numbers = std::vector<gint32>;

    /// Nothing if the menu refuses. The values have the types that the description promises.
    std::optional<Values> call(const char* method, const Values& values) {
        GDBusInterfaceInfo* const interface = bus.description->gobj()->interfaces[0];
        const GDBusMethodInfo* const info = g_dbus_interface_info_lookup_method(interface, method);
        require(info && values.get_type_string() == typeOf(info->in_args));
        try {
            Values answer = bus.members.methods.at(method)(values);
            require(answer.gobj() ? answer.get_type_string() == typeOf(info->out_args)
                                  : !info->out_args || !info->out_args[0]);
            return answer;
        } catch (const Gio::DBus::Error& refusal) {
            require(refusal.code() == Gio::DBus::Error::INVALID_ARGS);
            return std::nullopt;
        }
    }

    static std::string typeOf(GDBusArgInfo** arguments) {
        std::string type = "(";
        for (; arguments && *arguments; ++arguments)
            type += (*arguments)->signature;
        return type + ")";
    }

    Node layout(gint32 parent, gint32 depth, const Names& names) {
        const auto answer =
            call("GetLayout", Tuple<gint32, gint32, Names>::create({parent, depth, names}));
        require(answer.has_value() == isKnown(parent));
        if (!answer)
            return {};
        Glib::Variant<guint32> revision;
        Glib::Variant<Node> node;
        answer->get_child(revision, 0);
        answer->get_child(node, 1);
        seenRevision = revision.get();
        return node.get();
    }

    Host layoutOf() {
        Host whole;
        const Node root = layout(0, -1, {});
        for (const auto& child : std::get<2>(root)) {
            const auto [identifier, properties, below] =
                Glib::VariantBase::cast_dynamic<Glib::Variant<Node>>(child).get();
            require(identifier > 0 && below.empty() && !properties.empty());
            require(whole.entries.emplace(identifier, properties).second);
            whole.order.push_back(identifier);
        }
        whole.revision = seenRevision;
        return whole;
    }

    void remember() {
        for (const gint32 identifier : host.order)
            require(!wereGone.contains(identifier));
        for (const gint32 seen : everSeen)
            if (!host.entries.contains(seen))
                wereGone.insert(seen);
        everSeen.insert(host.order.begin(), host.order.end());
    }

    void heard(const std::string& signal, const Values& values);
    bool isKnown(gint32 identifier) const {
        return identifier == 0 || host.entries.contains(identifier) || !hasStarted();
    }
    bool hasStarted() const { return host.revision != 0; }
    bool canBeClicked(gint32 identifier) const;

    void getLayout(const Numbers& numbers, const Names& names);
    void getGroupProperties(const Numbers& numbers, const Names& names);
    void getProperty(const Numbers& numbers, const Names& names);
    void event(const Numbers& numbers, const Names& names);
    void eventGroup(const Numbers& numbers, const Names& names);
    void aboutToShow(const Numbers& numbers);
    void aboutToShowGroup(const Numbers& numbers);
    void checkUnknown(const Values& answer, int index, const Numbers& asked) const;
    void redrawn();

    std::string letters = "isil";
    fuzz::FakeExport bus;
    std::optional<tray::BusMenu> menu;
    Host host;
    std::uint32_t seenRevision = 0;
    bool mustFetch = false;
    std::set<gint32> everSeen;
    std::set<gint32> wereGone;
    int chosen = 0;
};

void Session::heard(const std::string& signal, const Values& values) {
    if (signal == "LayoutUpdated") {
        require(values.get_type_string() == "(ui)");
        mustFetch = true;
        return;
    }
    require(signal == "ItemsPropertiesUpdated" && values.get_type_string() == "(a(ia{sv})a(ias))");
    Glib::Variant<std::vector<std::tuple<gint32, Properties>>> updated;
    Glib::Variant<std::vector<std::tuple<gint32, Names>>> removed;
    values.get_child(updated, 0);
    values.get_child(removed, 1);
    for (const auto& [identifier, properties] : updated.get())
        for (const auto& [name, value] : properties)
            host.entries.at(identifier)[name] = value;
    for (const auto& [identifier, names] : removed.get())
        for (const Text& name : names)
            require(host.entries.at(identifier).erase(name) == 1);
}

/// After the signals, the host knows what it would be told if it asked for everything.
void Session::redrawn() {
    const std::uint32_t before = host.revision;
    const Host now = layoutOf();
    require(mustFetch == (now.revision > before));
    if (mustFetch)
        host = now;
    mustFetch = false;
    require(areTheSame(host, now) && host.order.size() == menuOf(letters).size());
    remember();
}

bool Session::canBeClicked(gint32 identifier) const {
    const auto entry = host.entries.find(identifier);
    return entry != host.entries.end() && !entry->second.contains("enabled") &&
           !entry->second.contains("type");
}

bool areAskedFor(const Properties& properties, const std::vector<Text>& names) {
    return std::all_of(properties.begin(), properties.end(), [&names](const auto& property) {
        return names.empty() ||
               std::find(names.begin(), names.end(), property.first) != names.end();
    });
}

void Session::getLayout(const Numbers& numbers, const Names& names) {
    const auto [identifier, properties, children] = layout(numbers[0], numbers[1], names);
    require(!isKnown(numbers[0]) || (identifier == numbers[0] && areAskedFor(properties, names)));
    const bool hasChildren = numbers[0] == 0 && numbers[1] != 0;
    require(children.size() == (hasChildren ? host.order.size() : 0));
    for (const auto& child : children)
        require(areAskedFor(
            std::get<1>(Glib::VariantBase::cast_dynamic<Glib::Variant<Node>>(child).get()), names));
}

void Session::getGroupProperties(const Numbers& numbers, const Names& names) {
    using Group = std::vector<std::tuple<gint32, Properties>>;
    const auto answer = call("GetGroupProperties", Tuple<Numbers, Names>::create({numbers, names}));
    require(answer.has_value());
    Glib::Variant<Group> group;
    answer->get_child(group, 0);
    std::set<gint32> told;
    for (const auto& [identifier, properties] : group.get()) {
        require(told.insert(identifier).second && isKnown(identifier));
        require(numbers.empty() || std::ranges::find(numbers, identifier) != numbers.end());
        require(areAskedFor(properties, names));
    }
    for (const gint32 number : numbers)
        require(told.contains(number) == isKnown(number));
}

void Session::getProperty(const Numbers& numbers, const Names& names) {
    const auto answer = call("GetProperty", Tuple<gint32, Text>::create({numbers[0], names[0]}));
    require(!answer || isKnown(numbers[0]));
    const auto entry = host.entries.find(numbers[0]);
    if (entry == host.entries.end())
        return;
    const auto property = entry->second.find(names[0]);
    Glib::Variant<Glib::VariantBase> value;
    if (answer)
        answer->get_child(value, 0);
    require(property == entry->second.end() || (answer && value.get().equal(property->second)));
}

void Session::event(const Numbers& numbers, const Names& names) {
    const int before = chosen;
    const auto answer = call("Event", Tuple<gint32, Text, Glib::VariantBase, guint32>::create(
                                          {numbers[0], names[0], Glib::Variant<gint32>::create(0),
                                           static_cast<guint32>(numbers[1])}));
    require(answer.has_value() == isKnown(numbers[0]));
    require(chosen - before == (names[0] == "clicked" && canBeClicked(numbers[0]) ? 1 : 0));
}

void Session::checkUnknown(const Values& answer, int index, const Numbers& asked) const {
    Glib::Variant<Numbers> unknown;
    answer.get_child(unknown, static_cast<gsize>(index));
    Numbers expected;
    std::ranges::copy_if(asked, std::back_inserter(expected),
                         [this](gint32 number) { return !isKnown(number); });
    require(unknown.get() == expected);
}

void Session::eventGroup(const Numbers& numbers, const Names& names) {
    using Event = std::tuple<gint32, Text, Glib::VariantBase, guint32>;
    const int before = chosen;
    std::vector<Event> events;
    int clicks = 0;
    for (const gint32 number : numbers) {
        const Text& name = names[events.size() % names.size()];
        events.emplace_back(number, name, Glib::Variant<Text>::create(name), 0);
        clicks += name == "clicked" && canBeClicked(number) ? 1 : 0;
    }
    const auto answer = call("EventGroup", Tuple<std::vector<Event>>::create({events}));
    if (answer)
        checkUnknown(*answer, 0, numbers);
    else
        require(std::ranges::none_of(numbers, [this](gint32 number) { return isKnown(number); }));
    require(chosen - before == clicks);
}

void Session::aboutToShow(const Numbers& numbers) {
    const auto before = host;
    const bool isRefused = !isKnown(numbers[0]);
    const auto answer = call("AboutToShow", Tuple<gint32>::create({numbers[0]}));
    require(answer.has_value() != isRefused);
    if (isRefused)
        return;
    Glib::Variant<bool> hasChanged;
    answer->get_child(hasChanged, 0);
    redrawn();
    require(hasChanged.get() == !areTheSame(before, host));
}

void Session::aboutToShowGroup(const Numbers& numbers) {
    const auto answer = call("AboutToShowGroup", Tuple<Numbers>::create({numbers}));
    if (!answer)
        return require(
            std::ranges::none_of(numbers, [this](gint32 number) { return isKnown(number); }));
    // What is unknown was decided before the menu was drawn again.
    checkUnknown(*answer, 1, numbers);
    redrawn();
}

void Session::perform(std::string_view line) {
    Numbers numbers;
    Names names;
    const char letter = line.empty() ? ' ' : line.front();
    fuzz::FuzzInput words(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
    words.takeByte();
    for (int count = 0; count < 8 && !words.isEmpty(); ++count) {
        const std::string_view word = words.takeUntil(' ');
        gint32 number = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (!word.empty() && error == std::errc() && end == word.data() + word.size())
            numbers.push_back(number);
        else if (!word.empty())
            names.emplace_back(Text(std::string(word)).make_valid());
    }
    const Numbers asked = numbers;
    const Names named = names;
    numbers.resize(2);
    names.resize(std::max<std::size_t>(names.size(), 1));
    switch (letter) {
    case 'M':
        letters = line.substr(1, 5);
        menu->redraw();
        return redrawn();
    case 'S': // is drawn only when a host is about to show it
        letters = line.substr(1, 5);
        return;
    case 'L':
        return getLayout(numbers, named);
    case 'G':
        return getGroupProperties(asked, named);
    case 'P':
        return getProperty(numbers, names);
    case 'E':
        return event(numbers, names);
    case 'F':
        return eventGroup(asked, names);
    case 'A':
        return aboutToShow(numbers);
    case 'B':
        return aboutToShowGroup(asked);
    default:
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::failOnComplaints();
    static const bool isReady = [] {
        Gio::init();
        return true;
    }();
    require(isReady);
    fuzz::FuzzInput input(data, size);
    Session session;
    for (int count = 0; count < 4 && !input.isEmpty(); ++count)
        session.perform(input.takeLine());
    return 0;
}
