#include "KernelKeyboard.h"

#include "EventBytes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace kelo {

namespace {

std::string nodeIn(const std::filesystem::path& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename().string().starts_with("event"))
            return entry.path().filename();
    ADD_FAILURE() << folder << " has no node";
    return "";
}

} // namespace

KernelKeyboard::KernelKeyboard() : device(::open("/dev/uinput", O_WRONLY | O_CLOEXEC)) {
    uinput_setup setup{};
    std::snprintf(setup.name, sizeof(setup.name), "Kelo's test");
    setup.id.bustype = BUS_VIRTUAL;
    char name[64] = {};
    bool made = ioctl(device.get(), UI_SET_EVBIT, EV_KEY) >= 0;
    for (const int key : {KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT, KEY_RIGHTALT, KEY_F24})
        made = made && ioctl(device.get(), UI_SET_KEYBIT, key) >= 0;
    made = made && ioctl(device.get(), UI_DEV_SETUP, &setup) >= 0 &&
           ioctl(device.get(), UI_DEV_CREATE) >= 0 &&
           ioctl(device.get(), UI_GET_SYSNAME(sizeof(name)), name) >= 0;
    EXPECT_TRUE(made) << "the kernel makes no keyboard";
    if (made) {
        folder = std::filesystem::path("/sys/devices/virtual/input") / name;
        node = nodeIn(folder);
    }
}

bool KernelKeyboard::inhibit() const {
    std::ofstream file(folder / "inhibited");
    file << "1" << std::flush;
    return file.good();
}

void KernelKeyboard::type(int key, int value) const {
    const EventBytes bytes = record(EV_KEY, key, value) + report();
    EXPECT_EQ(::write(device.get(), bytes.data(), bytes.size()),
              static_cast<ssize_t>(bytes.size()));
}

} // namespace kelo
