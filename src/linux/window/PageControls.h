#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelo::window {

/// What every browser shows of a page and lets its users do with it. Main thread only.
class PageControls {
public:
    virtual ~PageControls() = default;

    /// What the page calls itself; empty before it does.
    virtual std::string title() const = 0;
    /// How much of the page has arrived, from 0 to 1; nothing while none is on its way.
    virtual std::optional<double> loadProgress() const = 0;
    /// Called after either may have changed. Held weakly; replaces the former.
    virtual void setLoadObserver(std::weak_ptr<const std::function<void()>> observer) = 0;

    virtual bool canGoBack() const = 0;
    virtual bool canGoForward() const = 0;
    virtual void goBack() = 0;
    virtual void goForward() = 0;
    /// Called after canGoBack() or canGoForward() may have changed. Held weakly; replaces the
    /// former.
    virtual void setHistoryObserver(std::weak_ptr<const std::function<void()>> observer) = 0;

    /// Loads the page again and takes none of its parts from the cache.
    virtual void reloadFromServer() = 0;
    /// Opens the print dialog above the window, and returns when the user has closed it.
    virtual void print(GtkWindow* parent) = 0;

    /// How large the page is drawn; 1 is its usual size.
    virtual double zoom() const = 0;
    virtual void setZoom(double factor) = 0;

    /// Marks the text wherever it is in the page, whatever the case of its letters, and scrolls to
    /// the first place after the last one found. An empty text ends the search.
    virtual void find(const std::string& text) = 0;
    /// Scrolls to the next or the former place, and from the last to the first.
    virtual void findNext() = 0;
    virtual void findPrevious() = 0;
    /// Takes the marks away. The place that was scrolled to stays selected.
    virtual void endFind() = 0;
    /// Called with the number of places after each of the finds above. Held weakly; replaces the
    /// former.
    virtual void
    setFindObserver(std::weak_ptr<const std::function<void(unsigned places)>> observer) = 0;
};

} // namespace kelo::window
