#include "linux/input/evdev/WatchedKeyboards.h"

#include "linux/input/evdev/DeviceListing.h"
#include "linux/input/evdev/KeyCapabilities.h"

#include <utility>
#include <vector>

namespace kelo::input {

WatchedKeyboards::WatchedKeyboards(EvdevDevices devices, ModifierSource::Handler handler,
                                   std::function<void()> otherPress)
    : devices(std::move(devices)), handler(std::move(handler)), otherPress(std::move(otherPress)) {}

bool WatchedKeyboards::start() {
    watchFolder();
    if (!folderWatch)
        return false;
    const std::weak_ptr<WatchedKeyboards> weak = weak_from_this();
    seats = devices.seats([weak](const std::string& name) {
        if (const auto self = weak.lock(); self && isDeviceName(name))
            self->described(name);
        mayHaveLost(weak);
    });
    session = devices.session([weak] {
        if (const auto self = weak.lock())
            self->sessionChanged();
        mayHaveLost(weak);
    });
    addAll();
    const bool canRead = !open.empty();
    sessionChanged();
    return canRead;
}

void WatchedKeyboards::watchFolder() {
    const std::weak_ptr<WatchedKeyboards> weak = weak_from_this();
    const auto noticed = [weak](void (WatchedKeyboards::*action)(const std::string&)) {
        return [weak, action](const std::string& name) {
            if (const auto self = weak.lock(); self && isDeviceName(name))
                (self.get()->*action)(name);
            mayHaveLost(weak);
        };
    };
    folderWatch = FolderWatch::watch(devices.folder, {noticed(&WatchedKeyboards::appeared),
                                                      noticed(&WatchedKeyboards::permitted),
                                                      noticed(&WatchedKeyboards::vanished), [weak] {
                                                          if (const auto self = weak.lock())
                                                              self->addAll();
                                                          mayHaveLost(weak);
                                                      }});
}

void WatchedKeyboards::appeared(const std::string& name) {
    vanished(name);
    add(name);
}

void WatchedKeyboards::permitted(const std::string& name) {
    if (!open.contains(name))
        add(name);
}

void WatchedKeyboards::vanished(const std::string& name) {
    open.erase(name);
    usedElsewhere.erase(name);
}

// If its node stays, somebody has taken the device away, and may give it back.
void WatchedKeyboards::ended(const std::string& name) {
    open.erase(name);
    usedElsewhere.insert(name);
}

void WatchedKeyboards::described(const std::string& name) {
    if (!open.contains(name))
        add(name);
    else if (attention == Attention::here && !isOfThisSeat(name))
        ended(name);
}

void WatchedKeyboards::sessionChanged() {
    const Attention now = !session->isCertain()  ? Attention::unknown
                          : !session->isActive() ? Attention::away
                                                 : Attention::here;
    const Attention before = std::exchange(attention, now);
    if (now == Attention::away)
        open.clear();
    else if (now == Attention::here && before != now)
        arrive(before);
}

void WatchedKeyboards::arrive(Attention before) {
    if (before == Attention::away) {
        for (const std::string& name : listDevices(devices.folder).names)
            usedElsewhere.insert(name);
        return addAll();
    }
    // Until now, nobody could tell which of the open keyboards are this session's.
    std::erase_if(open, [this](const auto& each) {
        const bool isForeign = !isOfThisSeat(each.first);
        if (isForeign)
            usedElsewhere.insert(each.first);
        return isForeign;
    });
    // What is down at the start counts, but it is no news.
    lastFlags = flags();
}

void WatchedKeyboards::add(const std::string& name) {
    if (attention == Attention::away || lacksHeldKeys(devices.descriptions, name))
        return;
    if (attention == Attention::here && !isOfThisSeat(name)) {
        usedElsewhere.insert(name);
        return;
    }
    auto device = devices.open(devices.folder / name);
    if (!device || EvdevKeyboard::admit(*device) != EvdevKeyboard::Refusal::none)
        return;
    const auto keyboard = EvdevKeyboard::watch(std::move(device), handlersFor(name));
    if (usedElsewhere.erase(name) > 0)
        keyboard->disregardHeld();
    if (listening)
        keyboard->listen();
    open[name] = keyboard;
}

void WatchedKeyboards::addAll() {
    for (const std::string& name : listDevices(devices.folder).names)
        if (!open.contains(name))
            add(name);
}

EvdevKeyboard::Handlers WatchedKeyboards::handlersFor(const std::string& name) {
    const std::weak_ptr<WatchedKeyboards> weak = weak_from_this();
    return {[weak](EvdevKeyboard& keyboard, const std::vector<KeyReport>& reports) {
                for (const KeyReport& report : reports) {
                    keyboard.update(report.held);
                    if (report.byKernel)
                        dropPress(weak);
                    tell(weak, report.otherPress);
                }
                changed(weak);
            },
            [weak, name](EvdevKeyboard&) {
                if (const auto self = weak.lock())
                    self->ended(name);
                mayHaveLost(weak);
            }};
}

bool WatchedKeyboards::isOfThisSeat(const std::string& name) const {
    return seats->seatOf(name) == session->seat();
}

platform::ModifierFlags WatchedKeyboards::flags() const {
    platform::ModifierFlags all = 0;
    if (attention == Attention::here)
        for (const auto& [name, keyboard] : open)
            all |= keyboard->flags();
    return all;
}

void WatchedKeyboards::tell(const std::weak_ptr<WatchedKeyboards>& weak, bool otherPress) {
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
void WatchedKeyboards::changed(const std::weak_ptr<WatchedKeyboards>& weak) {
    bool overlooked = false;
    if (const auto self = weak.lock())
        overlooked = self->listenWhileNeeded();
    tell(weak, overlooked);
}

// Nobody has released what was down on a keyboard that is gone. A press must not end by that as it
// ends by a release: it would count as a tap.
void WatchedKeyboards::dropPress(const std::weak_ptr<WatchedKeyboards>& weak) {
    if (const auto self = weak.lock();
        self && self->otherPress && (self->lastFlags & ~self->flags()) != 0)
        self->otherPress();
}

void WatchedKeyboards::mayHaveLost(const std::weak_ptr<WatchedKeyboards>& weak) {
    dropPress(weak);
    changed(weak);
}

// What is typed without these keys is nobody's business here. A keyboard's macro key sends a
// whole shortcut at once, and its last key may have gone down before the mask was opened. So
// the keys that are down are looked at, too. Returns whether one of the others is.
bool WatchedKeyboards::listenWhileNeeded() {
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

} // namespace kelo::input
