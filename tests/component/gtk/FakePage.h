#pragma once

#include "fakes/FakeWebView.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <gtkmm/drawingarea.h>

#include <string>
#include <vector>

namespace kelo::tests {

/// Records what the user does with the page.
class FakePageControls final : public window::PageControls {
public:
    std::string title() const override { return pageTitle; }
    std::optional<double> loadProgress() const override { return progress; }
    void setLoadObserver(std::weak_ptr<const std::function<void()>> observer) override {
        loadObserver = std::move(observer);
    }
    bool canGoBack() const override { return isAfterAnother; }
    bool canGoForward() const override { return isBeforeAnother; }
    void goBack() override { done.emplace_back("back"); }
    void goForward() override { done.emplace_back("forward"); }
    void setHistoryObserver(std::weak_ptr<const std::function<void()>> observer) override {
        historyObserver = std::move(observer);
    }
    void reloadFromServer() override { done.emplace_back("reload from server"); }
    void print(GtkWindow*) override { done.emplace_back("print"); }
    double zoom() const override { return factor; }
    void setZoom(double newFactor) override { factor = newFactor; }
    void find(const std::string& text) override {
        done.push_back("find " + text);
        if (const auto told = findObserver.lock())
            (*told)(text.empty() ? 0 : places);
    }
    void findNext() override { done.emplace_back("next"); }
    void findPrevious() override { done.emplace_back("previous"); }
    void endFind() override { done.emplace_back("end"); }
    void
    setFindObserver(std::weak_ptr<const std::function<void(unsigned places)>> observer) override {
        findObserver = std::move(observer);
    }
    void setHistory(bool before, bool after) {
        isAfterAnother = before;
        isBeforeAnother = after;
        if (const auto told = historyObserver.lock())
            (*told)();
    }

    void setTitle(const std::string& title) {
        pageTitle = title;
        tellLoadObserver();
    }
    void setLoadProgress(std::optional<double> arrived) {
        progress = arrived;
        tellLoadObserver();
    }

    std::vector<std::string> done;
    double factor = 1;
    unsigned places = 3; ///< where each text is found

private:
    void tellLoadObserver() const {
        if (const auto told = loadObserver.lock())
            (*told)();
    }

    std::string pageTitle;
    std::optional<double> progress;
    std::weak_ptr<const std::function<void()>> loadObserver;
    bool isAfterAnother = false;
    bool isBeforeAnother = false;
    std::weak_ptr<const std::function<void()>> historyObserver;
    std::weak_ptr<const std::function<void(unsigned places)>> findObserver;
};

/// A page of one color that takes the keyboard focus and counts its clicks. It is the service's
/// unless the test gives it another host, and hangs on command.
class FakePage final : public fakes::FakeWebView, public window::HostedPage {
public:
    FakePage();

    GtkWidget* widget() override { return GTK_WIDGET(area.gobj()); }

    std::optional<std::string> foreignHost() const override { return host; }
    void returnToService() override {
        ++returns;
        setForeignHost(std::nullopt);
    }
    void openInBrowser() override { ++openings; }
    window::PageControls& controls() override { return pageControls; }
    const window::PageControls& controls() const override { return pageControls; }
    void setPageObserver(std::weak_ptr<const std::function<void()>> observer) override {
        pageObserver = std::move(observer);
    }
    bool answers() const override { return !hangs; }
    void reload() override {
        ++reloads;
        setHangs(false);
    }
    void setHangs(bool nowHangs);
    void setForeignHost(std::optional<std::string> newHost);

    Gtk::DrawingArea area;
    int clicks = 0;
    int returns = 0;  ///< to the service
    int openings = 0; ///< in the browser
    int reloads = 0;
    FakePageControls pageControls;

private:
    bool hangs = false;
    std::optional<std::string> host;
    std::weak_ptr<const std::function<void()>> pageObserver;
};

} // namespace kelo::tests
