#include "linux/input/evdev/FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace kelo::input {

namespace {

struct Notice {
    std::uint32_t kind;
    std::string name;
};

std::vector<Notice> readNotices(int descriptor) {
    std::array<char, 4096> bytes;
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    std::vector<Notice> notices;
    std::size_t place = 0;
    while (count > 0 && place + sizeof(inotify_event) <= static_cast<std::size_t>(count)) {
        inotify_event event{};
        std::memcpy(&event, bytes.data() + place, sizeof(event));
        place += sizeof(event);
        // The name is padded with zeros.
        const std::size_t length = strnlen(bytes.data() + place, event.len);
        notices.push_back({event.mask, std::string(bytes.data() + place, length)});
        place += event.len;
    }
    return notices;
}

} // namespace

std::unique_ptr<FolderWatch> FolderWatch::watch(const std::filesystem::path& folder,
                                                Handlers handlers) {
    posix::FileDescriptor notices(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    constexpr std::uint32_t kinds =
        IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE | IN_MOVED_FROM | IN_ONLYDIR;
    if (!notices || inotify_add_watch(notices.get(), folder.c_str(), kinds) < 0)
        return nullptr;
    return std::make_unique<FolderWatch>(std::move(notices), std::move(handlers));
}

FolderWatch::FolderWatch(posix::FileDescriptor opened, Handlers handlers)
    : notices(std::move(opened)), handlers(std::make_shared<const Handlers>(std::move(handlers))) {
    readable.emplace(notices.get(), [this] { read(); });
}

void FolderWatch::read() {
    // A copy, because a handler may destroy this object.
    const auto told = handlers;
    for (const Notice& notice : readNotices(notices.get())) {
        if ((notice.kind & IN_Q_OVERFLOW) != 0 || notice.name.empty())
            told->unsure();
        else if ((notice.kind & (IN_CREATE | IN_MOVED_TO)) != 0)
            told->appeared(notice.name);
        else if ((notice.kind & IN_ATTRIB) != 0)
            told->permitted(notice.name);
        else if ((notice.kind & (IN_DELETE | IN_MOVED_FROM)) != 0)
            told->vanished(notice.name);
    }
}

} // namespace kelo::input
