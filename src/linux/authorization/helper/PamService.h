#pragma once

#include <security/pam_appl.h>

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::authorization {

/// The PAM service "kelo": a file with that name in PAM's own folders, else in the folder "pam.d"
/// beside this program, which a build tree and an unpacked tree bring along.
///
/// PAM takes its service "other" for one that it does not find or cannot read. What that allows was
/// not decided for Kelo, so PAM is never asked for a service without a file. (/etc/pam.conf is not
/// looked at. PAM reads it only on systems without either of its folders.)
class PamService {
public:
    /// The first file there is, whether or not it can be used. Nothing if there is none.
    static std::optional<PamService> find();

    /// As pam_start(). PAM_ABORT, and no handle, if the file cannot be read or is empty.
    int start(const std::string& user, const pam_conv& conversation, pam_handle_t*& handle) const;

private:
    PamService(std::filesystem::path folder, bool isSystems);
    bool isReadable() const;

    std::filesystem::path folder;
    /// Whether the folder is one of those that PAM looks into by itself.
    bool isSystems;
};

} // namespace kelo::authorization
