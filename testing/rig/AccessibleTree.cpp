#include "testing/rig/AccessibleTree.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace kelo::rig {

namespace {

constexpr int deepest = 40;
constexpr std::chrono::milliseconds twoFrames{40};

/// Since GTK 4.14 a window leads to its page, whose process may not answer. Pages are looked into
/// by themselves.
bool leadsIntoPage(const Accessible& object, const Accessible& child) {
    return !object.address().inPage && child.address().busName != object.address().busName;
}

/// Calls visit for every object below, the parents first, until it answers false.
bool walk(const Accessible& object, int depth,
          const std::function<bool(const Accessible&, int)>& visit) {
    if (!visit(object, depth))
        return false;
    if (depth == deepest)
        return true;
    for (const auto& child : object.children()) {
        if (!leadsIntoPage(object, child) && !walk(child, depth + 1, visit))
            return false;
    }
    return true;
}

bool isNamed(const std::string& name, const Wanted& wanted) {
    return name == wanted.name || (wanted.nameMayGoOn && name.starts_with(wanted.name + " "));
}

bool matches(const Accessible& object, const Wanted& wanted) {
    // The role is asked first: it is the cheaper answer, and most objects fail it.
    return std::ranges::find(wanted.roles, object.role()) != wanted.roles.end() &&
           isNamed(object.name(), wanted) && object.isShown();
}

// The toolkit has private widgets inside its own that it names so. They are nothing to be used.
bool isPartOfTheToolkit(const std::string& name) {
    constexpr std::array parts{"GtkBuiltinIcon",    "GtkPopoverContent", "GtkRange",
                               "GtkScrollbar",      "GtkStackPage",      "GtkGizmo",
                               "GtkScrolledWindow", "GtkViewport"};
    return std::ranges::find(parts, name) != parts.end();
}

bool isNameOfAClass(const std::string& name) {
    if (isPartOfTheToolkit(name))
        return false;
    for (const std::string_view prefix : {"gtkmm__", "Gtk", "Kelo", "WebKit"})
        if (name.starts_with(prefix) && name.size() > prefix.size() &&
            (prefix == "gtkmm__" || std::isupper(static_cast<unsigned char>(name[prefix.size()]))))
            return true;
    return false;
}

bool isControl(const Accessible& object) {
    constexpr std::array roles{
        Role::checkBox, Role::checkMenuItem, Role::listItem,     Role::menu,
        Role::menuBar,  Role::menuItem,      Role::passwordText, Role::progressBar,
        Role::button,   Role::radioButton,   Role::entry,        Role::levelBar,
        Role::alert,    Role::dialog,        Role::window,       Role::statusBar};
    return std::ranges::find(roles, object.role()) != roles.end();
}

} // namespace

std::string Wanted::description() const {
    return (place == Place::page ? "\"" + name + "\" in the page" : "\"" + name + "\" in a window");
}

Wanted button(std::string name) {
    return {Place::windows, {Role::button}, std::move(name)};
}

Wanted label(std::string name) {
    return {Place::windows, {Role::label}, std::move(name)};
}

Wanted alert(std::string name) {
    return {Place::windows, {Role::alert}, std::move(name)};
}

Wanted choice(std::string name) {
    return {Place::windows, {Role::radioButton, Role::checkBox}, std::move(name)};
}

Wanted menu(std::string name) {
    return {Place::windows, {Role::menu, Role::menuItem}, std::move(name)};
}

Wanted menuItem(std::string name) {
    return {Place::windows, {Role::menuItem}, std::move(name)};
}

Wanted pageButton(std::string name) {
    return {Place::page, {Role::button}, std::move(name)};
}

Wanted pageField(std::string name) {
    return {Place::page, {Role::entry, Role::text, Role::passwordText}, std::move(name), true};
}

Wanted pageHeading(std::string name) {
    return {Place::page, {Role::heading}, std::move(name)};
}

Wanted pageLink(std::string name) {
    return {Place::page, {Role::link}, std::move(name)};
}

Wanted pageMeter(std::string name) {
    return {Place::page, {Role::levelBar}, std::move(name)};
}

AccessibleTree::AccessibleTree(const AccessibilityBus& bus) : bus(bus) {}

std::vector<Accessible> AccessibleTree::roots(Place place) const {
    std::vector<Accessible> result;
    for (auto& address : place == Place::windows ? bus.applications() : bus.pages())
        result.emplace_back(bus, std::move(address));
    return result;
}

std::vector<Accessible> AccessibleTree::findAll(const Wanted& wanted) const {
    std::vector<Accessible> found;
    for (const auto& root : roots(wanted.place)) {
        walk(root, 0, [&](const Accessible& object, int) {
            if (matches(object, wanted))
                found.push_back(object);
            return true;
        });
    }
    return found;
}

std::optional<Accessible> AccessibleTree::find(const Wanted& wanted) const {
    std::optional<Accessible> found;
    for (const auto& root : roots(wanted.place)) {
        const bool searchOn = walk(root, 0, [&](const Accessible& object, int) {
            if (matches(object, wanted))
                found = object;
            return !found;
        });
        if (!searchOn)
            break;
    }
    return found;
}

Accessible AccessibleTree::await(const Wanted& wanted) const {
    std::optional<Accessible> found;
    awaitThat("there is " + wanted.description(), [&] {
        found = find(wanted);
        return found.has_value();
    });
    return *found;
}

void AccessibleTree::awaitGone(const Wanted& wanted) const {
    awaitThat("there is no " + wanted.description() + " any more",
              [&] { return !find(wanted).has_value(); });
}

void AccessibleTree::callOffIfHopeless(const std::string& what) const {
    if (isHopeless && isHopeless())
        throw CalledOff("Called off the wait until " + what + ".");
}

void AccessibleTree::awaitThat(const std::string& what,
                               const std::function<bool()>& condition) const {
    const auto look = [&] {
        callOffIfHopeless(what);
        return condition();
    };
    if (!bus.await(look, deadline))
        throw std::runtime_error("Waited in vain until " + what + ". What there is:\n" + picture());
}

Area AccessibleTree::awaitRest(const std::string& what,
                               const std::function<std::optional<Area>()>& look) const {
    using Clock = std::chrono::steady_clock;
    std::optional<Area> last;
    auto lastLook = Clock::time_point::min();
    const auto rests = [&] {
        callOffIfHopeless(what);
        if (last && Clock::now() - lastLook < twoFrames)
            return false;
        const std::optional<Area> place = look();
        const bool same = place && place == last;
        last = place;
        lastLook = Clock::now();
        return same;
    };
    if (!bus.await(rests, deadline, twoFrames))
        throw std::runtime_error("Waited in vain until " + what + ". What there is:\n" + picture());
    return *last;
}

bool AccessibleTree::pageSays(const std::string& text) const {
    bool found = false;
    for (const auto& root : roots(Place::page)) {
        walk(root, 0, [&](const Accessible& object, int) {
            found = found || object.text().find(text) != std::string::npos;
            return !found;
        });
    }
    return found;
}

std::optional<Accessible> AccessibleTree::findFocused(Role role) const {
    std::optional<Accessible> found;
    for (const auto& root : roots(Place::windows)) {
        walk(root, 0, [&](const Accessible& object, int) {
            if (object.role() == role && object.isFocused())
                found = object;
            return true;
        });
    }
    return found;
}

std::vector<std::string> AccessibleTree::badlyNamed() const {
    std::vector<std::string> found;
    for (const auto& root : roots(Place::windows)) {
        walk(root, 0, [&](const Accessible& object, int) {
            const std::string name = object.name();
            if (object.isShown() && (isNameOfAClass(name) || (name.empty() && isControl(object))))
                found.push_back("role " + std::to_string(static_cast<unsigned>(object.role())) +
                                " \"" + name + "\"");
            return true;
        });
    }
    return found;
}

std::optional<Accessible> AccessibleTree::mainWindow() const {
    std::optional<Accessible> largest;
    int largestArea = 0;
    for (const auto& root : roots(Place::windows)) {
        for (const auto& window : root.children()) {
            const Extents extents = window.extents();
            if (extents.width * extents.height > largestArea) {
                largestArea = extents.width * extents.height;
                largest = window;
            }
        }
    }
    return largest;
}

std::string AccessibleTree::picture() const {
    std::ostringstream text;
    for (const Place place : {Place::windows, Place::page}) {
        for (const auto& root : roots(place)) {
            text << (place == Place::page ? "page" : "program") << ' ' << root.address().busName
                 << '\n';
            walk(root, 1, [&](const Accessible& object, int depth) {
                const Extents area = object.extents();
                text << std::string(static_cast<std::size_t>(depth) * 2, ' ') << "role "
                     << static_cast<unsigned>(object.role()) << " \"" << object.name() << "\" "
                     << area.width << 'x' << area.height << '+' << area.x << '+' << area.y
                     << (object.isShown() ? "" : " (not shown)")
                     << (object.isSensitive() ? "" : " (insensitive)")
                     << (object.isFocused() ? " (has the keyboard)" : "");
                if (const std::string said = object.text(); !said.empty() && said != object.name())
                    text << " says \"" << said << '"';
                text << '\n';
                return true;
            });
        }
    }
    return text.str();
}

} // namespace kelo::rig
