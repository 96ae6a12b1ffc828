#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/searchentry.h>

#include <functional>
#include <memory>

namespace kelo::window {
class HostedPage;
}

namespace kelo::gtk {

class ContentArea;

/// The bar that finds a text in the page: an entry, the number of places, and buttons for the next
/// and the former one. Hidden at first. Enter and Shift+Enter lead on and back, Escape closes the
/// bar and gives the keyboard to the page.
class FindBar final : public Gtk::Box {
public:
    /// The content must outlive the bar.
    explicit FindBar(ContentArea& content);

    /// Shows the bar with the keyboard in its entry, whose text is selected.
    void open();
    /// Without a text to find, opens the bar.
    void next();
    void previous();

private:
    void buildEntry();
    void buildButtons();
    void addButton(Gtk::Button& button, const char* icon, const std::string& name,
                   std::function<void()> action);
    void search();
    void close();
    void showCount(unsigned places);
    bool hasText() const { return !entry.get_text().empty(); }
    window::HostedPage* page();

    ContentArea& content;
    Gtk::SearchEntry entry;
    Gtk::Label count;
    Gtk::Button previousButton;
    Gtk::Button nextButton;
    Gtk::Button closeButton;
    std::shared_ptr<const std::function<void(unsigned places)>> observer;
};

} // namespace kelo::gtk
