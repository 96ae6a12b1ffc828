#include "linux/input/KeyboardMonitors.h"

#include "linux/input/ActiveWindowFocus.h"
#include "linux/input/KeyDownFilter.h"
#include "linux/input/ModifierDispatch.h"
#include "linux/input/ModifierSources.h"
#include "linux/input/OwnWindowsModifierSource.h"
#include "linux/input/xkb/X11KeyboardFocus.h"
#include "linux/window/Toplevels.h"
#include "linux/window/WindowIdentity.h"

#include <gtk/gtk.h>

#include <deque>
#include <optional>
#include <utility>

namespace kelo::input {

using platform::Event;
using platform::EventMask;
using platform::EventMonitor;
using platform::EventPointer;
using platform::ModifierFlags;
namespace event_mask = platform::event_mask;

namespace {

template <typename Handler>
struct Monitored {
    EventMask matching;
    Handler handler;
};

/// A handler may add another one. A deque keeps the others in place, and the new one is first
/// called for the next event.
template <typename Handler>
using Handlers = std::deque<Monitored<Handler>>;

/// Calls the handlers in the order in which they were added. Returns null as soon as one consumes
/// the event.
EventPointer pass(const Handlers<KeyboardMonitors::LocalHandler>& handlers, EventPointer event) {
    const auto count = handlers.size();
    for (std::size_t at = 0; at < count && event; ++at)
        if (handlers[at].matching & event->kind)
            event = handlers[at].handler(event);
    return event;
}

/// What a source of modifiers reports.
constexpr EventMask ofModifiers = event_mask::flagsChanged | event_mask::otherPress;

bool isToolkitUp() {
    return gtk_is_initialized() && gdk_display_get_default();
}

KeyboardWatch watchOfDisplay() {
    GdkDisplay* const display = gdk_display_get_default();
    const DisplayKind kind = displayKind(display);
    KeyboardWatch watch;
    if (kind == DisplayKind::x11)
        watch.focus = std::make_unique<X11KeyboardFocus>(display);
    else
        watch.focus = std::make_unique<ActiveWindowFocus>();
    watch.everyProgram = sourcesForEveryProgram(kind, gdk_display_get_name(display));
    watch.ownWindows = std::make_unique<OwnWindowsModifierSource>();
    return watch;
}

} // namespace

class KeyboardMonitors::Modifiers {
public:
    explicit Modifiers(KeyboardWatch given) : watch(std::move(given)) {
        startEveryProgram();
        if (!everyProgram || !everyProgram->coversOwnWindows())
            startOwnWindows();
    }

    Handlers<GlobalHandler> globalHandlers;
    Handlers<LocalHandler> localHandlers;

    bool seesOtherPrograms() const { return everyProgram != nullptr; }
    /// Whether presses of other keys in our own windows have to come from the toolkit.
    bool needsOwnPresses() const { return ownWindows != nullptr; }
    void sawPressInOwnWindow() {
        if (needsOwnPresses())
            dispatch->sawOtherPress();
    }
    bool seesOwnWindows() const {
        return ownWindows || (everyProgram && everyProgram->coversOwnWindows());
    }

private:
    void startEveryProgram() {
        for (auto& source : watch.everyProgram) {
            source->onOtherPress([this] { dispatch->sawOtherPress(); });
            if (source->start([this](ModifierFlags flags) { dispatch->sawEverywhere(flags); })) {
                everyProgram = std::move(source);
                g_debug("hotkey: %s watches every program", everyProgram->name().c_str());
                break;
            }
        }
        watch.everyProgram.clear();
        makeDispatch(false);
    }

    void startOwnWindows() {
        if (!watch.ownWindows || !watch.ownWindows->start([this](ModifierFlags flags) {
                dispatch->sawInOwnWindows(flags);
            }))
            return;
        ownWindows = std::move(watch.ownWindows);
        makeDispatch(true);
        watch.focus->onChange([this] { dispatch->focusMoved(); });
    }

    void makeDispatch(bool hasOwnWindowsSource) {
        dispatch.emplace(
            *watch.focus, hasOwnWindowsSource,
            [this](ModifierFlags flags, bool ours) {
                deliver({event_mask::flagsChanged, flags}, ours);
            },
            [this](bool ours) { deliver({event_mask::otherPress}, ours); });
    }

    void deliver(Event event, bool ours) {
        // If only our own windows can be observed, their monitors must learn that the keyboard has
        // left them: from then on, no modifier counts as down.
        if (ours || !everyProgram)
            deliverToOurs(std::move(event));
        else
            for (std::size_t at = 0, count = globalHandlers.size(); at < count; ++at)
                if (globalHandlers[at].matching & event.kind)
                    globalHandlers[at].handler(event);
    }

    void deliverToOurs(Event event) {
        if (GtkWindow* const window = gtk_is_initialized() ? window::activeToplevel() : nullptr)
            event.window = window::windowIdentity(window);
        pass(localHandlers, std::make_shared<const Event>(std::move(event)));
    }

    KeyboardWatch watch;
    std::optional<ModifierDispatch> dispatch;
    // Last, so that they are destroyed first: their handlers use the dispatch.
    std::unique_ptr<ModifierSource> everyProgram;
    std::unique_ptr<ModifierSource> ownWindows;
};

class KeyboardMonitors::KeyPresses {
public:
    explicit KeyPresses(std::function<void()> otherPress)
        : filter([this](const EventPointer& event) { return pass(handlers, event) != nullptr; },
                 std::move(otherPress)) {}

    Handlers<LocalHandler> handlers;

private:
    KeyDownFilter filter;
};

KeyboardMonitors::KeyboardMonitors() = default;

KeyboardMonitors::KeyboardMonitors(MakeWatch makeWatch) : makeWatch(std::move(makeWatch)) {}

KeyboardMonitors::~KeyboardMonitors() = default;

std::shared_ptr<EventMonitor> KeyboardMonitors::addGlobalMonitor(EventMask matching,
                                                                 GlobalHandler handler) {
    if (!(matching & ofModifiers) || !(makeWatch || isToolkitUp()))
        return nullptr;
    Modifiers& seen = watchedModifiers();
    if (!seen.seesOtherPrograms())
        return nullptr;
    seen.globalHandlers.push_back({matching, std::move(handler)});
    return std::make_shared<EventMonitor>();
}

std::shared_ptr<EventMonitor> KeyboardMonitors::addLocalMonitor(EventMask matching,
                                                                LocalHandler handler) {
    bool added = false;
    if (matching & ofModifiers && (makeWatch || isToolkitUp())) {
        Modifiers& seen = watchedModifiers();
        if (seen.seesOwnWindows()) {
            seen.localHandlers.push_back({matching, handler});
            added = true;
        }
    }
    if (matching & event_mask::keyDown && isToolkitUp()) {
        watchedKeyPresses().handlers.push_back({matching, std::move(handler)});
        added = true;
    }
    return added ? std::make_shared<EventMonitor>() : nullptr;
}

KeyboardMonitors::Modifiers& KeyboardMonitors::watchedModifiers() {
    if (!modifiers) {
        modifiers = std::make_unique<Modifiers>(makeWatch ? makeWatch() : watchOfDisplay());
        if (modifiers->needsOwnPresses() && isToolkitUp())
            watchedKeyPresses();
    }
    return *modifiers;
}

KeyboardMonitors::KeyPresses& KeyboardMonitors::watchedKeyPresses() {
    if (!keyPresses)
        keyPresses = std::make_unique<KeyPresses>([this] {
            if (modifiers)
                modifiers->sawPressInOwnWindow();
        });
    return *keyPresses;
}

} // namespace kelo::input
