#pragma once

#include "linux/notification/ClickTokens.h"

#include <gtkmm/application.h>

#include <optional>
#include <string>

namespace kelo::gtk {

/// The toolkit's application, which also takes the activation tokens that come from outside, and
/// keeps each for the next window that is presented. Notification servers send them with clicks;
/// desktops and portals with what they ask for after a click; a second process with what its
/// command line asks for. Main thread only.
class TokenApplication final : public Gtk::Application {
public:
    static Glib::RefPtr<TokenApplication> create(const std::string& identifier);

protected:
    void on_startup() override;
    void on_shutdown() override;
    void before_emit_vfunc(const Glib::VariantBase& platformData) override;

private:
    explicit TokenApplication(const std::string& identifier);

    std::optional<notification::ClickTokens> clickTokens; ///< while it runs
};

} // namespace kelo::gtk
