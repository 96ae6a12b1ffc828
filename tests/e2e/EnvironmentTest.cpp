#include "component/ScopedVariable.h"
#include "e2e/ProgramFixture.h"
#include "posix/FileDescriptor.h"
#include "testing/rig/ProcessTree.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>

namespace kelo::e2e {

namespace {

constexpr std::uint16_t inspectorPort = 2999;
constexpr const char* inspectorPlace = "127.0.0.1:2999";

/// The program started with variables that would open it.
class Environment : public ProgramFixture {
protected:
    static bool isOpen(std::uint16_t port) {
        const posix::FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                         sizeof address) == 0;
    }
    bool runs(const std::string& program) const {
        return std::ranges::any_of(rig::processTree(kelo->identifier()), [&](pid_t process) {
            return rig::programName(process) == program;
        });
    }

    void SetUp() override {
        // Without the variables: a service that writes its keys into the file would prove nothing.
        startService();
        const test::ScopedVariable server{"WEBKIT_INSPECTOR_SERVER", inspectorPlace};
        const test::ScopedVariable page{"WEBKIT_INSPECTOR_HTTP_SERVER", inspectorPlace};
        const test::ScopedVariable sandbox{"WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS", "1"};
        const test::ScopedVariable keyLog{"SSLKEYLOGFILE", keys.string()};
        const test::ScopedVariable toolkit{"GTK_DEBUG", "interactive"};
        startKelo();
        user.awaitLoginPage();
    }

    const std::filesystem::path keys = folder.path() / "tls-keys";
};

} // namespace

TEST_F(Environment, OpensNoInspectorOfTheEngine) {
    EXPECT_FALSE(isOpen(inspectorPort));
}

TEST_F(Environment, DoesNotTakeTheSandboxAway) {
    EXPECT_TRUE(runs("bwrap"));
}

TEST_F(Environment, DoesNotMakeTheKeysOfConnectionsReadable) {
    EXPECT_FALSE(std::filesystem::exists(keys));
}

TEST_F(Environment, OpensNoInspectorOfTheToolkit) {
    const auto windows = desktop().screen.windows.managed();
    EXPECT_EQ(std::ranges::count(windows, kelo->identifier(), &rig::ScreenWindow::process), 1);
}

} // namespace kelo::e2e
