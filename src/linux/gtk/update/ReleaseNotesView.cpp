#include "linux/gtk/update/ReleaseNotesView.h"

#include "base/Translation.h"
#include "linux/gtk/kit/Accessibility.h"

#include <pango/pango-layout.h>

#include <string>
#include <vector>

namespace kelo::gtk {

using updater::Paragraph;
using updater::ParagraphKind;

namespace {

constexpr const char* bullet = "•\u2002";
constexpr int smallestHeight = 96;
constexpr int greatestHeight = 220;
constexpr int listIndent = 18;

using Tag = Glib::RefPtr<Gtk::TextTag>;

void addTags(Gtk::TextBuffer& buffer) {
    const auto add = [&](const char* name) { return buffer.create_tag(name); };
    Tag tag = add("strong");
    tag->property_weight() = PANGO_WEIGHT_BOLD;
    tag = add("emphasized");
    tag->property_style() = Pango::Style::ITALIC;
    tag = add("code");
    tag->property_family() = "monospace";
    tag = add("heading");
    tag->property_weight() = PANGO_WEIGHT_BOLD;
    tag->property_scale() = 1.1;
    tag = add("listItem");
    tag->property_left_margin() = listIndent;
    tag->property_indent() = -listIndent / 2;
    tag = add("space");
    tag->property_pixels_below_lines() = 8;
    tag = add("listSpace");
    tag->property_pixels_below_lines() = 4;
}

void append(Gtk::TextBuffer& buffer, const std::string& text,
            const std::vector<Glib::ustring>& tags) {
    buffer.insert_with_tags_by_name(buffer.end(), text, tags);
}

/// next: the following paragraph; null for the last one.
void append(Gtk::TextBuffer& buffer, const Paragraph& paragraph, const Paragraph* next) {
    const bool isListItem = paragraph.kind == ParagraphKind::listItem;
    std::vector<Glib::ustring> common;
    if (paragraph.kind == ParagraphKind::heading)
        common.emplace_back("heading");
    if (isListItem)
        common.emplace_back("listItem");
    if (next) // smaller spacing inside of a list
        common.emplace_back(isListItem && next->kind == ParagraphKind::listItem ? "listSpace"
                                                                                : "space");
    if (isListItem)
        append(buffer, bullet, common);
    for (const auto& run : paragraph.runs) {
        auto tags = common;
        if (run.strong)
            tags.emplace_back("strong");
        if (run.emphasized)
            tags.emplace_back("emphasized");
        if (run.code)
            tags.emplace_back("code");
        append(buffer, run.text, tags);
    }
    if (next)
        append(buffer, "\n", common);
}

} // namespace

ReleaseNotesView::ReleaseNotesView() {
    text.set_editable(false);
    text.set_cursor_visible(false);
    text.set_accepts_tab(false); // Tab goes on to the buttons
    text.set_wrap_mode(Gtk::WrapMode::WORD_CHAR);
    text.set_margin(0);
    text.set_left_margin(12);
    text.set_right_margin(12);
    text.set_top_margin(10);
    text.set_bottom_margin(10);
    setAccessibleName(text, translated("Release notes"));
    addTags(*text.get_buffer());
    set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    set_min_content_height(smallestHeight);
    set_max_content_height(greatestHeight);
    set_propagate_natural_height();
    add_css_class("kelo-notes");
    set_child(text);
}

void ReleaseNotesView::show(const updater::ReleaseNotes& notes) {
    auto& buffer = *text.get_buffer();
    buffer.set_text("");
    for (const auto& paragraph : notes)
        append(buffer, paragraph, &paragraph == &notes.back() ? nullptr : &paragraph + 1);
    buffer.place_cursor(buffer.begin());
}

} // namespace kelo::gtk
