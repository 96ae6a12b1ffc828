#pragma once

#include "updater/Journal.h"
#include "updater/UpdaterState.h"

#include <filesystem>

namespace kelo::updater {

/// The state in a file (0600, in a folder 0700) that changes wholly or not at all. A file that is
/// damaged, too long, not a plain one or somebody else's is passed over with a note in the journal,
/// and replaced by the next save.
class FileStateStore final : public UpdaterStateStore {
public:
    /// Folders above the file are made when the first state is saved.
    FileStateStore(std::filesystem::path file, Journal journal);

    UpdaterState load() override;
    void save(const UpdaterState& state) override;

private:
    std::filesystem::path file;
    Journal journal;
};

} // namespace kelo::updater
