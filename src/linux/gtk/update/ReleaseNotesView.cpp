#include "linux/gtk/update/ReleaseNotesView.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"
#include "linux/gtk/kit/BalancedText.h"

#include <glibmm/markup.h>
#include <gtkmm/settings.h>

#include <string>

namespace kelo::gtk {

using updater::Paragraph;
using updater::ParagraphKind;
using updater::TextRun;

namespace {

constexpr const char* bullet = "•\u2002";
constexpr int smallestHeight = 96;
constexpr int greatestHeight = 220;

std::string tagged(const char* name, const std::string& markup) {
    return std::string("<") + name + ">" + markup + "</" + name + ">";
}

std::string markupOf(const TextRun& run) {
    std::string markup = Glib::Markup::escape_text(run.text);
    if (run.strong)
        markup = tagged("b", markup);
    if (run.emphasized)
        markup = tagged("i", markup);
    if (run.code)
        markup = tagged("tt", markup);
    if (run.link.empty())
        return markup;
    return "<a href=\"" + Glib::Markup::escape_text(run.link).raw() + "\">" + markup + "</a>";
}

std::string markupOf(const Paragraph& paragraph) {
    std::string markup = paragraph.kind == ParagraphKind::listItem ? bullet : "";
    for (const TextRun& run : paragraph.runs)
        markup += markupOf(run);
    if (paragraph.kind == ParagraphKind::heading)
        return "<span weight=\"bold\" size=\"110%\">" + markup + "</span>";
    return paragraph.kind == ParagraphKind::code ? tagged("tt", markup) : markup;
}

/// What stands between two paragraphs: less inside of a list.
const char* gapBetween(const Paragraph& one, const Paragraph& next) {
    const bool isList = one.kind == ParagraphKind::listItem && next.kind == ParagraphKind::listItem;
    return isList ? "\n<span size=\"25%\">\n</span>" : "\n<span size=\"60%\">\n</span>";
}

} // namespace

ReleaseNotesView::ReleaseNotesView() {
    text.set_selectable();
    wrapLines(text);
    // What the window has room for: the natural height is that of lines of this length.
    text.set_max_width_chars(54);
    text.set_xalign(0);
    text.set_yalign(0);
    text.set_margin_start(12);
    text.set_margin_end(12);
    text.set_margin_top(10);
    text.set_margin_bottom(10);
    // A label's own name is its text.
    setAccessibleRole(*this, GTK_ACCESSIBLE_ROLE_GROUP);
    setAccessibleName(*this, translated("Release notes"));
    text.signal_activate_link().connect(
        [this](const Glib::ustring& address) {
            if (open)
                open(address);
            return true;
        },
        false);
    // Otherwise the toolkit selects all of a text that gets the keyboard, and Tab leaves out its
    // links.
    get_settings()->property_gtk_label_select_on_focus() = false;
    set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    set_min_content_height(smallestHeight);
    set_max_content_height(greatestHeight);
    set_propagate_natural_height();
    add_css_class("kelo-notes");
    set_child(text);
}

void ReleaseNotesView::show(const updater::ReleaseNotes& notes,
                            std::function<void(const std::string&)> openLink) {
    open = std::move(openLink);
    std::string markup;
    for (const auto& paragraph : notes) {
        markup += markupOf(paragraph);
        if (&paragraph != &notes.back())
            markup += gapBetween(paragraph, *(&paragraph + 1));
    }
    text.set_markup(markup);
}

} // namespace kelo::gtk
