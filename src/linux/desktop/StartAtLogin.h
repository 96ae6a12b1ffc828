#pragma once

#include "base/ObservableObject.h"
#include "linux/bus/Calls.h"
#include "linux/bus/Connection.h"
#include "linux/bus/Signal.h"
#include "linux/gtk/application/ProgramMenu.h"

#include <memory>
#include <optional>
#include <string>

namespace kelo::desktop {

/// Whether the program starts when its user logs in, without a window. The desktop's portal for
/// background programs is asked, where it runs and answers, because it asks the user in its own
/// way. Elsewhere, and as the memory of what was chosen, there is an entry in the folder from which
/// desktops start programs. Main thread only.
class StartAtLogin : public ObservableObject, public std::enable_shared_from_this<StartAtLogin> {
public:
    struct Settings {
        std::string bus;     ///< address of the session bus; may be empty
        std::string entry;   ///< path of the desktop entry
        std::string program; ///< path of the program

        static Settings standard();
    };

    explicit StartAtLogin(Settings settings);

    bool isOn() const { return on.get(); }
    /// Turning it off takes effect at once, turning it on when the portal has answered.
    void setOn(bool wanted);

    /// This, for the program's menu.
    static gtk::LoginStart menuItem(const std::shared_ptr<StartAtLogin>& start);

private:
    void askPortal(const bus::Connection& connection, bool wanted);
    void portalResponded(bool wanted, GVariant* values);
    void settle(bool wanted);
    void writeEntry() const;

    const Settings settings;
    Published<bool> on;
    std::shared_ptr<bus::SharedConnection> connection;
    bus::Calls calls;
    std::optional<bus::Signal> response;
    std::string request; ///< path of the portal's object that is waited for
};

/// A word as the line "Exec" of a desktop entry holds it.
std::string execWord(const std::string& word);

} // namespace kelo::desktop
