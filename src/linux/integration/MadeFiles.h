#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace kelo::integration {

/// A file could not be written; what() is its path.
class WriteFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Nothing if there is no such file, or it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);
/// Replaces the file in one step, and makes the folders that it needs. Throws WriteFailure.
void writeFile(const std::filesystem::path& path, const std::string& content);

/// The files that the integration has made in one folder, recorded there with what was in them.
/// Paths are relative to the folder, and never lead out of it.
class MadeFiles {
public:
    using Contents = std::map<std::filesystem::path, std::string>;

    /// Reads the record. A record that cannot be read counts as none.
    explicit MadeFiles(std::filesystem::path folder);

    bool isEmpty() const { return digests.empty(); }
    /// What the files were made for, as write() was told; empty texts without a record.
    const std::string& program() const { return program_; }
    const std::string& build() const { return build_; }

    /// The first file among these that is there and was not made here, or was changed since; an
    /// empty path if there is none.
    std::filesystem::path foreignAmong(const Contents& contents) const;

    /// Writes these, and removes what was made before and is not among them. Stopped at any point,
    /// it leaves a record that names every file which is there. Throws WriteFailure.
    void write(const Contents& contents, std::string program, std::string build);

    /// Removes the files, the record, and the folders that were made for them. Returns the files
    /// that were changed since, which stay.
    std::vector<std::filesystem::path> removeAll();

private:
    void planFolders(const std::filesystem::path& file);
    void save() const;
    /// Whether it is gone or as it was made; else it stays.
    bool removeFile(const std::filesystem::path& file) const;
    bool isAsMade(const std::filesystem::path& file) const;

    std::filesystem::path folder;
    std::string program_;
    std::string build_;
    /// For each file the digests of what may be in it: two while it is replaced.
    std::map<std::filesystem::path, std::set<std::string>> digests;
    std::set<std::filesystem::path> folders;
};

} // namespace kelo::integration
