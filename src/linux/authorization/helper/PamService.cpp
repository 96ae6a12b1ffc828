#include "linux/authorization/helper/PamService.h"

#include "posix/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace kelo::authorization {

namespace {

constexpr const char* serviceName = "kelo";

bool isThere(const std::filesystem::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

} // namespace

PamService::PamService(std::filesystem::path folder, bool isSystems)
    : folder(std::move(folder)), isSystems(isSystems) {}

std::optional<PamService> PamService::find() {
    // The system's comes first: an administrator who writes one means every copy of Kelo.
    for (const char* folder : {"/etc/pam.d", "/usr/lib/pam.d"}) {
        if (isThere(std::filesystem::path(folder) / serviceName))
            return PamService(folder, true);
    }
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto own = program.parent_path() / "pam.d";
    if (!failure && isThere(own / serviceName))
        return PamService(own, false);
    return std::nullopt;
}

int PamService::start(const std::string& user, const pam_conv& conversation,
                      pam_handle_t*& handle) const {
    if (!isReadable())
        return PAM_ABORT;
    const int result = isSystems ? pam_start(serviceName, user.c_str(), &conversation, &handle)
                                 : pam_start_confdir(serviceName, user.c_str(), &conversation,
                                                     folder.c_str(), &handle);
    // PAM has read the file by now. If it is still there, it was there all the time.
    if (result == PAM_SUCCESS && !isReadable()) {
        pam_end(std::exchange(handle, nullptr), PAM_ABORT);
        return PAM_ABORT;
    }
    return result;
}

/// Opens the file as PAM will, because only that shows whether PAM can.
bool PamService::isReadable() const {
    const posix::FileDescriptor file(
        ::open((folder / serviceName).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    return file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_size > 0;
}

} // namespace kelo::authorization
