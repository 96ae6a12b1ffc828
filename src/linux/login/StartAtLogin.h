#pragma once

#include "base/ObservableObject.h"

#include <memory>
#include <string>

namespace kelo::login {

/// Whether the program starts when its user logs in, without a window. The desktop's portal for
/// background programs is asked, where it runs and answers, because it asks the user in its own
/// way. Elsewhere, and as the memory of what was chosen, there is an entry in the folder from which
/// desktops start programs. Main thread only.
class StartAtLogin : public ObservableObject {
public:
    struct Settings {
        std::string bus;     ///< address of the session bus; may be empty
        std::string entry;   ///< path of the desktop entry
        std::string program; ///< path of the program

        static Settings standard();
    };

    explicit StartAtLogin(Settings settings);
    ~StartAtLogin() override;

    bool isOn() const { return on.get(); }
    /// Turning it off takes effect at once, turning it on when the portal has answered.
    void setOn(bool wanted);

private:
    class Portal;

    void settle(bool wanted);
    void writeEntry() const;

    const Settings settings;
    Published<bool> on;
    std::unique_ptr<Portal> portal; ///< while it is asked
};

/// A text of one line as a desktop entry holds it.
std::string entryText(const std::string& text);

/// A word as the line "Exec" of a desktop entry holds it.
std::string execWord(const std::string& word);

} // namespace kelo::login
