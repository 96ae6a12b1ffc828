#include "linux/integration/MadeFiles.h"

#include "linux/gobject/GObjectPointer.h"

#include <glib.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <ranges>
#include <system_error>
#include <utility>

namespace kelo::integration {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::json;

constexpr const char* recordName = "kelo/integration.json";

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

std::string digestOf(const std::string& content) {
    const Text digest(g_compute_checksum_for_string(G_CHECKSUM_SHA256, content.data(),
                                                    static_cast<gssize>(content.size())));
    return digest.get();
}

/// Whatever the record says, nothing outside of the folder is touched.
bool staysInside(const fs::path& path) {
    return !path.empty() && path.is_relative() && std::ranges::find(path, "..") == path.end();
}

} // namespace

std::optional<std::string> readFile(const fs::path& path) {
    char* content = nullptr;
    gsize length = 0;
    if (!g_file_get_contents(path.c_str(), &content, &length, nullptr))
        return std::nullopt;
    const Text owned(content);
    return std::string(content, length);
}

void writeFile(const fs::path& path, const std::string& content) {
    constexpr int onlyForUser = 0700;
    constexpr int readable = 0644;
    g_mkdir_with_parents(path.parent_path().c_str(), onlyForUser);
    GError* failure = nullptr;
    g_file_set_contents_full(path.c_str(), content.data(), static_cast<gssize>(content.size()),
                             G_FILE_SET_CONTENTS_CONSISTENT, readable, &failure);
    const gobject::GErrorPointer owned(failure);
    if (owned) {
        g_warning("%s", owned->message);
        throw WriteFailure(path.string());
    }
}

MadeFiles::MadeFiles(fs::path folder) : folder(std::move(folder)) {
    const Json record =
        Json::parse(readFile(this->folder / recordName).value_or(""), nullptr, false);
    try {
        if (!record.is_object())
            return;
        program_ = record.at("program").get<std::string>();
        build_ = record.at("build").get<std::string>();
        for (const auto& [file, known] : record.at("files").items())
            if (staysInside(file))
                digests[file] = known.get<std::set<std::string>>();
        for (const auto& made : record.at("folders").get<std::set<std::string>>())
            if (staysInside(made))
                folders.insert(made);
    } catch (const Json::exception&) {
        program_.clear();
        build_.clear();
        digests.clear();
        folders.clear();
    }
}

bool MadeFiles::isAsMade(const fs::path& file) const {
    const auto known = digests.find(file);
    const auto content = readFile(folder / file);
    return known != digests.end() && content && known->second.contains(digestOf(*content));
}

fs::path MadeFiles::foreignAmong(const Contents& contents) const {
    for (const auto& [file, content] : contents) {
        std::error_code ignored;
        const bool isThere = fs::exists(fs::symlink_status(folder / file, ignored));
        if (isThere && !isAsMade(file))
            return folder / file;
    }
    return {};
}

void MadeFiles::write(const Contents& contents, std::string program, std::string build) {
    planFolders(recordName);
    for (const auto& [file, content] : contents) {
        planFolders(file);
        digests[file].insert(digestOf(content));
    }
    save();
    for (const auto& [file, content] : contents)
        writeFile(folder / file, content);
    for (auto entry = digests.begin(); entry != digests.end();) {
        const auto written = contents.find(entry->first);
        if (written != contents.end())
            entry->second = {digestOf(written->second)};
        entry = written == contents.end() && removeFile(entry->first) ? digests.erase(entry)
                                                                      : std::next(entry);
    }
    program_ = std::move(program);
    build_ = std::move(build);
    save();
}

std::vector<fs::path> MadeFiles::removeAll() {
    std::vector<fs::path> kept;
    for (const auto& [file, known] : digests)
        if (!removeFile(file))
            kept.push_back(folder / file);
    std::error_code ignored;
    fs::remove(folder / recordName, ignored);
    // In their order a folder comes before what is in it.
    for (const auto& made : std::views::reverse(folders))
        fs::remove(folder / made, ignored);
    digests.clear();
    folders.clear();
    return kept;
}

void MadeFiles::planFolders(const fs::path& file) {
    std::error_code ignored;
    for (auto parent = file.parent_path(); !parent.empty(); parent = parent.parent_path())
        if (!fs::exists(folder / parent, ignored))
            folders.insert(parent);
}

void MadeFiles::save() const {
    Json record{{"program", program_}, {"build", build_}, {"files", Json::object()}};
    for (const auto& [file, known] : digests)
        record["files"][file.string()] = known;
    record["folders"] = Json::array();
    for (const auto& made : folders)
        record["folders"].push_back(made.string());
    writeFile(folder / recordName,
              record.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
}

bool MadeFiles::removeFile(const fs::path& file) const {
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(folder / file, ignored)))
        return true;
    return isAsMade(file) && fs::remove(folder / file, ignored);
}

} // namespace kelo::integration
