#include "linux/input/xkb/XkbModifierSource.h"

#include "base/Translation.h"
#include "linux/gobject/MainLoopSource.h"
#include "linux/input/xkb/RawPresses.h"
#include "linux/input/xkb/XkbModifierMap.h"

#include <X11/XKBlib.h>
#include <glib.h>

#include <optional>
#include <utility>

namespace kelo::input {

namespace {

struct CloseConnection {
    void operator()(Display* display) const { XCloseDisplay(display); }
};
using Connection = std::unique_ptr<Display, CloseConnection>;

Connection connectTo(const std::string& displayName) {
    return Connection(XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str()));
}

/// The first number of the keyboard extension's events, if the server has the extension.
std::optional<int> keyboardEvents(Display* display) {
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    if (!XkbQueryExtension(display, &opcode, &firstEvent, &firstError, &major, &minor))
        return std::nullopt;
    return firstEvent;
}

/// Whether Xlib's own queue holds events. Reading a reply may have queued some, and the descriptor
/// does not show those.
bool hasQueuedEvents(Display* display) {
    return XEventsQueued(display, QueuedAlready) > 0;
}

} // namespace

/// The connection, watched from the main loop.
class XkbWatch {
public:
    XkbWatch(Connection display, int firstEvent, ModifierSource::Handler handler,
             std::function<void()> otherPress);
    XkbWatch(const XkbWatch&) = delete;
    XkbWatch& operator=(const XkbWatch&) = delete;

private:
    struct Source {
        GSource base;
        XkbWatch* watch;
        gpointer descriptor;
    };
    static gboolean prepare(GSource* source, gint* timeout);
    static gboolean check(GSource* source);
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer);

    void select();
    void readState();
    void drain();
    void handle(XkbEvent& event);
    void handleKeyboard(const XkbEvent& event);
    void stateChanged(unsigned realModifiers);
    void listenWhileNeeded();
    void tellOverlooked();
    void tellOtherPress();

    Connection connection;
    int firstEvent;
    ModifierSource::Handler handler;
    std::function<void()> otherPress;
    std::optional<RawPresses> presses;
    bool listening = false;
    /// Set when another key was down already as listening began: the number of events that are
    /// still to be handled and are older than that look at the keys.
    std::optional<int> olderEvents;
    XkbModifierMap map;
    unsigned realModifiers = 0;
    platform::ModifierFlags last = 0;
    gobject::MainLoopSource source;
};

XkbWatch::XkbWatch(Connection display, int firstEvent, ModifierSource::Handler handler,
                   std::function<void()> otherPress)
    : connection(std::move(display)),
      firstEvent(firstEvent),
      handler(std::move(handler)),
      otherPress(std::move(otherPress)) {
    static GSourceFuncs functions{prepare, check, dispatch, nullptr, nullptr, nullptr};
    select();
    if (this->otherPress)
        presses = RawPresses::of(connection.get());
    map = readXkbModifierMap(connection.get());
    XkbStateRec state{};
    XkbGetState(connection.get(), XkbUseCoreKbd, &state);
    realModifiers = state.mods;
    last = map.flags(realModifiers);
    listenWhileNeeded();
    // Keys that are down at the start belong to no press that was reported.
    olderEvents.reset();

    source.reset(g_source_new(&functions, sizeof(Source)));
    auto* const own = reinterpret_cast<Source*>(source.get());
    own->watch = this;
    own->descriptor =
        g_source_add_unix_fd(source.get(), ConnectionNumber(connection.get()),
                             static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
    g_source_set_static_name(source.get(), "kelo keyboard modifiers");
    // Ahead of all that the toolkit and the web engine have to do in the same turn of the loop:
    // somebody has pressed the chord and waits.
    g_source_set_priority(source.get(), G_PRIORITY_HIGH);
    g_source_attach(source.get(), nullptr);
}

void XkbWatch::select() {
    Display* const display = connection.get();
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbModifierStateMask,
                          XkbModifierStateMask);
    constexpr unsigned layout = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
    XkbSelectEvents(display, XkbUseCoreKbd, layout, layout);
}

gboolean XkbWatch::prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return hasQueuedEvents(reinterpret_cast<Source*>(source)->watch->connection.get());
}

gboolean XkbWatch::check(GSource* source) {
    auto* const own = reinterpret_cast<Source*>(source);
    return g_source_query_unix_fd(source, own->descriptor) != 0 ||
           hasQueuedEvents(own->watch->connection.get());
}

gboolean XkbWatch::dispatch(GSource* source, GSourceFunc, gpointer) {
    reinterpret_cast<Source*>(source)->watch->drain();
    return G_SOURCE_CONTINUE;
}

void XkbWatch::drain() {
    // XPending reads what has arrived and does not wait for more.
    while (XPending(connection.get()) > 0) {
        XkbEvent event{};
        XNextEvent(connection.get(), &event.core);
        handle(event);
        tellOverlooked();
    }
}

void XkbWatch::handle(XkbEvent& event) {
    if (olderEvents)
        --*olderEvents;
    if (event.type == firstEvent)
        handleKeyboard(event);
    else if (presses && presses->isOtherPress(event.core, map))
        tellOtherPress();
}

void XkbWatch::handleKeyboard(const XkbEvent& event) {
    switch (event.any.xkb_type) {
    case XkbStateNotify:
        stateChanged(event.state.mods);
        break;
    case XkbMapNotify:
    case XkbNewKeyboardNotify:
        map = readXkbModifierMap(connection.get());
        // The keys that are held may stand for other modifiers now.
        stateChanged(realModifiers);
        break;
    default:
        break;
    }
}

void XkbWatch::stateChanged(unsigned modifiers) {
    realModifiers = modifiers;
    const auto flags = map.flags(modifiers);
    if (std::exchange(last, flags) == flags)
        return;
    listenWhileNeeded();
    handler(flags);
}

// What is typed without these modifiers is nobody's business here.
void XkbWatch::listenWhileNeeded() {
    const bool needed = (last & (platform::modifier::control | platform::modifier::option)) != 0;
    if (!presses || std::exchange(listening, needed) == needed)
        return;
    presses->listen(needed);
    olderEvents.reset();
    // A keyboard's macro key sends a whole shortcut at once. Its last key may have gone down before
    // the server began to report keys. The answer comes after the events that tell of its
    // modifiers.
    if (needed && isOtherKeyDown(connection.get(), map))
        olderEvents = XEventsQueued(connection.get(), QueuedAlready);
}

// A key that was held before the chord does not count. So the key is reported when all that the
// server knew of the modifiers has been reported: if the chord is not complete even then, the key
// came before it.
void XkbWatch::tellOverlooked() {
    if (olderEvents && *olderEvents <= 0)
        tellOtherPress();
}

void XkbWatch::tellOtherPress() {
    // An overlooked key is most likely this one.
    olderEvents.reset();
    otherPress();
}

XkbModifierSource::XkbModifierSource(std::string displayName)
    : displayName(std::move(displayName)) {}

XkbModifierSource::~XkbModifierSource() = default;

Availability XkbModifierSource::availability() const {
    const bool watching = watch != nullptr;
    const Connection display = watching ? nullptr : connectTo(displayName);
    if (!watching && !display)
        return {false, translated("There is no X display to watch."),
                translated("Start Kelo from a graphical session.")};
    if (!watching && !keyboardEvents(display.get()))
        return {
            false,
            translated("The X display has no keyboard extension (XKEYBOARD), which tells of keys."),
            translated("Enable the XKEYBOARD extension of the X server.")};
    if (!watching && !RawPresses::of(display.get()))
        return {
            true,
            translated(
                "Control + Alt works in every program. This X display does not tell of other keys, "
                "so shortcuts such as Ctrl+Alt+T count as Control + Alt, too."),
            translated("Use an X server with XInput 2.1 or later.")};
    return {
        true,
        translated("Control + Alt works in every program. While one of them is down, Kelo also "
                   "learns that "
                   "another key or a mouse button is pressed, and leaves such shortcuts alone."),
        ""};
}

bool XkbModifierSource::start(Handler handler) {
    Connection display = connectTo(displayName);
    if (!display)
        return false;
    const auto firstEvent = keyboardEvents(display.get());
    if (!firstEvent)
        return false;
    watch =
        std::make_unique<XkbWatch>(std::move(display), *firstEvent, std::move(handler), otherPress);
    return true;
}

} // namespace kelo::input
