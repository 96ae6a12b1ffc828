#include "updater/files/InstallFailure.h"

#include "base/Translation.h"

#include <cerrno>
#include <system_error>

namespace kelo::updater {

namespace {

UpdateError noRoom(std::string cause) {
    return {
        UpdateErrorKind::storage,
        translated(
            "There is not enough room on the disk for the update. Make some room, then try again."),
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
    return {
        UpdateErrorKind::installing,
        translated(
            "The update is not packed correctly, so it was not installed. Tell its publisher; your "
            "version keeps working."),
        std::move(cause)};
}

UpdateError unpackFailure(int error, std::string cause) {
    addReason(cause, error);
    if (isFull(error))
        return noRoom(std::move(cause));
    return {
        UpdateErrorKind::installing,
        translated(
            "The update could not be unpacked. Your version keeps working; try again, or unpack "
            "the new one by hand."),
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
                translated("The update cannot be written beside the folder “%1”. Move that folder "
                           "to a place where you may write, then try again.",
                           {folder.string()}),
                std::move(cause)};
    default:
        return {UpdateErrorKind::installing,
                translated("The update could not be put in place of the folder “%1”. Your version "
                           "keeps working; try again, or unpack the new one by hand.",
                           {folder.string()}),
                std::move(cause)};
    }
}

UpdateError folderChanged(const std::filesystem::path& folder) {
    return {UpdateErrorKind::installing,
            translated("The folder “%1” was moved or replaced while the update was being prepared. "
                       "Start Kelo from its new place, then check for updates again.",
                       {folder.string()})};
}

UpdateError folderHoldsOtherFiles(const std::filesystem::path& folder, const std::string& file) {
    return {UpdateErrorKind::installing,
            translated("The folder “%1” contains files that are not Kelo's, such as “%2”. Move "
                       "them elsewhere, then check for updates again.",
                       {folder.string(), file})};
}

} // namespace kelo::updater
