#pragma once

/// What the toolkit would do otherwise, or not at all, while the program starts. Main thread only.
namespace kelo::gtk {

/// Call it before the toolkit is initialized.
void keepStreamsPlain();

/// Turns off the keys of the toolkit's inspector, and names the entries of menus for assistive
/// technology. Call it before there is a window.
void prepareForWindows();

/// What the user has started is done.
void endStartUpNotice();

} // namespace kelo::gtk
