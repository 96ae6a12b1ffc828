#include "linux/gtk/main/PageBars.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/window/HostedPage.h"
#include "linux/window/PageControls.h"

#include <algorithm>

namespace kelo::gtk {

namespace {

/// A load that takes no longer shows no bar.
constexpr std::chrono::milliseconds quickLoad{300};

/// Returns the bar's height, 0 if it is hidden.
int allocateBar(Gtk::Widget& bar, int top, int width) {
    if (!bar.get_visible())
        return 0;
    int minimum = 0;
    int natural = 0;
    int unused = 0;
    bar.measure(Gtk::Orientation::HORIZONTAL, -1, minimum, natural, unused, unused);
    const int barWidth = std::max(minimum, width);
    bar.measure(Gtk::Orientation::VERTICAL, barWidth, minimum, natural, unused, unused);
    bar.size_allocate({0, top, barWidth, natural}, -1);
    return natural;
}

} // namespace

PageBars::PageBars(Gtk::Widget& parent) {
    foreignBar.addButton(translated("Back to Kelo"), [this] {
        if (page)
            page->returnToService();
    });
    foreignBar.addButton(translated("Open in Browser"), [this] {
        if (page)
            page->openInBrowser();
    });
    foreignBar.set_parent(parent);
    hangBar.setSentence(translated("This page does not answer."));
    hangBar.addButton(translated("Wait"), [this] {
        userWaits = true;
        draw();
    });
    hangBar.addButton(translated("Reload"), [this] {
        if (page)
            page->reload();
    });
    hangBar.set_parent(parent);
    loadBar.add_css_class("osd");
    loadBar.add_css_class("kelo-loading");
    loadBar.set_can_target(false);
    loadBar.set_visible(false);
    setAccessibleName(loadBar, translated("Loading"));
    loadBar.set_parent(parent);
}

PageBars::~PageBars() {
    setPage(nullptr);
    loadBar.unparent();
    hangBar.unparent();
    foreignBar.unparent();
}

void PageBars::setPage(window::HostedPage* newPage) {
    page = newPage;
    input.reset();
    // The engine reports only once that a page does not answer.
    if (page)
        input.emplace(page->widget(), [this] {
            userWaits = false;
            draw();
        });
    draw();
    drawLoad();
}

void PageBars::draw() {
    const auto host = page ? page->foreignHost() : std::nullopt;
    if (host)
        nameHost(*host);
    show(foreignBar, host.has_value());
    namedHost = host;
    const bool hangs = page && !page->answers();
    if (!hangs)
        userWaits = false;
    show(hangBar, hangs && !userWaits);
}

void PageBars::nameHost(const std::string& host) {
    // Translators: the name of a host follows, or "another site".
    const std::string beginning = translated("This page is from");
    const std::string name = host.empty() ? translated("another site") : host;
    foreignBar.setSentence(beginning, name);
    if (namedHost != host)
        announceNews(foreignBar, beginning + " " + name);
}

// The style could wait as well, but would have the window drawn 60 times a second meanwhile.
void PageBars::drawLoad() {
    const auto progress = page ? page->controls().loadProgress() : std::nullopt;
    if (!progress) {
        loadBarAppears.cancel();
        loadBar.set_visible(false);
        return;
    }
    loadBar.set_fraction(*progress);
    if (!loadBar.get_visible() && !loadBarAppears.isWaiting())
        loadBarAppears.after(quickLoad, [this] { loadBar.set_visible(true); });
}

// A bar that goes leaves the keyboard to the page.
void PageBars::show(NoticeBar& bar, bool isShown) {
    const bool hadFocus = bar.holdsFocus();
    bar.set_visible(isShown);
    if (hadFocus && !isShown)
        focusPage();
}

void PageBars::focusPage() {
    if (page)
        gtk_widget_grab_focus(page->widget());
}

bool PageBars::switchFocus() {
    NoticeBar& bar = hangBar.get_visible() ? hangBar : foreignBar;
    if (!bar.get_visible())
        return false;
    if (bar.holdsFocus())
        focusPage();
    else
        bar.takeFocus();
    return true;
}

// A page that does not answer could not lay itself out anew. So it stays where it is, and the bar
// covers its upper edge.
int PageBars::allocate(int width) {
    const int top = allocateBar(foreignBar, 0, width);
    allocateBar(hangBar, top, width);
    allocateBar(loadBar, top, width);
    return top;
}

} // namespace kelo::gtk
