#include "linux/session/LinuxUserSession.h"

#include "linux/bus/Connection.h"
#include "linux/session/LoginSession.h"
#include "linux/session/ScreenSaver.h"
#include "linux/session/X11LockScreen.h"
#include "linux/window/X11Toolkit.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace kelo::session {

using namespace std::chrono_literals;

namespace {

// A second in all: longer than a key of a shortcut is down, and too short for an action to come as
// a surprise.
constexpr auto retryInterval = 25ms;
constexpr int mostRetries = 40;
/// How often the screen is looked at while something of ours is to be hidden from it.
constexpr auto lookInterval = 250ms;

std::vector<std::unique_ptr<LockSource>> followServices(const LockSource::Changed& changed) {
    const auto systemBus = std::make_shared<bus::SharedConnection>(bus::systemAddress());
    const auto sessionBus = std::make_shared<bus::SharedConnection>(bus::sessionAddress());
    auto all = screenSavers(*sessionBus, changed);
    all.push_back(std::make_unique<LoginSession>(*systemBus, changed));
    return all;
}

std::unique_ptr<LockScreenProbe> probeOfDisplay() {
    GdkDisplay* const display = gdk_display_get_default();
    if (!window::isX11(display))
        return nullptr;
    return std::make_unique<X11LockScreen>(display);
}

} // namespace

/// Looks for a lock screen again and again while somebody wants to know. The X server reports
/// neither that a grab begins nor that it ends.
class LinuxUserSession::Screen : public std::enable_shared_from_this<Screen> {
public:
    Screen(std::unique_ptr<LockScreenProbe> probe, std::weak_ptr<ObservableObject> locking)
        : probe(std::move(probe)), locking(std::move(locking)) {}

    bool isKeyboardGrabbed() const { return probe && probe->isKeyboardGrabbed(); }

    void begin() {
        if (observers++ > 0 || !probe)
            return;
        wasLocked = false;
        lookLater();
    }
    void end() {
        if (--observers == 0 && timer)
            std::exchange(timer, nullptr)->invalidate();
    }

private:
    void lookLater() {
        timer = MainLoop::main().scheduleTimer(lookInterval, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->look();
        });
    }
    // A menu or a shortcut of the desktop's grabs the keyboard, too, and covers nothing.
    void look() {
        const bool isLocked = probe->isKeyboardGrabbed() && probe->isMonitorCovered();
        lookLater();
        const auto observed = locking.lock();
        if (std::exchange(wasLocked, isLocked) || !isLocked || !observed)
            return;
        g_debug("session: another program keeps the keyboard and covers the screen");
        observed->objectWillChange();
    }

    std::unique_ptr<LockScreenProbe> probe;
    std::weak_ptr<ObservableObject> locking;
    int observers = 0;
    bool wasLocked = false;
    std::shared_ptr<Timer> timer;
};

LinuxUserSession::LinuxUserSession()
    : LinuxUserSession(SessionParts{followServices, probeOfDisplay()}) {}

LinuxUserSession::LinuxUserSession(SessionParts parts)
    : screen(std::make_shared<Screen>(std::move(parts.screen), locking)),
      locks(parts.locks([this] { locksChanged(); })) {}

LinuxUserSession::~LinuxUserSession() {
    if (retry)
        retry->invalidate();
}

bool LinuxUserSession::isLockedByService() const {
    return std::ranges::any_of(locks, [](const auto& lock) { return lock->isLocked(); });
}

bool LinuxUserSession::isCertain() const {
    return std::ranges::all_of(locks, [](const auto& lock) { return lock->isCertain(); });
}

void LinuxUserSession::performUnlessLocked(std::function<void()> action) {
    if (retry)
        std::exchange(retry, nullptr)->invalidate();
    attempt(std::make_shared<std::function<void()>>(std::move(action)), mostRetries);
}

void LinuxUserSession::attempt(const std::shared_ptr<std::function<void()>>& action,
                               int retriesLeft) {
    if (isLockedByService()) {
        g_debug("session: locked, so nothing is shown");
        return;
    }
    const bool isGrabbed = screen->isKeyboardGrabbed();
    if (retriesLeft > 0 && (isGrabbed || !isCertain())) {
        retry = MainLoop::main().scheduleTimer(
            retryInterval, [this, action, retriesLeft] { attempt(action, retriesLeft - 1); });
        return;
    }
    if (isGrabbed)
        g_debug("session: another program keeps the keyboard, so nothing is shown");
    else
        (*action)();
}

Observation LinuxUserSession::observeLocking(std::function<void()> handler) {
    screen->begin();
    return Observation([screen = screen, inner = std::make_shared<Observation>(
                                             locking->observe(std::move(handler)))] {
        *inner = Observation();
        screen->end();
    });
}

void LinuxUserSession::locksChanged() {
    const bool isLocked = isLockedByService();
    if (std::exchange(wasLocked, isLocked) == isLocked)
        return;
    g_debug("session: %s", isLocked ? "locked" : "unlocked");
    if (isLocked)
        locking->objectWillChange();
}

} // namespace kelo::session
