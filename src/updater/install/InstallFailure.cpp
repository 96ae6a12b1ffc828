#include "updater/install/InstallFailure.h"

#include <cerrno>
#include <system_error>

namespace kelo::updater {

namespace {

std::string named(const std::filesystem::path& folder) {
    return "“" + folder.string() + "”";
}

UpdateError noRoom(std::string cause) {
    return {UpdateErrorKind::storage,
            "There is not enough room on the disk for the update. Make some room, then try again.",
            std::move(cause)};
}

bool isFull(int error) {
    return error == ENOSPC || error == EDQUOT;
}

void addReason(std::string& cause, int error) {
    cause += ": " + std::generic_category().message(error);
}

} // namespace

UpdateError unfitArchive(std::string cause) {
    return {UpdateErrorKind::installing,
            "The update is not packed correctly, so it was not installed. Tell its publisher; your "
            "version keeps working.",
            std::move(cause)};
}

UpdateError unpackFailure(int error, std::string cause) {
    addReason(cause, error);
    if (isFull(error))
        return noRoom(std::move(cause));
    return {UpdateErrorKind::installing,
            "The update could not be unpacked. Your version keeps working; try again, or unpack "
            "the new one by hand.",
            std::move(cause)};
}

UpdateError installFailure(int error, const std::filesystem::path& folder, std::string cause) {
    addReason(cause, error);
    if (isFull(error))
        return noRoom(std::move(cause));
    switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
        return {UpdateErrorKind::installing,
                "The update cannot be written beside the folder " + named(folder) +
                    ". Move that folder to a place where you may write, then try again.",
                std::move(cause)};
    default:
        return {UpdateErrorKind::installing,
                "The update could not be put in place of the folder " + named(folder) +
                    ". Your version keeps working; try again, or unpack the new one by hand.",
                std::move(cause)};
    }
}

UpdateError folderChanged(const std::filesystem::path& folder) {
    return {UpdateErrorKind::installing,
            "The folder " + named(folder) +
                " was moved or replaced while the update was being prepared. Start Kelo from "
                "its new place, then check for updates again."};
}

UpdateError folderHoldsOtherFiles(const std::filesystem::path& folder, const std::string& file) {
    return {UpdateErrorKind::installing,
            "The folder " + named(folder) + " contains files that are not Kelo's, such as “" +
                file + "”. Move them elsewhere, then check for updates again."};
}

} // namespace kelo::updater
