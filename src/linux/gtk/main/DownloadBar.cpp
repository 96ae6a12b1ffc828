#include "linux/gtk/main/DownloadBar.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/main/DownloadRow.h"

#include <glibmm/main.h>

#include <algorithm>
#include <utility>

namespace kelo::gtk {

namespace {

/// About three rows. The page is what the window is for.
constexpr int tallestInLines = 10;
/// In milliseconds. People read no faster than this.
constexpr unsigned betweenDrawings = 200;

} // namespace

class DownloadBar::Observer final : public downloads::DownloadObserver {
public:
    explicit Observer(DownloadBar& bar) : bar(bar) {}
    void downloadsChanged() override { bar.draw(); }
    void downloadEnded(const downloads::Download& download) override {
        if (download.status == downloads::DownloadStatus::failed)
            announceNews(bar, download.name + ": " + download.sentence);
        else
            announceNews(bar, translated("Download finished") + ": " + download.name);
    }

private:
    DownloadBar& bar;
};

DownloadBar::DownloadBar(std::shared_ptr<downloads::DownloadList> list, std::function<void()> leave)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6),
      list(std::move(list)),
      leave(std::move(leave)),
      observer(std::make_shared<Observer>(*this)) {
    add_css_class("kelo-notice");
    add_css_class("kelo-downloads");
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_REGION);
    setAccessibleName(*this, translated("Downloads"));
    scroll.setMaximumInLines(tallestInLines);
    scroll.set_hexpand();
    rows.set_valign(Gtk::Align::CENTER);
    append(scroll);
    closeButton.set_icon_name("window-close-symbolic");
    closeButton.set_has_frame(false);
    closeButton.set_valign(Gtk::Align::CENTER);
    closeButton.set_tooltip_text(translated("Close"));
    setAccessibleName(closeButton, translated("Close"));
    closeButton.signal_clicked().connect([this] { this->list->dismissEnded(); });
    append(closeButton);
    this->list->addObserver(observer);
    draw();
}

DownloadBar::~DownloadBar() {
    clock.disconnect();
}

void DownloadBar::takeFocus() {
    child_focus(Gtk::DirectionType::TAB_FORWARD);
}

void DownloadBar::draw() {
    const bool hadFocus = holdsFocus();
    drawRows();
    const auto& all = list->all();
    closeButton.set_visible(std::ranges::any_of(all, [](const downloads::Download& each) {
        return each.status != downloads::DownloadStatus::running;
    }));
    set_visible(!all.empty());
    keepFocus(hadFocus);
    followProgress();
}

// The engine reports every few kilobytes, which nobody needs to see.
void DownloadBar::followProgress() {
    if (list->runningCount() == 0)
        clock.disconnect();
    else if (!clock.connected())
        clock = Glib::signal_timeout().connect(
            [this] {
                if (get_mapped())
                    draw();
                return list->runningCount() > 0;
            },
            betweenDrawings);
}

// Rows that stay are kept, and with them the button that has the keyboard.
void DownloadBar::drawRows() {
    for (auto each = byIdentifier.begin(); each != byIdentifier.end();) {
        const bool isListed =
            std::ranges::find(list->all(), each->first, &downloads::Download::identifier) !=
            list->all().end();
        if (!isListed)
            rows.remove(*each->second);
        each = isListed ? std::next(each) : byIdentifier.erase(each);
    }
    for (const downloads::Download& download : list->all()) {
        auto& row = byIdentifier[download.identifier];
        if (!row) {
            row = std::make_unique<DownloadRow>(*list);
            rows.append(*row);
        }
        row->draw(download);
    }
}

// When the button goes that has the keyboard, no other may take its place by itself: whoever is
// about to press "Cancel" must not open the file.
void DownloadBar::keepFocus(bool hadFocus) {
    const Gtk::Widget* const focus = get_root() ? get_root()->get_focus() : nullptr;
    if (!hadFocus || (focus && focus->is_ancestor(*this) && focus->get_mapped()))
        return;
    if (get_visible() && closeButton.get_visible())
        closeButton.grab_focus();
    else
        leave();
}

} // namespace kelo::gtk
