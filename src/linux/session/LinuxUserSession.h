#pragma once

#include "base/async/MainLoop.h"
#include "linux/session/LockSource.h"
#include "platform/UserSession.h"

#include <memory>
#include <vector>

namespace kelo::session {

/// The parts that LinuxUserSession asks.
struct SessionParts {
    using Make = std::function<std::vector<std::unique_ptr<LockSource>>(LockSource::Changed)>;
    /// Makes the services that are followed.
    Make locks;
    /// Null where the desktop has no such probe.
    std::unique_ptr<LockScreenProbe> screen;
};

/// The session's lock: what services on the buses say, known before anybody asks, and under X11
/// what the screen shows. The process's main loop must be installed. Main thread only.
class LinuxUserSession final : public platform::UserSession {
public:
    /// The buses of the environment, and the display that the toolkit is connected to.
    LinuxUserSession();
    explicit LinuxUserSession(SessionParts parts);
    ~LinuxUserSession() override;
    LinuxUserSession(const LinuxUserSession&) = delete;
    LinuxUserSession& operator=(const LinuxUserSession&) = delete;

    void performUnlessLocked(std::function<void()> action) override;
    [[nodiscard]] Observation observeLocking(std::function<void()> handler) override;

private:
    class Screen;

    bool isLockedByService() const;
    bool isCertain() const;
    void attempt(const std::shared_ptr<std::function<void()>>& action, int retriesLeft);
    void locksChanged();

    std::shared_ptr<ObservableObject> locking = std::make_shared<ObservableObject>();
    std::shared_ptr<Screen> screen;
    std::vector<std::unique_ptr<LockSource>> locks;
    bool wasLocked = false;
    std::shared_ptr<Timer> retry;
};

} // namespace kelo::session
