#pragma once

#include "EventBytes.h"

#include "linux/gobject/GObjectPointer.h"
#include "posix/FileDescriptor.h"

#include <umockdev.h>

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kelo {

/// What the kernel knows about one emulated input device. Read on a thread of the testbed.
struct EmulatedDevice {
    /// Key codes.
    std::vector<int> keys = {};
    std::vector<int> down = {};
    bool knowsMasks = true;
    /// The event codes that a reader has asked for, by event type.
    std::map<unsigned, std::vector<int>> masks = {};
    bool wasAskedWhatIsDown = false;
    /// What udev says; empty if it says nothing.
    std::string seat = {};
};

/// Emulated devices in /dev/input and /sys/class/input, for this process alone, which must run
/// under umockdev's preload library.
class EmulatedDevices {
public:
    EmulatedDevices();
    ~EmulatedDevices();
    EmulatedDevices(const EmulatedDevices&) = delete;
    EmulatedDevices& operator=(const EmulatedDevices&) = delete;

    /// Describes the device in /sys by its keys, too.
    void plug(const std::string& name, EmulatedDevice device);
    /// The kernel's end of the device closes, and its node goes.
    void unplug(const std::string& name);
    /// Sends bytes that a read of the device gives.
    bool type(const std::string& name, const EventBytes& bytes) const;
    void setDown(const std::string& name, std::vector<int> codes);
    /// Has udev say of a device which seat it belongs to, and that this is news.
    void assign(const std::string& name, const std::string& seat);
    /// As if nobody had asked the device what is down.
    void forgetWhatWasAsked(const std::string& name);
    EmulatedDevice device(const std::string& name) const;
    std::filesystem::path node(const std::string& name) const;

private:
    static gboolean answer(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self);
    gboolean answer(UMockdevIoctlClient* client);

    mutable std::mutex mutex;
    std::map<std::string, EmulatedDevice> devices;
    gobject::GObjectPointer<UMockdevTestbed> testbed;
    gobject::GObjectPointer<UMockdevIoctlBase> kernel;
};

} // namespace kelo
