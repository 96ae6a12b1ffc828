#include "e2e/ProgramFixture.h"

#include "linux/window/ToolkitVersion.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace kelo::e2e {

rig::PrivateDesktop& ProgramFixture::desktop() {
    static rig::PrivateDesktop ours;
    return ours;
}

std::filesystem::path ProgramFixture::build() {
    // The test program lies in the build's folder "tests".
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
}

ProgramFixture::ProgramFixture() : user(desktop()) {}

ProgramFixture::~ProgramFixture() = default;

void ProgramFixture::SetUp() {
    startService();
    startKelo();
    user.awaitLoginPage();
}

void ProgramFixture::TearDown() {
    picture(HasFailure() ? "FAILED" : "end");
    if (HasFailure() && kelo)
        std::cerr << "Kelo printed:\n" << kelo->printed() << "\n";
    if (HasFailure() && service)
        std::cerr << "The service printed:\n" << service->printed() << "\n";
    endKelo();
    service.reset();
}

void ProgramFixture::startService() {
    service.reset();
    service = std::make_unique<rig::DemoService>(build(), authority, folder.path() / "service.log",
                                                 serviceState, serviceOptions);
}

void ProgramFixture::startKelo() {
    kelo = std::make_unique<rig::KeloProcess>(programs, userFolder, folder.path() / "kelo.log",
                                              std::vector<std::string>(), environment);
}

void ProgramFixture::endKelo() {
    kelo.reset();
    // Its web processes go a moment later; the next test must not find their pages.
    desktop().tree.awaitThat("the pages of the ended Kelo are gone",
                             [] { return desktop().bus.pages().empty(); });
}

void ProgramFixture::registerPerson(const Person& person) const {
    user.chooseRegister();
    user.answerPrompt(person.password);
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(registered);
    user.closeAlert();
}

void ProgramFixture::becomeOwnerOfPasskey(const Person& person) const {
    user.signInWithPassword(person.email, person.password);
    user.awaitSignedIn(person.firstName);
    registerPerson(person);
    user.signOut();
}

void ProgramFixture::picture(const std::string& moment) const {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    const char* manager = std::getenv("KELO_PRIVATE_DESKTOP_MANAGER");
    desktop().screen.capture(build() / "e2e" / (manager ? manager : "openbox") /
                             (std::string(test->name()) + "-" + moment + ".png"));
}

void ProgramFixture::look(const std::string& moment) const {
    picture(moment);
    EXPECT_THAT(desktop().tree.badlyNamed(), testing::IsEmpty()) << moment;
}

void ProgramFixture::awaitAnnounced(const std::string& sentence) const {
    if (!window::canAnnounce)
        return;
    desktop().tree.awaitThat("\"" + sentence + "\" is announced", [&] {
        const auto& all = desktop().bus.announcements();
        return std::find(all.begin() + static_cast<std::ptrdiff_t>(announcedBefore), all.end(),
                         sentence) != all.end();
    });
}

} // namespace kelo::e2e
