#include "EmulatedDevices.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace kelo {

using gobject::GErrorPointer;
using gobject::GObjectPointer;
using gobject::GText;

namespace {

using Codes = std::vector<int>;

/// As the kernel lays them out on machines with the lowest byte first.
std::vector<guint8> bits(const Codes& codes, std::size_t size) {
    std::vector<guint8> all(size);
    for (const int code : codes)
        if (static_cast<std::size_t>(code) / 8 < size)
            all[static_cast<std::size_t>(code) / 8] |= static_cast<guint8>(1 << (code % 8));
    return all;
}

Codes codesOf(const std::vector<guint8>& bits) {
    Codes codes;
    for (std::size_t code = 0; code < 8 * bits.size(); ++code)
        if ((bits[code / 8] >> (code % 8) & 1) != 0)
            codes.push_back(static_cast<int>(code));
    return codes;
}

std::string description(const Codes& keys) {
    const auto all = bits(keys, 96);
    std::string words;
    for (std::size_t word = all.size() / 8; word-- > 0;) {
        unsigned long value = 0;
        std::memcpy(&value, all.data() + 8 * word, sizeof(value));
        char text[20];
        std::snprintf(text, sizeof(text), "%lx", value);
        words += (words.empty() ? "" : " ") + std::string(text);
    }
    return words;
}

/// Memory of the caller, from an address in what it gave.
UMockdevIoctlData* resolve(UMockdevIoctlData* data, std::size_t offset, std::size_t size) {
    GError* error = nullptr;
    auto* resolved = umockdev_ioctl_data_resolve(data, offset, size, &error);
    const GErrorPointer failure(error);
    return resolved;
}

std::vector<guint8> contents(UMockdevIoctlData* data) {
    guint8* bytes = nullptr;
    gint length = 0;
    umockdev_ioctl_data_retrieve(data, &bytes, &length);
    const std::unique_ptr<guint8, gobject::GFreeDeleter> owned(bytes);
    return {bytes, bytes + length};
}

struct DataDeleter {
    void operator()(UMockdevIoctlData* data) const { umockdev_ioctl_data_unref(data); }
};
using Data = std::unique_ptr<UMockdevIoctlData, DataDeleter>;

} // namespace

EmulatedDevices::EmulatedDevices()
    : testbed(GObjectPointer<UMockdevTestbed>::adopt(umockdev_testbed_new())),
      kernel(GObjectPointer<UMockdevIoctlBase>::adopt(umockdev_ioctl_base_new())) {
    gboolean (*const handler)(UMockdevIoctlBase*, UMockdevIoctlClient*, gpointer) = answer;
    g_signal_connect(kernel.get(), "handle-ioctl", G_CALLBACK(handler), this);
    std::filesystem::create_directories(node("").parent_path());
}

EmulatedDevices::~EmulatedDevices() {
    for (const auto& [name, device] : devices)
        umockdev_testbed_detach_ioctl(testbed.get(), ("/dev/input/" + name).c_str(), nullptr);
}

std::filesystem::path EmulatedDevices::node(const std::string& name) const {
    const GText root(umockdev_testbed_get_root_dir(testbed.get()));
    return std::filesystem::path(root.get()) / "dev" / "input" / name;
}

void EmulatedDevices::plug(const std::string& name, EmulatedDevice device) {
    const std::string parent = "/devices/input_of_" + name;
    const std::string text =
        "P: " + parent + "/" + name + "\nN: input/" + name +
        "\nE: SUBSYSTEM=input\nE: DEVNAME=/dev/input/" + name +
        (device.seat.empty() ? "" : "\nE: ID_SEAT=" + device.seat) +
        "\nL: device=..\n\nP: " + parent +
        "\nE: SUBSYSTEM=input\nA: capabilities/key=" + description(device.keys) + "\n";
    {
        const std::lock_guard lock(mutex);
        devices[name] = std::move(device);
    }
    GError* error = nullptr;
    umockdev_testbed_add_from_string(testbed.get(), text.c_str(), &error);
    if (!error)
        umockdev_testbed_attach_ioctl(testbed.get(), ("/dev/input/" + name).c_str(), kernel.get(),
                                      &error);
    if (const GErrorPointer failure(error); failure)
        g_error("cannot emulate %s: %s", name.c_str(), failure->message);
}

void EmulatedDevices::unplug(const std::string& name) {
    const std::string path = "/dev/input/" + name;
    // The testbed goes on to own the descriptor's number.
    const posix::FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    ::dup2(nothing.get(), umockdev_testbed_get_dev_fd(testbed.get(), path.c_str()));
    std::filesystem::remove(node(name));
}

bool EmulatedDevices::type(const std::string& name, const EventBytes& bytes) const {
    const int device = umockdev_testbed_get_dev_fd(testbed.get(), ("/dev/input/" + name).c_str());
    return ::write(device, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void EmulatedDevices::setDown(const std::string& name, Codes codes) {
    const std::lock_guard lock(mutex);
    devices.at(name).down = std::move(codes);
}

void EmulatedDevices::forgetWhatWasAsked(const std::string& name) {
    const std::lock_guard lock(mutex);
    devices.at(name).wasAskedWhatIsDown = false;
}

void EmulatedDevices::assign(const std::string& name, const std::string& seat) {
    const std::string path = "/sys/devices/input_of_" + name + "/" + name;
    umockdev_testbed_set_property(testbed.get(), path.c_str(), "ID_SEAT", seat.c_str());
    umockdev_testbed_uevent(testbed.get(), path.c_str(), "change");
}

EmulatedDevice EmulatedDevices::device(const std::string& name) const {
    const std::lock_guard lock(mutex);
    return devices.at(name);
}

gboolean EmulatedDevices::answer(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self) {
    return static_cast<EmulatedDevices*>(self)->answer(client);
}

gboolean EmulatedDevices::answer(UMockdevIoctlClient* client) {
    const std::lock_guard lock(mutex);
    const std::string path = umockdev_ioctl_client_get_devnode(client);
    EmulatedDevice& device = devices.at(path.substr(path.rfind('/') + 1));
    const auto request = umockdev_ioctl_client_get_request(client);
    const std::size_t size = _IOC_SIZE(request);
    const Data argument(resolve(umockdev_ioctl_client_get_arg(client), 0, size));
    const auto give = [&](const Codes& codes) {
        auto all = bits(codes, size);
        umockdev_ioctl_data_update(argument.get(), 0, all.data(), static_cast<gint>(size));
        umockdev_ioctl_client_complete(client, static_cast<glong>(size), 0);
    };
    if (request == EVIOCGBIT(EV_KEY, size)) {
        give(device.keys);
    } else if (request == EVIOCGKEY(size)) {
        device.wasAskedWhatIsDown = true;
        give(device.down);
    } else if (request == EVIOCSMASK && device.knowsMasks) {
        input_mask mask{};
        std::memcpy(&mask, contents(argument.get()).data(), sizeof(mask));
        const Data codes(resolve(argument.get(), offsetof(input_mask, codes_ptr), mask.codes_size));
        device.masks[mask.type] = codesOf(contents(codes.get()));
        umockdev_ioctl_client_complete(client, 0, 0);
    } else {
        umockdev_ioctl_client_complete(client, -1, EINVAL);
    }
    return TRUE;
}

} // namespace kelo
