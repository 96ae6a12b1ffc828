#include "authenticator/store/CredentialStore.h"
#include "component/installer/Trees.h"
#include "scale/Works.h"
#include "unit/authenticator/Records.h"
#include "unit/updater/Feed.h"
#include "updater/UpdateSelection.h"
#include "updater/install/ArchiveReader.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

namespace kelo::bench {

namespace {

namespace fs = std::filesystem;

updater::SelectionRules rules() {
    updater::SelectionRules made;
    made.installedVersion = "1.0";
    made.system = {"linux", "x86_64", "2.36"};
    made.now = std::chrono::sys_days(std::chrono::year(2026) / 11 / 21);
    made.kind = updater::CheckKind::userInitiated;
    return made;
}

std::string feedWith(std::size_t items) {
    std::string text;
    for (std::size_t item = 0; item < items; ++item)
        text += test::release("1." + std::to_string(item));
    return test::feedOf(text);
}

void packFiles(const fs::path& archive, std::size_t files) {
    constexpr std::size_t perFolder = 250;
    std::vector<tests::TarEntry> entries;
    for (std::size_t file = 0; file < files; ++file)
        entries.push_back(
            {.path = "kelo/share/" + std::to_string(file / perFolder) + "/" + std::to_string(file),
             .content = "content of " + std::to_string(file)});
    tests::writeArchive(archive, entries);
}

} // namespace

std::vector<GrowthSeries> passkeyGrowth(const fs::path& folder) {
    GrowthSeries finding{"passkeys: find those of the service", "records", {}};
    GrowthSeries saving{"passkeys: save one and remove it", "records", {}};
    const authenticator::CredentialStore store(folder / "passkeys.sqlite");
    std::size_t kept = 0;
    for (const std::size_t size : {20U, 50U, 100U, 200U, 500U}) {
        for (; kept < size; ++kept)
            store.save(
                acceptedRecord("key " + std::to_string(kept), "user " + std::to_string(kept)));
        const auto cost = static_cast<double>(size);
        finding.points.push_back({cost, costOf([&] {
                                      if (store.find("localhost").size() != size)
                                          throw std::runtime_error("The store lost records.");
                                  })});
        saving.points.push_back({cost, costOf([&] {
                                     store.save(record("one more", "one more"));
                                     store.remove(bytesOf("one more"));
                                 })});
    }
    return {finding, saving};
}

std::vector<GrowthSeries> feedGrowth() {
    GrowthSeries reading{"feed: read it", "items", {}};
    GrowthSeries choosing{"feed: choose an update", "items", {}};
    for (const std::size_t size : {625U, 1250U, 2500U, 5000U, 10000U}) {
        const Bytes bytes = bytesOf(feedWith(size));
        const auto feed = updater::parseAppcast(bytes);
        if (feed.items.size() != size)
            throw std::runtime_error("The feed was not read whole.");
        const auto given = rules();
        const auto items = static_cast<double>(size);
        reading.points.push_back({items, costOf([&] { updater::parseAppcast(bytes); })});
        choosing.points.push_back({items, costOf([&] {
                                       if (!selectUpdate(feed, given).update)
                                           throw std::runtime_error("No update was chosen.");
                                   })});
    }
    return {reading, choosing};
}

std::vector<GrowthSeries> archiveGrowth() {
    // The limit of real updates is 20,000 entries.
    constexpr updater::ArchiveLimits limits{.entries = 100000};
    GrowthSeries unpacking{"update: unpack it", "files", {}};
    for (const std::size_t size : {3125U, 6250U, 12500U, 25000U, 50000U}) {
        const tests::TreeFolder folder;
        const fs::path packed = folder / "kelo.tar.zst";
        packFiles(packed, size);
        const auto archive = tests::openForReading(packed);
        const fs::path target = folder / "target";
        const auto unpack = [&] {
            const posix::FileDescriptor place(
                ::open(target.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            updater::unpackArchive(archive.get(), place.get(), limits);
        };
        // Removing the former tree does not count.
        std::array<double, 3> times{};
        for (double& time : times) {
            fs::remove_all(target);
            fs::create_directory(target);
            const auto before = std::chrono::steady_clock::now();
            unpack();
            time =
                std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before)
                    .count();
        }
        std::sort(times.begin(), times.end());
        unpacking.points.push_back({static_cast<double>(size), times[1]});
    }
    return {unpacking};
}

} // namespace kelo::bench
