// The disk with the user's data is full, or may not be written to.
#include "faults/FaultFixture.h"

#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

namespace kelo::faults {

namespace {

namespace fs = std::filesystem;

class StorageFaults : public FaultFixture {
protected:
    /// The user's data lie on a disk of their own.
    void SetUp() override {
        userFolder = folder.path() / "user";
        fs::create_directories(userFolder);
        if (::mount("tmpfs", userFolder.c_str(), "tmpfs", 0, "size=64m") != 0)
            GTEST_SKIP() << "Only root may mount a disk here: " << std::strerror(errno);
        mounted = true;
        FaultFixture::SetUp();
    }
    void TearDown() override {
        if (!mounted)
            return;
        FaultFixture::TearDown();
        ::umount2(userFolder.c_str(), MNT_DETACH);
    }

    void fillDisk() const {
        std::ofstream file(userFolder / "ballast", std::ios::binary | std::ios::app);
        for (std::size_t block = 1 << 20; block > 0; block /= 2) {
            const std::vector<char> zeros(block);
            while (file.write(zeros.data(), static_cast<std::streamsize>(block)) && file.flush()) {
            }
            file.clear();
        }
    }
    void freeDisk() const { fs::remove(userFolder / "ballast"); }

    /// Waits until nobody has a file open for writing, as the engine's processes do for a moment.
    void remount(unsigned long flags) const {
        desktop().tree.awaitThat("the disk is mounted in another way", [&] {
            return ::mount(nullptr, userFolder.c_str(), nullptr, MS_REMOUNT | flags, nullptr) == 0;
        });
    }

private:
    bool mounted = false;
};

} // namespace

TEST_F(StorageFaults, AFullDiskIsSaidAtTheRegistration) {
    signInAndRegister();
    fillDisk();
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(
        "There is no room left on the disk for your passkeys. Free some space and try again.");
    user.closeAlert();
    freeDisk();
    registerPerson(e2e::ada);
    expectNothingIsLost();
}

TEST_F(StorageFaults, AFullDiskLetsTheUserSignIn) {
    fillDisk();
    signIn();
    user.signOut();
    freeDisk();
    expectNothingIsLost();
}

TEST_F(StorageFaults, AFullDiskLetsKeloStart) {
    endKelo();
    fillDisk();
    startKelo();
    comeToTheLoginPage();
    signIn();
    freeDisk();
    expectNothingIsLost();
}

TEST_F(StorageFaults, AHomeThatMayNotBeWrittenToIsSaidAtTheRegistration) {
    signIn();
    endKelo();
    killKeyring();
    remount(MS_RDONLY);
    startKeyring();
    startKelo();
    user.awaitSignedIn(e2e::ada.firstName);
    user.chooseRegister();
    user.answerPrompt(e2e::ada.password);
    user.confirmSheet(desktop().loginPassword);
    user.awaitAlert(
        "Kelo may not write the file with your passkeys. Check the permissions of its folder "
        "and try again.");
    endKelo();
    killKeyring();
    remount(0);
    startKeyring();
    expectNothingIsLost();
}

} // namespace kelo::faults
