#include "linux/downloads/DownloadList.h"

#include "base/Translation.h"

#include <glib.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace kelo::downloads {

DownloadList::DownloadList(FileHandling files) : files(std::move(files)) {}

std::size_t DownloadList::runningCount() const {
    return running.size();
}

void DownloadList::cancel(unsigned identifier) {
    const auto found = std::ranges::find(running, identifier, &Running::identifier);
    if (found == running.end())
        return;
    const auto stop = std::move(found->cancel);
    remove(identifier);
    stop();
    changed();
}

void DownloadList::cancelAll() {
    while (!running.empty())
        cancel(running.front().identifier);
}

void DownloadList::dismissEnded() {
    std::erase_if(downloads,
                  [](const Download& each) { return each.status != DownloadStatus::running; });
    changed();
}

void DownloadList::open(const std::string& path) {
    // Asked again, because another program may have replaced the file.
    if (isThere(path) && files.mayBeOpened(path))
        files.open(path);
}

void DownloadList::showInFolder(const std::string& path) {
    if (isThere(path))
        files.showInFolder(path);
}

// Other programs of the user can name any path.
bool DownloadList::isThere(const std::string& path) {
    if (!saved.contains(path)) {
        g_warning("A file was asked for that is no download of this program's");
        return false;
    }
    std::error_code unreadable;
    if (std::filesystem::exists(path, unreadable))
        return true;
    for (Download& each : downloads)
        if (each.path == path) {
            each.status = DownloadStatus::failed;
            each.sentence = translated("The file is no longer there. Download it again.");
        }
    changed();
    return false;
}

void DownloadList::addObserver(const std::shared_ptr<DownloadObserver>& observer) {
    std::erase_if(observers, [](const auto& each) { return each.expired(); });
    observers.emplace_back(observer);
}

unsigned DownloadList::begin(const std::string& name, std::function<void()> cancel) {
    const unsigned identifier = ++last;
    downloads.push_back({identifier, name});
    running.push_back({identifier, std::move(cancel)});
    changed();
    return identifier;
}

void DownloadList::progress(unsigned identifier, std::uint64_t received,
                            std::optional<std::uint64_t> length) {
    if (Download* const download = findRunning(identifier)) {
        download->received = received;
        // What arrives may be more than was announced, for instance when it was sent compressed.
        download->length = length && *length >= received ? length : std::nullopt;
    }
}

void DownloadList::finish(unsigned identifier, const std::string& path) {
    if (Download* const download = findRunning(identifier)) {
        download->path = path;
        download->name = std::filesystem::path(path).filename().string();
        download->mayBeOpened = files.mayBeOpened(path);
        saved.insert(path);
        end(*download, DownloadStatus::finished);
    }
}

void DownloadList::fail(unsigned identifier, const std::string& sentence) {
    if (Download* const download = findRunning(identifier)) {
        download->sentence = sentence;
        end(*download, DownloadStatus::failed);
    }
}

// A page may be refused any number of files. The last refusal stands for all.
void DownloadList::refuse(const std::string& name, const std::string& sentence) {
    std::erase_if(downloads, [&](const Download& each) {
        return each.status == DownloadStatus::failed && each.sentence == sentence;
    });
    fail(begin(name, [] {}), sentence);
}

void DownloadList::end(Download& download, DownloadStatus status) {
    download.status = status;
    std::erase_if(running,
                  [&](const Running& each) { return each.identifier == download.identifier; });
    const Download ended = download;
    changed();
    tell([&](DownloadObserver& observer) { observer.downloadEnded(ended); });
}

Download* DownloadList::find(unsigned identifier) {
    const auto found = std::ranges::find(downloads, identifier, &Download::identifier);
    return found == downloads.end() ? nullptr : &*found;
}

Download* DownloadList::findRunning(unsigned identifier) {
    const bool runs = std::ranges::find(running, identifier, &Running::identifier) != running.end();
    return runs ? find(identifier) : nullptr;
}

void DownloadList::remove(unsigned identifier) {
    std::erase_if(running, [&](const Running& each) { return each.identifier == identifier; });
    std::erase_if(downloads, [&](const Download& each) { return each.identifier == identifier; });
}

void DownloadList::changed() {
    tell([](DownloadObserver& observer) { observer.downloadsChanged(); });
}

template <typename Function>
void DownloadList::tell(Function function) {
    // An observer may come or go meanwhile.
    const auto told = observers;
    for (const auto& each : told)
        if (const auto observer = each.lock())
            function(*observer);
}

} // namespace kelo::downloads
