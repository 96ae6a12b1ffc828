#pragma once

#include "updater/archive/UpdateInstaller.h"

#include <unistd.h>

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

class FakeInstaller final : public updater::UpdateInstaller {
public:
    updater::InstallKind kind(const updater::AppcastItem& item) const override {
        return item.enclosure->url.path().ends_with(takes)
                   ? supportedKind
                   : updater::InstallKind::informationalOnly;
    }

    std::string obstacle() const override { return inTheWay; }

    Task<void> prepare(updater::VerifiedArchive archive) override {
        std::string bytes(archive.size() + 1, '\0');
        const ssize_t count = pread(archive.descriptor(), bytes.data(), bytes.size(), 0);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        prepared.push_back(bytes);
        preparedName = archive.fileName();
        if (failure)
            std::rethrow_exception(failure);
        kept.emplace(std::move(archive));
        co_return;
    }

    Task<void> installAndRelaunch() override {
        ++installations;
        co_return;
    }

    updater::InstallKind supportedKind = updater::InstallKind::replaceInPlace;
    /// Archives with another extension cannot be installed.
    std::string takes;
    /// The bytes of each prepared archive.
    std::vector<std::string> prepared;
    std::string preparedName;
    std::string inTheWay;
    int installations = 0;
    std::exception_ptr failure;
    std::optional<updater::VerifiedArchive> kept;
};

} // namespace kelo::test
