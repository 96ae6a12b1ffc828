#pragma once

#include "testing/rig/Accessible.h"
#include "testing/rig/Screen.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelo::rig {

/// Where to look: the programs' own windows, or the web pages they show.
enum class Place { windows, page };

/// What to look for: one of the roles, and exactly this name.
struct Wanted {
    Place place = Place::windows;
    std::vector<Role> roles;
    std::string name;
    /// The name may go on after a blank: a web engine appends what stands in a field to its label.
    bool nameMayGoOn = false;

    std::string description() const;
};

Wanted button(std::string name);
Wanted label(std::string name);
Wanted alert(std::string name);
Wanted choice(std::string name);
Wanted menu(std::string name);
Wanted menuItem(std::string name);
Wanted pageButton(std::string name);
Wanted pageField(std::string name);
Wanted pageHeading(std::string name);
Wanted pageMeter(std::string name);

/// Every step has this one deadline. It is long because it only ever passes when something is
/// broken; nothing waits longer than the thing it waits for.
inline constexpr std::chrono::seconds deadline{30};

/// Everything that the accessibility bus shows, searched by role and name.
class AccessibleTree {
public:
    explicit AccessibleTree(const AccessibilityBus& bus);

    /// The first one that is shown, in the order of the tree.
    std::optional<Accessible> find(const Wanted& wanted) const;
    /// Waits until it is shown. Throws std::runtime_error with a picture of the tree otherwise.
    Accessible await(const Wanted& wanted) const;
    /// Waits until nothing like it is shown.
    void awaitGone(const Wanted& wanted) const;
    /// Waits for anything else; `what` completes the sentence "Waited in vain until …".
    void awaitThat(const std::string& what, const std::function<bool()>& condition) const;
    /// Waits until two looks in a row, with at least two frames of the screen between them, find
    /// the same place, and gives it. A page that is still loading, or a window that the manager has
    /// not placed yet, shows an object where it will not stay. `look` answers nothing as long as
    /// there is no place.
    Area awaitRest(const std::string& what, const std::function<std::optional<Area>()>& look) const;

    /// All shown ones, in the order of the tree.
    std::vector<Accessible> findAll(const Wanted& wanted) const;

    /// Whether some object of a page has the text in what it says.
    bool pageSays(const std::string& text) const;

    /// The object of a window that has the keyboard, if it has the role.
    std::optional<Accessible> findFocused(Role role) const;
    /// The largest window of any program: the one with the page.
    std::optional<Accessible> mainWindow() const;

    /// The trees as text, one object a line.
    std::string picture() const;

private:
    std::vector<Accessible> roots(Place place) const;

    const AccessibilityBus& bus;
};

} // namespace kelo::rig
