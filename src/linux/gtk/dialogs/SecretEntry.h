#pragma once

#include "base/SecretText.h"

#include <gtkmm/box.h>

#include <string>

namespace kelo::gtk {

/// An entry for one line of text that may be a secret. Only take() returns the text, and no copy of
/// it remains in the entry. Enter presses the default button of the window.
class SecretEntry final : public Gtk::Box {
public:
    enum class Display { masked, visible };

    explicit SecretEntry(Display display);
    ~SecretEntry() override;

    void setPlaceholder(const std::string& text);
    void setName(const std::string& name); ///< for assistive technology
    void focus();
    bool isEmpty() const;
    /// Returns the text and clears the entry.
    SecretText take();

private:
    GtkEditable* text() const;

    Display display;
    Gtk::Widget* line;
};

} // namespace kelo::gtk
