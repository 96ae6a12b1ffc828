#pragma once

#include "base/SecretText.h"

#include <gtkmm/box.h>

#include <string>

namespace kelo::gtk {

/// One line of text that may be a secret. What was typed leaves only through take(), and no copy of
/// it stays behind. Enter presses the default button of the window.
class SecretEntry final : public Gtk::Box {
public:
    enum class Display { masked, visible };

    explicit SecretEntry(Display display);
    ~SecretEntry() override;

    void setPlaceholder(const std::string& text);
    void setName(const std::string& name); ///< for assistive technology
    void focus();
    /// What stands in the line; empties it.
    SecretText take();

private:
    Display display;
    Gtk::Widget* line;
};

} // namespace kelo::gtk
