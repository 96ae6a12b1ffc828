#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

namespace kelo {

/// The part of a desktop that shows the keyring's prompts, with a user who never answers them.
class UnansweredPrompter {
public:
    explicit UnansweredPrompter(GDBusConnection* connection);
    ~UnansweredPrompter();
    UnansweredPrompter(const UnansweredPrompter&) = delete;
    UnansweredPrompter& operator=(const UnansweredPrompter&) = delete;

    /// Waits until the keyring asks for a prompt.
    bool waitUntilAsked() const;

private:
    static void onCall(GDBusConnection*, const gchar* sender, const gchar* path,
                       const gchar* interface, const gchar* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer self);

    gobject::GObjectPointer<GDBusConnection> connection;
    guint object = 0;
    guint name = 0;
    bool asked = false;
};

} // namespace kelo
