#include "updater/install/InstallFailure.h"

#include <cerrno>
#include <system_error>

namespace kelo::updater {

namespace {

std::string named(const std::filesystem::path& folder) {
    return "“" + folder.string() + "”";
}

} // namespace

UpdateError unfitArchive(std::string cause) {
    return {
        UpdateErrorKind::installing,
        "The update is not packed as it should be, so it was not installed. Tell its publisher; "
        "your version goes on working.",
        std::move(cause)};
}

UpdateError installFailure(int error, const std::filesystem::path& folder, std::string cause) {
    cause += ": " + std::generic_category().message(error);
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return {UpdateErrorKind::storage,
                "There is not enough room on the disk for the update. Make some room, then try "
                "again.",
                std::move(cause)};
    case EACCES:
    case EPERM:
    case EROFS:
        return {UpdateErrorKind::installing,
                "The update cannot be written beside the folder " + named(folder) +
                    ". Move that folder to a place that you may change, then try again.",
                std::move(cause)};
    default:
        return {UpdateErrorKind::installing,
                "The update could not be put in place of the folder " + named(folder) +
                    ". Your version goes on working; try again, or unpack the new one by hand.",
                std::move(cause)};
    }
}

UpdateError folderChanged(const std::filesystem::path& folder) {
    return {UpdateErrorKind::installing,
            "The folder " + named(folder) +
                " was moved or exchanged while the update was being prepared. Start Kelo from "
                "where it is now, then check for updates again."};
}

UpdateError folderHoldsOtherFiles(const std::filesystem::path& folder, const std::string& file) {
    return {UpdateErrorKind::installing,
            "The folder " + named(folder) + " holds files that are not Kelo's, such as “" + file +
                "”. Move them elsewhere, then check for updates again."};
}

} // namespace kelo::updater
