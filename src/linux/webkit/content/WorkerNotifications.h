#pragma once

#include <webkit/webkit.h>

namespace kelo::webkit {

/// Takes showNotification() and getNotifications() from service workers and their registrations.
/// The engine would send such notifications to the desktop by itself: as many as a page likes, with
/// its text as it is, and even after the user took the permission back. Pages see that it is
/// missing, and have the constructor Notification.
///
/// All views of the program need it: workers get the settings of any one of them.
void withholdWorkerNotifications(WebKitSettings* settings);

} // namespace kelo::webkit
