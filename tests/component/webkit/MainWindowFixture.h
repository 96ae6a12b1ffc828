#pragma once

#include "component/webkit/WebKitFixture.h"
#include "linux/gtk/kit/StateFile.h"
#include "linux/gtk/main/MainWindow.h"
#include "testing/screen/Keyboard.h"
#include "testing/screen/Pointer.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::test {

/// A real page in a real main window with the overlay, and real keys and clicks. Needs a window
/// manager.
class MainWindowFixture : public WebKitFixture {
protected:
    static void SetUpTestSuite();
    ~MainWindowFixture() override;

    /// Waits until the page has arrived and has the keyboard.
    void openInMainWindow(std::map<std::string, std::string> pages,
                          platform::WebViewConfiguration configuration = {});

    void press(const std::string& key, const std::vector<std::string>& modifiers = {}) const;
    /// Waits until the keys that were pressed have gone to the page, and from there to the window.
    void settle();
    /// A point of a mapped widget, on the screen.
    static screen::Point onScreen(GtkWidget* widget, double x, double y);
    /// The middle of an element of the page, on the screen.
    screen::Point placeOf(const std::string& selector);
    /// The visible child of the web view whose type has this name; null if there is none.
    GtkWidget* childOfView(std::string_view typeName) const;

    std::unique_ptr<MisbehavingServer> server;
    const screen::XConnection connection;
    const screen::Keyboard keyboard{connection};
    const screen::Pointer pointer{connection};
    platform::WindowGroup group;
    gtk::StateFile state{""};
    std::unique_ptr<gtk::MainWindow> window;
};

} // namespace kelo::test
