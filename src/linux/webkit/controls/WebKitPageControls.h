#pragma once

#include "linux/gobject/SignalHandler.h"
#include "linux/window/PageControls.h"

#include <webkit/webkit.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::webkit {

/// PageControls of a web view, which must outlive this.
class WebKitPageControls final : public window::PageControls {
public:
    explicit WebKitPageControls(WebKitWebView* view);
    WebKitPageControls(const WebKitPageControls&) = delete;
    WebKitPageControls& operator=(const WebKitPageControls&) = delete;

    std::string title() const override;
    std::optional<double> loadProgress() const override;
    void setLoadObserver(std::weak_ptr<const std::function<void()>> observer) override;
    bool canGoBack() const override;
    bool canGoForward() const override;
    void goBack() override;
    void goForward() override;
    void setHistoryObserver(std::weak_ptr<const std::function<void()>> observer) override;
    void reloadFromServer() override;
    void print(GtkWindow* parent) override;
    double zoom() const override;
    void setZoom(double factor) override;
    void find(const std::string& text) override;
    void findNext() override;
    void findPrevious() override;
    void endFind() override;
    void
    setFindObserver(std::weak_ptr<const std::function<void(unsigned places)>> observer) override;

    /// The page stays, and what was to be loaded in its place is not. The engine goes on to say
    /// that it loads.
    void loadGivenUp();

private:
    void tellLoadObserver() const;
    void found(unsigned places) const;

    WebKitWebView* view;
    WebKitFindController* finder; ///< the view's
    bool isFinding = false;
    bool isLoadGivenUp = false;
    std::weak_ptr<const std::function<void()>> loadObserver;
    std::weak_ptr<const std::function<void()>> historyObserver;
    std::weak_ptr<const std::function<void(unsigned places)>> findObserver;
    std::vector<gobject::SignalConnection> connections;
};

} // namespace kelo::webkit
