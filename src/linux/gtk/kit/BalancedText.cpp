#include "linux/gtk/kit/BalancedText.h"

#include <pangomm/attrlist.h>

namespace kelo::gtk {

namespace {

// In a longer text nobody minds the last line.
constexpr int mostLines = 6;

/// In pixels, with lines of at most so many characters.
int naturalWidth(Gtk::Label& label, int characters) {
    label.set_max_width_chars(characters);
    int natural = 0;
    int unused = 0;
    label.measure(Gtk::Orientation::HORIZONTAL, -1, unused, natural, unused, unused);
    return natural;
}

int linesAt(const Glib::RefPtr<Pango::Layout>& text, int width) {
    text->set_width(width * PANGO_SCALE);
    return text->get_line_count();
}

} // namespace

void wrapLines(Gtk::Label& label) {
    label.set_wrap();
    label.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    Pango::AttrList attributes;
    auto withoutHyphens = Pango::Attribute::create_attr_insert_hyphens(false);
    attributes.insert(withoutHyphens);
    label.set_attributes(attributes);
}

void wrapLinesAtStart(Gtk::Label& label) {
    wrapLines(label);
    label.set_natural_wrap_mode(Gtk::NaturalWrapMode::NONE);
    label.set_halign(Gtk::Align::START);
    label.set_xalign(0);
}

void balanceLines(Gtk::Label& label, int widestInCharacters) {
    const int widest = naturalWidth(label, widestInCharacters);
    const auto text = label.get_layout()->copy();
    text->set_wrap(Pango::WrapMode::WORD);
    const int lines = linesAt(text, widest);
    linesAt(text, 0);
    const int longestWord = text->get_pixel_logical_extents().get_width();
    if (lines < 2 || lines > mostLines)
        return;
    int tooFew = 0;
    int characters = widestInCharacters;
    while (characters - tooFew > 1) {
        const int middle = (characters + tooFew) / 2;
        const int width = naturalWidth(label, middle);
        (width < longestWord || linesAt(text, width) > lines ? tooFew : characters) = middle;
    }
    label.set_max_width_chars(characters);
}

} // namespace kelo::gtk
