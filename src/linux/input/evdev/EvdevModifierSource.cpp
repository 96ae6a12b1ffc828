#include "linux/input/evdev/EvdevModifierSource.h"

#include "base/Translation.h"
#include "linux/input/evdev/EvdevKeyboard.h"
#include "linux/input/evdev/FolderWatch.h"
#include "linux/input/evdev/KeyCapabilities.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace kelo::input {

namespace {

/// Whether this is one of the kernel's own names. Subfolders hold other names for the same devices.
bool isDeviceName(std::string_view name) {
    constexpr std::string_view prefix = "event";
    return name.starts_with(prefix) && name.size() > prefix.size() &&
           std::ranges::all_of(name.substr(prefix.size()),
                               [](unsigned char each) { return std::isdigit(each) != 0; });
}

struct Listing {
    /// In the order of their numbers.
    std::vector<std::string> names;
    bool refused = false;
};

Listing list(const EvdevModifierSource::Devices& devices) {
    Listing listing;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(devices.folder, failure), end;
         !failure && entry != end; entry.increment(failure))
        if (std::string name = entry->path().filename().string(); isDeviceName(name))
            listing.names.push_back(std::move(name));
    std::ranges::sort(listing.names, {},
                      [](const std::string& name) { return std::pair(name.size(), name); });
    listing.refused = failure == std::errc::permission_denied;
    return listing;
}

} // namespace

/// The watched keyboards and the modifiers that are down on all of them together.
class EvdevModifierSource::Keyboards : public std::enable_shared_from_this<Keyboards> {
public:
    Keyboards(Devices devices, Handler handler, std::function<void()> otherPress)
        : devices(std::move(devices)),
          handler(std::move(handler)),
          otherPress(std::move(otherPress)) {}

    bool start() {
        watchFolder();
        if (!folderWatch)
            return false;
        for (const std::string& name : list(devices).names)
            add(name);
        lastFlags = flags();
        return !open.empty();
    }

private:
    void watchFolder() {
        const std::weak_ptr<Keyboards> weak = weak_from_this();
        const auto noticed = [weak](void (Keyboards::*action)(const std::string&)) {
            return [weak, action](const std::string& name) {
                if (const auto self = weak.lock(); self && isDeviceName(name))
                    (self.get()->*action)(name);
                changed(weak);
            };
        };
        folderWatch = FolderWatch::watch(devices.folder, {noticed(&Keyboards::appeared),
                                                          noticed(&Keyboards::permitted),
                                                          noticed(&Keyboards::vanished), [weak] {
                                                              if (const auto self = weak.lock())
                                                                  self->lookAgain();
                                                              changed(weak);
                                                          }});
    }

    void appeared(const std::string& name) {
        open.erase(name);
        add(name);
    }

    void permitted(const std::string& name) {
        if (!open.contains(name))
            add(name);
    }

    void vanished(const std::string& name) { open.erase(name); }

    void lookAgain() {
        for (const std::string& name : list(devices).names)
            if (!open.contains(name))
                add(name);
    }

    void add(const std::string& name) {
        if (lacksHeldKeys(devices.descriptions, name))
            return;
        auto device = devices.open(devices.folder / name);
        if (!device || EvdevKeyboard::admit(*device) != EvdevKeyboard::Refusal::none)
            return;
        const std::weak_ptr<Keyboards> weak = weak_from_this();
        EvdevKeyboard::Handlers handlers{
            [weak](EvdevKeyboard& keyboard, const std::vector<KeyReport>& reports) {
                for (const KeyReport& report : reports) {
                    keyboard.held = report.held;
                    tell(weak, report.otherPress);
                }
                changed(weak);
            },
            [weak, name](EvdevKeyboard&) {
                if (const auto self = weak.lock())
                    self->vanished(name);
                changed(weak);
            }};
        const auto keyboard = EvdevKeyboard::watch(std::move(device), std::move(handlers));
        if (listening)
            keyboard->listen();
        open[name] = keyboard;
    }

    platform::ModifierFlags flags() const {
        platform::ModifierFlags all = 0;
        for (const auto& [name, keyboard] : open)
            all |= keyboard->held.flags();
        return all;
    }

    /// Each handler may destroy the object.
    static void tell(const std::weak_ptr<Keyboards>& weak, bool otherPress) {
        if (const auto self = weak.lock()) {
            const auto now = self->flags();
            if (std::exchange(self->lastFlags, now) != now)
                self->handler(now);
        }
        if (const auto self = weak.lock(); self && otherPress && self->otherPress)
            self->otherPress();
    }

    // Only when all that was read has been told. Beginning to listen asks for the latest state, and
    // what was read earlier must not replace that.
    static void changed(const std::weak_ptr<Keyboards>& weak) {
        bool overlooked = false;
        if (const auto self = weak.lock())
            overlooked = self->listenWhileNeeded();
        tell(weak, overlooked);
    }

    // What is typed without these keys is nobody's business here. A keyboard's macro key sends a
    // whole shortcut at once, and its last key may have gone down before the mask was opened. So
    // the keys that are down are looked at, too. Returns whether one of the others is.
    bool listenWhileNeeded() {
        const bool needed = otherPress && flags() != 0;
        if (std::exchange(listening, needed) == needed)
            return false;
        if (!needed) {
            std::erase_if(open, [](const auto& each) { return !each.second->stopListening(); });
            return false;
        }
        bool overlooked = false;
        for (const auto& [name, keyboard] : open)
            overlooked = keyboard->listen() || overlooked;
        // The chord may have been released meanwhile.
        return flags() == 0 ? listenWhileNeeded() : overlooked;
    }

    Devices devices;
    Handler handler;
    std::function<void()> otherPress;
    /// Whether the kernel delivers other keys.
    bool listening = false;
    std::unique_ptr<FolderWatch> folderWatch;
    std::map<std::string, std::shared_ptr<EvdevKeyboard>> open;
    platform::ModifierFlags lastFlags = 0;
};

EvdevModifierSource::EvdevModifierSource(Devices devices) : devices(std::move(devices)) {}

EvdevModifierSource::~EvdevModifierSource() = default;

Availability EvdevModifierSource::availability() const {
    const Listing listing = list(devices);
    bool refused = listing.refused;
    bool everyKey = false;
    for (const std::string& name : listing.names) {
        if (lacksHeldKeys(devices.descriptions, name))
            continue;
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
    return {false, translated("There is no keyboard in %1.", {devices.folder.string()}),
            translated("Connect a keyboard and start Kelo again.")};
}

bool EvdevModifierSource::start(Handler handler) {
    keyboards = std::make_shared<Keyboards>(devices, std::move(handler), otherPress);
    if (!keyboards->start())
        keyboards.reset();
    return keyboards != nullptr;
}

} // namespace kelo::input
