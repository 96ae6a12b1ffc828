#pragma once

#include "linux/window/HostedWidget.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::window {

class PageControls;

/// A hosted widget that shows pages of the service, and at times of others, who sign its users in.
/// Main thread only.
class HostedPage : public HostedWidget {
public:
    /// The host of the shown page if it is not the service's, spelled as in requests, with the port
    /// if that is unusual. Empty for a page without a host.
    virtual std::optional<std::string> foreignHost() const = 0;
    /// Loads the service's first page in place of the shown one.
    virtual void returnToService() = 0;
    /// Opens the shown page in the browser; here it stays.
    virtual void openInBrowser() = 0;
    /// False once the page has not answered for some seconds, until it does. It is asked when the
    /// user does something in it.
    virtual bool answers() const = 0;
    /// Loads the shown page again, also one that does not answer. What was typed in it is lost.
    virtual void reload() = 0;
    /// What else is to be shown of the page, and done with it.
    virtual PageControls& controls() = 0;
    virtual const PageControls& controls() const = 0;
    /// Called after any of the answers above has changed. Held weakly; replaces the former.
    virtual void setPageObserver(std::weak_ptr<const std::function<void()>> observer) = 0;
};

} // namespace kelo::window
