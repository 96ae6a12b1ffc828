#pragma once

#include "linux/gobject/SignalHandler.h"

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Swipes with two fingers that go back and forward in a view's history. They are on while they are
/// allowed and a window shows the view.
///
/// With swipes on, the engine takes a picture of the view before each navigation, to slide it in
/// later. It asks the view's window for that, also for one that the view is not in any more, and
/// the program dies of it. A page whose window is closed lives on and may go elsewhere.
class SwipeGestures {
public:
    /// Not allowed at first. The view must outlive it.
    explicit SwipeGestures(WebKitWebView* view);
    SwipeGestures(const SwipeGestures&) = delete;
    SwipeGestures& operator=(const SwipeGestures&) = delete;

    void setAllowed(bool allowed);

private:
    void apply(bool inWindow);

    WebKitWebView* view;
    bool allowed = false;
    gobject::SignalConnection realized;
    gobject::SignalConnection unrealized;
};

} // namespace kelo::webkit
