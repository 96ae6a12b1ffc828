#pragma once

#include "linux/input/evdev/EvdevDevices.h"
#include "linux/input/evdev/EvdevKeyboard.h"
#include "linux/input/evdev/FolderWatch.h"
#include "linux/input/source/ModifierSource.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace kelo::input {

/// The keyboards of this session's seat, and the modifiers that are down on all of them together.
/// None is open while another session has the screen. Keys that were pressed for somebody else,
/// before a keyboard became this session's, count only when they are pressed again. Main thread
/// only.
class WatchedKeyboards : public std::enable_shared_from_this<WatchedKeyboards> {
public:
    /// otherPress: may be empty. Each handler may destroy the object.
    WatchedKeyboards(EvdevDevices devices, ModifierSource::Handler handler,
                     std::function<void()> otherPress);

    /// Call it once. Returns false if no keyboard can be read. Nothing counts before the session is
    /// known, which nobody waits for.
    bool start();

private:
    /// Whether this session has its seat's keyboards.
    enum class Attention { unknown, away, here };

    void watchFolder();
    void appeared(const std::string& name);
    void permitted(const std::string& name);
    void vanished(const std::string& name);
    void ended(const std::string& name);
    void described(const std::string& name);
    void sessionChanged();
    void arrive(Attention before);

    void add(const std::string& name);
    void addAll();
    EvdevKeyboard::Handlers handlersFor(const std::string& name);
    bool isOfThisSeat(const std::string& name) const;
    platform::ModifierFlags flags() const;
    bool listenWhileNeeded();

    static void tell(const std::weak_ptr<WatchedKeyboards>& weak, bool otherPress);
    static void changed(const std::weak_ptr<WatchedKeyboards>& weak);
    static void dropPress(const std::weak_ptr<WatchedKeyboards>& weak);
    static void mayHaveLost(const std::weak_ptr<WatchedKeyboards>& weak);

    EvdevDevices devices;
    ModifierSource::Handler handler;
    std::function<void()> otherPress;
    /// Whether the kernel delivers other keys.
    bool listening = false;
    Attention attention = Attention::unknown;
    platform::ModifierFlags lastFlags = 0;
    std::map<std::string, std::shared_ptr<EvdevKeyboard>> open;
    /// Nodes that were there, but not this session's to read. What is down on them when they are
    /// opened was pressed for somebody else.
    std::set<std::string> usedElsewhere;
    std::unique_ptr<FolderWatch> folderWatch;
    std::unique_ptr<DeviceSeats> seats;
    std::unique_ptr<session::SeatSession> session;
};

} // namespace kelo::input
