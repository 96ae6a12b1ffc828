#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

namespace kelo::bench {

/// What programs ask and hear on the session bus about the desktop's colors, and how they are asked
/// to come to the front.
class Portal {
public:
    /// Takes the portal's name. Throws std::runtime_error if somebody has it.
    Portal();

    /// Tells everybody that the user now prefers this.
    void prefer(bool dark) const;
    /// Asks the running Kelo for its window, as a desktop's menu does.
    void activateKelo() const;

private:
    gobject::GObjectPointer<GDBusConnection> connection;
};

} // namespace kelo::bench
