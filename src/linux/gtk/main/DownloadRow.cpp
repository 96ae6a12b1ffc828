#include "linux/gtk/main/DownloadRow.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/Style.h"

#include <glibmm/utility.h>

namespace kelo::gtk {

using downloads::Download;
using downloads::DownloadStatus;

namespace {

constexpr int leastNameInCharacters = 8;
constexpr int progressWidth = 120;

std::string size(std::uint64_t bytes) {
    return Glib::convert_return_gchar_ptr_to_stdstring(g_format_size(bytes));
}

std::string newsOf(const Download& download) {
    switch (download.status) {
    case DownloadStatus::failed:
        return download.sentence;
    case DownloadStatus::finished:
        return download.received > 0 ? size(download.received) : translated("Finished");
    case DownloadStatus::running:
        break;
    }
    if (!download.length)
        return size(download.received);
    return translated("%1 of %2", {size(download.received), size(*download.length)});
}

} // namespace

DownloadRow::DownloadRow(downloads::DownloadList& list)
    : Gtk::Box(Gtk::Orientation::HORIZONTAL, 6), list(list) {
    add_css_class("kelo-download");
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_GROUP);
    addTexts();
    progress.set_valign(Gtk::Align::CENTER);
    progress.set_size_request(progressWidth, -1);
    append(progress);
    addButtons();
}

void DownloadRow::addTexts() {
    auto* const texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    texts->set_hexpand();
    texts->set_valign(Gtk::Align::CENTER);
    name.set_xalign(0);
    // The beginning and the extension say most.
    name.set_ellipsize(Pango::EllipsizeMode::MIDDLE);
    name.set_width_chars(leastNameInCharacters);
    texts->append(name);
    news.set_xalign(0);
    news.set_wrap();
    news.add_css_class("kelo-caption");
    news.add_css_class("kelo-figures");
    texts->append(news);
    append(*texts);
}

void DownloadRow::addButtons() {
    cancelButton.set_label(translated("Cancel"));
    cancelButton.signal_clicked().connect([this] { list.cancel(drawn.identifier); });
    openButton.set_label(translated("Open"));
    openButton.signal_clicked().connect([this] { list.open(drawn.path); });
    showButton.set_label(translated("Show in Folder"));
    showButton.signal_clicked().connect([this] { list.showInFolder(drawn.path); });
    for (auto* const button : {&cancelButton, &openButton, &showButton}) {
        button->set_valign(Gtk::Align::CENTER);
        append(*button);
    }
}

void DownloadRow::draw(const Download& download) {
    drawn = download;
    const bool runs = drawn.status == DownloadStatus::running;
    const bool isFinished = drawn.status == DownloadStatus::finished;
    name.set_text(drawn.name);
    name.set_tooltip_text(drawn.name);
    news.set_text(newsOf(drawn));
    setClass(news, "kelo-red", drawn.status == DownloadStatus::failed);
    setClass(news, "kelo-dim", drawn.status != DownloadStatus::failed);
    setAccessibleName(*this, drawn.name);
    setAccessibleName(cancelButton, translated("Cancel %1", {drawn.name}));
    setAccessibleName(openButton, translated("Open %1", {drawn.name}));
    setAccessibleName(showButton, translated("Show %1 in its folder", {drawn.name}));
    drawProgress();
    progress.set_visible(runs);
    cancelButton.set_visible(runs);
    openButton.set_visible(isFinished && drawn.mayBeOpened);
    showButton.set_visible(isFinished);
}

void DownloadRow::drawProgress() {
    setAccessibleName(progress, drawn.name);
    if (drawn.length)
        progress.set_fraction(static_cast<double>(drawn.received) /
                              static_cast<double>(*drawn.length));
    else if (drawn.status == DownloadStatus::running)
        progress.pulse();
}

} // namespace kelo::gtk
