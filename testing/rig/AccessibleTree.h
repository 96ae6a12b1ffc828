#pragma once

#include "testing/rig/Accessible.h"
#include "testing/rig/Screen.h"

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kelo::rig {

/// Where to look: the programs' own windows, or the web pages they show.
enum class Place { windows, page };

/// What to look for: one of the roles, and exactly this name.
struct Wanted {
    Place place = Place::windows;
    std::vector<Role> roles;
    std::string name;
    /// Also accept a name that continues after a blank: a web engine appends a field's text to its
    /// label.
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
Wanted pageLink(std::string name);
Wanted pageMeter(std::string name);

/// The deadline of every step. It is long, because it passes only if something is broken.
inline constexpr std::chrono::seconds deadline{30};

/// Thrown by a wait that has been called off.
class CalledOff : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Everything that the accessibility bus shows, searched by role and name.
class AccessibleTree {
public:
    explicit AccessibleTree(const AccessibilityBus& bus);

    /// Every wait throws CalledOff as soon as this holds: what it waits for will not come any more.
    /// An empty function takes that back.
    void callOffWaitsWhen(std::function<bool()> hopeless) { isHopeless = std::move(hopeless); }

    /// The first match that is shown, in tree order.
    std::optional<Accessible> find(const Wanted& wanted) const;
    /// Waits until a match is shown. At the deadline, throws std::runtime_error with the whole
    /// tree.
    Accessible await(const Wanted& wanted) const;
    /// Waits until no match is shown.
    void awaitGone(const Wanted& wanted) const;
    /// Waits for any condition; `what` completes the sentence "Waited in vain until …".
    void awaitThat(const std::string& what, const std::function<bool()>& condition) const;
    /// Waits until two looks in a row, with at least two frames of the screen between them, find
    /// the same place, and gives it. A page that is still loading, or a window that the manager has
    /// not placed yet, shows an object where it will not stay. `look` answers nothing as long as
    /// there is no place.
    Area awaitRest(const std::string& what, const std::function<std::optional<Area>()>& look) const;

    /// All matches that are shown, in tree order.
    std::vector<Accessible> findAll(const Wanted& wanted) const;

    /// Whether the text of any object of a page contains this text.
    bool pageSays(const std::string& text) const;

    /// The object with the keyboard focus, if it is in a native window and has this role.
    std::optional<Accessible> findFocused(Role role) const;
    /// What is shown in the windows and cannot be announced: controls without a name of their own,
    /// and all that is named after a class of the program.
    std::vector<std::string> badlyNamed() const;
    /// The largest window of all programs, which is the one with the page.
    std::optional<Accessible> mainWindow() const;

    /// The trees as text, one object a line.
    std::string picture() const;

private:
    std::vector<Accessible> roots(Place place) const;
    void callOffIfHopeless(const std::string& what) const;

    const AccessibilityBus& bus;
    std::function<bool()> isHopeless;
};

} // namespace kelo::rig
