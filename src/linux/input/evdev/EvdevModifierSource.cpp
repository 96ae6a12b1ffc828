#include "linux/input/evdev/EvdevModifierSource.h"

#include "base/Translation.h"
#include "linux/input/evdev/DeviceListing.h"
#include "linux/input/evdev/EvdevKeyboard.h"
#include "linux/input/evdev/KeyCapabilities.h"
#include "linux/input/evdev/WatchedKeyboards.h"

#include <glib.h>

#include <utility>

namespace kelo::input {

namespace {

constexpr guint patienceInMilliseconds = 5000;

/// While it exists, what this thread begins comes back only to those who wait here.
class PrivateLoop {
public:
    PrivateLoop() : context(g_main_context_new()) { g_main_context_push_thread_default(context); }
    ~PrivateLoop() {
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
    PrivateLoop(const PrivateLoop&) = delete;
    PrivateLoop& operator=(const PrivateLoop&) = delete;

    void runUntil(const std::function<bool()>& condition) const {
        bool late = false;
        const gobject::MainLoopSource deadline(g_timeout_source_new(patienceInMilliseconds));
        const GSourceFunc expired = [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_CONTINUE;
        };
        g_source_set_callback(deadline.get(), expired, &late, nullptr);
        g_source_attach(deadline.get(), context);
        while (!condition() && !late)
            g_main_context_iteration(context, TRUE);
    }

private:
    GMainContext* context;
};

std::string seatOfThisSession(const EvdevDevices& devices) {
    const PrivateLoop loop;
    const auto session = devices.session([] {});
    loop.runUntil([&] { return session->isCertain(); });
    return session->seat();
}

} // namespace

EvdevModifierSource::EvdevModifierSource(Devices devices) : devices(std::move(devices)) {}

EvdevModifierSource::~EvdevModifierSource() = default;

Availability EvdevModifierSource::availability() const {
    const DeviceListing listing = listDevices(devices.folder);
    const std::string seat = seatOfThisSession(devices);
    const auto seats = devices.seats({});
    bool refused = listing.refused;
    bool everyKey = false;
    bool elsewhere = false;
    for (const std::string& name : listing.names) {
        if (lacksHeldKeys(devices.descriptions, name))
            continue;
        if (seats->seatOf(name) != seat) {
            elsewhere = true;
            continue;
        }
        const auto device = devices.open(devices.folder / name);
        if (!device) {
            refused = true;
            continue;
        }
        const auto answer = EvdevKeyboard::admit(*device);
        if (answer == EvdevKeyboard::Refusal::none)
            return {
                true,
                translated(
                    "The Ctrl keys and the left Alt key are read from the keyboards in %1. While "
                    "one of them is down, Kelo also learns that another key is pressed, and leaves "
                    "such shortcuts alone. At other times it learns of no other key.",
                    {devices.folder.string()}),
                ""};
        everyKey = everyKey || answer == EvdevKeyboard::Refusal::everyKey;
    }
    if (everyKey)
        return {false,
                translated(
                    "This kernel cannot hold back the other keys of a keyboard, and Kelo does not "
                    "read what you type."),
                translated("Use Linux 4.4 or later.")};
    if (refused)
        return {
            false, translated("The devices in %1 cannot be read.", {devices.folder.string()}),
            translated(
                "Have an administrator add you to the group \"input\" and log in again, or add a "
                "udev rule that lets you read keyboards. Mind that every program you run can then "
                "read all that is typed.")};
    if (elsewhere)
        return {false,
                translated("The keyboards in %1 belong to another seat than this session.",
                           {devices.folder.string()}),
                translated("In your desktop's keyboard settings, give the command \"kelo "
                           "--widget\" a shortcut.")};
    return {false, translated("There is no keyboard in %1.", {devices.folder.string()}),
            translated("Connect a keyboard and start Kelo again.")};
}

bool EvdevModifierSource::start(Handler handler) {
    keyboards = std::make_shared<WatchedKeyboards>(devices, std::move(handler), otherPress);
    if (!keyboards->start())
        keyboards.reset();
    return keyboards != nullptr;
}

} // namespace kelo::input
