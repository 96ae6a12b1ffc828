#pragma once

#include "component/ScopedMainLoop.h"
#include "linux/session/LinuxUserSession.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace kelo::test {

/// Runs the main loop until the condition holds. What happens on a display is no event of ours, so
/// the condition is looked at again now and then.
inline bool until(const std::function<bool()>& condition) {
    const guint tick = g_timeout_add(
        5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    const bool holds = ScopedMainLoop::runUntil(condition);
    g_source_remove(tick);
    return holds;
}

/// A session that is asked, as the widget asks it.
class SessionQuestions {
public:
    explicit SessionQuestions(platform::UserSession& session) : session(session) {}

    void ask() {
        session.performUnlessLocked([this] { ++performed; });
    }
    /// Whether an action is performed before the call returns.
    bool isUnlocked() {
        const int before = performed;
        ask();
        return performed > before;
    }

    int performed = 0;

private:
    platform::UserSession& session;
};

} // namespace kelo::test
