#include "component/webkit/FakeSettingsManager.h"

#include <X11/Xlib.h>

#include <bit>
#include <cstdint>

namespace kelo::test {

namespace {

constexpr std::size_t alignment = 4;

/// Numbers are in this machine's order of bytes, which the first byte tells.
template <typename Number>
void append(std::string& bytes, Number number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::string encoded(const FakeSettingsManager::Values& values, std::uint32_t serial) {
    std::string bytes;
    append<std::uint32_t>(bytes, std::endian::native == std::endian::little ? LSBFirst : MSBFirst);
    append<std::uint32_t>(bytes, serial);
    append<std::uint32_t>(bytes, static_cast<std::uint32_t>(values.size()));
    for (const auto& [name, value] : values) {
        append<std::uint16_t>(bytes, 0); // the type: a number
        append<std::uint16_t>(bytes, static_cast<std::uint16_t>(name.size()));
        bytes += name;
        bytes.append((alignment - name.size() % alignment) % alignment, '\0');
        append<std::uint32_t>(bytes, serial);
        append<std::int32_t>(bytes, value);
    }
    return bytes;
}

} // namespace

FakeSettingsManager::FakeSettingsManager(const Values& values)
    : window(XCreateSimpleWindow(connection.display(), connection.root(), -1, -1, 1, 1, 0, 0, 0)) {
    change(values);
    XSetSelectionOwner(connection.display(), connection.atom("_XSETTINGS_S0"), window, CurrentTime);
    announce();
}

FakeSettingsManager::~FakeSettingsManager() {
    XDestroyWindow(connection.display(), window);
    connection.sync();
}

void FakeSettingsManager::change(const Values& values) {
    const auto name = connection.atom("_XSETTINGS_SETTINGS");
    const std::string bytes = encoded(values, ++changes);
    XChangeProperty(connection.display(), window, name, name, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()));
    connection.sync();
}

void FakeSettingsManager::announce() const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = connection.root();
    event.xclient.message_type = connection.atom("MANAGER");
    event.xclient.format = 32;
    event.xclient.data.l[0] = CurrentTime;
    event.xclient.data.l[1] = static_cast<long>(connection.atom("_XSETTINGS_S0"));
    event.xclient.data.l[2] = static_cast<long>(window);
    XSendEvent(connection.display(), connection.root(), False, StructureNotifyMask, &event);
    connection.sync();
}

} // namespace kelo::test
