#pragma once

#include "testing/TemporaryFolder.h"
#include "testing/rig/DemoService.h"
#include "testing/rig/KeloProcess.h"
#include "testing/rig/User.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelo::e2e {

struct Person {
    std::string email;
    std::string password;
    std::string firstName;
};

inline const Person ada{"ada@example.org", "analytical engine", "Ada"};
inline const Person grace{"grace@example.org", "nanosecond", "Grace"};

inline constexpr const char* registered = "Passkey registered on this Mac.";

/// A service and a Kelo for one test, both with empty storage. At the end of the test, takes a
/// picture of the screen: e2e/WINDOW MANAGER/TEST.png in the build folder.
class ProgramFixture : public testing::Test {
protected:
    ProgramFixture();
    ~ProgramFixture() override;

    void SetUp() override;
    void TearDown() override;

    void startService();
    void startKelo();
    void endKelo();

    void registerPerson(const Person& person) const;
    /// Signs in with the password, registers a passkey and signs out again.
    void becomeOwnerOfPasskey(const Person& person) const;

    /// Takes another picture, named after the test and the moment.
    void picture(const std::string& moment) const;
    /// Takes a picture, and expects that a screen reader can name everything that is shown.
    void look(const std::string& moment) const;
    /// Waits until a screen reader was asked to say the sentence, if the toolkit can.
    void awaitAnnounced(const std::string& sentence) const;

    static rig::PrivateDesktop& desktop();
    static std::filesystem::path build();

    const rig::User user;
    const test::TemporaryFolder folder;
    std::filesystem::path authority = build() / "demo-authority";
    /// What the service keeps from one start to the next; nothing, unless a file is named.
    std::filesystem::path serviceState;
    /// More of the service's command line.
    std::vector<std::string> serviceOptions;
    /// Where Kelo stores what it keeps.
    std::filesystem::path userFolder = folder.path();
    /// Where the programs are that Kelo is started from.
    std::filesystem::path programs = build();
    /// Added to Kelo's.
    std::map<std::string, std::string> environment;
    std::unique_ptr<rig::DemoService> service;
    std::unique_ptr<rig::KeloProcess> kelo;

private:
    const std::size_t announcedBefore = desktop().bus.announcements().size();
};

} // namespace kelo::e2e
