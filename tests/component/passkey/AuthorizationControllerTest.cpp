#include "component/ScopedMainLoop.h"

#include "authenticator/store/CredentialStore.h"
#include "base/Failure.h"
#include "fakes/authenticator/FakePasskeySheet.h"
#include "linux/authorization/LocalAuthenticator.h"
#include "linux/authorization/PasskeyFile.h"
#include "linux/authorization/PasskeyServices.h"
#include "platform/Application.h"
#include "platform/Window.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

// The controller with the real parts behind it, as far as they answer without a keyring or PAM.

namespace kelo {

namespace {

using platform::AuthorizationController;

/// GLib reads the environment once, so the folder is the whole program's.
const std::filesystem::path& dataHome() {
    static const test::TemporaryFolder folder;
    return folder.path();
}

class DataHome : public testing::Environment {
public:
    void SetUp() override { ::setenv("XDG_DATA_HOME", dataHome().c_str(), 1); }
};
const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(std::make_unique<DataHome>().release());

class Listener final : public platform::AuthorizationControllerDelegate,
                       public platform::AuthorizationPresentationContextProvider {
public:
    void didCompleteWithAuthorization(AuthorizationController& controller,
                                      platform::Authorization authorization) override {
        from = &controller;
        credential = std::move(authorization);
        ++calls;
    }
    void didCompleteWithError(AuthorizationController& controller,
                              std::exception_ptr failure) override {
        from = &controller;
        try {
            std::rethrow_exception(failure);
        } catch (const Failure& known) {
            error = known;
        }
        ++calls;
    }
    std::shared_ptr<platform::Window> presentationAnchor(AuthorizationController&) override {
        ++anchorsAsked;
        return window;
    }

    struct SomeWindow final : platform::Window {};
    const std::shared_ptr<platform::Window> window = std::make_shared<SomeWindow>();

    AuthorizationController* from = nullptr;
    std::optional<platform::Authorization> credential;
    std::optional<Failure> error;
    int calls = 0;
    int anchorsAsked = 0;
};

class AuthorizationControllerTest : public testing::Test {
protected:
    ~AuthorizationControllerTest() override {
        dropSpawnedTasks();
        std::filesystem::remove_all(dataHome() / "kelo");
    }

    static platform::PlatformRegistrationRequest
    registration(const std::string& party = "localhost") {
        return {party, bytesOf("challenge"), "zoe", bytesOf("user-1")};
    }
    static platform::PlatformAssertionRequest assertion() {
        platform::PlatformAssertionRequest request;
        request.relyingPartyIdentifier = "localhost";
        request.challenge = bytesOf("challenge");
        return request;
    }
    /// Starts a ceremony and lets the controller go.
    std::shared_ptr<Listener> perform(std::vector<platform::AuthorizationRequest> requests) {
        auto listener = std::make_shared<Listener>();
        const auto controller = services.makeController(std::move(requests));
        controller->setDelegate(listener);
        controller->setPresentationContextProvider(listener);
        controller->performRequests();
        EXPECT_EQ(listener->calls, 0) << "the delegate is called in a later turn";
        return listener;
    }
    static void expectError(const Listener& listener, FailureKind kind) {
        ASSERT_TRUE(ScopedMainLoop::runUntil([&] { return listener.calls > 0; }));
        ASSERT_TRUE(listener.error);
        EXPECT_EQ(listener.error->kind(), kind) << listener.error->localizedDescription();
        EXPECT_NE(listener.from, nullptr);
        EXPECT_EQ(listener.calls, 1);
    }
    /// A passkey of one account, whose identifier is 32 times this byte.
    static void savePasskey(std::uint8_t id, const std::string& accountName) {
        authenticator::CredentialRecord record;
        record.credentialId = Bytes(32, id);
        record.relyingPartyIdentifier = "localhost";
        record.userId = bytesOf("user-1");
        record.accountName = accountName;
        record.wrappedPrivateKey = bytesOf("wrapped");
        authenticator::CredentialStore(authorization::passkeyFile()).save(record);
    }
    bool waitForSheets(std::size_t count) {
        return ScopedMainLoop::runUntil([&] { return person.requests.size() >= count; });
    }

    ScopedMainLoop loop;
    fakes::SheetScript person;
    fakes::FakePasskeySheetFactory sheets{person};
    authorization::PasskeyServices services{sheets};
};

} // namespace

TEST_F(AuthorizationControllerTest, MakingOneTouchesNothing) {
    const auto controller = services.makeController({assertion()});
    EXPECT_TRUE(std::filesystem::is_empty(dataHome()));
}

TEST_F(AuthorizationControllerTest, WithoutAPasskeyItSaysSoEvenWhenNobodyHoldsIt) {
    const auto listener = perform({assertion()});
    expectError(*listener, FailureKind::noCredential);
    EXPECT_EQ(listener->anchorsAsked, 1);
    EXPECT_TRUE(std::filesystem::is_empty(dataHome()));
}

TEST_F(AuthorizationControllerTest, RefusesAnotherRelyingParty) {
    expectError(*perform({registration("example.org")}), FailureKind::notAllowed);
    EXPECT_TRUE(person.requests.empty());
}

TEST_F(AuthorizationControllerTest, RefusesNoRequestAndTwo) {
    expectError(*perform({}), FailureKind::notAllowed);
    expectError(*perform({assertion(), assertion()}), FailureKind::notAllowed);
}

TEST_F(AuthorizationControllerTest, CancelAtTheSheetIsThePlatformsCancellation) {
    person.choice = std::nullopt;
    const auto listener = perform({registration()});
    expectError(*listener, FailureKind::cancelled);
    EXPECT_EQ(listener->error->localizedDescription(), "The passkey request was cancelled.");
    EXPECT_EQ(person.anchor, listener->window);
}

TEST_F(AuthorizationControllerTest, ANewCeremonyGivesUpTheFormer) {
    person.leavesOpen = true;
    const auto former = perform({registration()});
    ASSERT_TRUE(waitForSheets(1));
    const auto second = perform({registration()});
    expectError(*former, FailureKind::cancelled);
    ASSERT_TRUE(waitForSheets(2));
    EXPECT_EQ(second->calls, 0);
    EXPECT_EQ(std::ranges::count(person.events, "closed"), 1);
}

TEST_F(AuthorizationControllerTest, ACeremonyThatNeverBeganCanBeGivenUp) {
    person.leavesOpen = true;
    const auto former = perform({registration()});
    const auto second = perform({registration()});
    expectError(*former, FailureKind::cancelled);
    ASSERT_TRUE(waitForSheets(1));
    EXPECT_EQ(second->calls, 0);
}

TEST_F(AuthorizationControllerTest, ADelegateThatIsGoneIsNotCalled) {
    const std::weak_ptr<Listener> gone = perform({assertion()});
    EXPECT_TRUE(gone.expired());
    EXPECT_TRUE(ScopedMainLoop::runUntil([] { return spawnedTaskCount() == 0; }));
}

TEST_F(AuthorizationControllerTest, ThePasskeysAreInTheUsersDataFolder) {
    EXPECT_EQ(authorization::passkeyFile(), dataHome() / "kelo" / "passkeys.sqlite");
}

TEST_F(AuthorizationControllerTest, OffersThePasskeysOnDisk) {
    savePasskey(1, "zoe");
    person.choice = std::nullopt;
    const auto listener = perform({assertion()});
    expectError(*listener, FailureKind::cancelled);
    EXPECT_EQ(person.anchor, listener->window);
    ASSERT_EQ(person.requests.size(), 1U);
    EXPECT_EQ(person.requests[0].accountNames, std::vector<std::string>{"zoe"});
}

TEST_F(AuthorizationControllerTest, AReportCountsForTheNextCeremony) {
    using Verdict = platform::CredentialReport::Verdict;
    savePasskey(1, "zoe");
    savePasskey(2, "zoe the second");
    person.choice = std::nullopt;
    services.report({"localhost", Bytes(32, 2), Verdict::refused});
    expectError(*perform({assertion()}), FailureKind::cancelled);
    ASSERT_EQ(person.requests.size(), 1U);
    EXPECT_EQ(person.requests[0].accountNames, std::vector<std::string>{"zoe"});
    services.report({"localhost", Bytes(32, 2), Verdict::accepted});
    expectError(*perform({assertion()}), FailureKind::cancelled);
    ASSERT_EQ(person.requests.size(), 2U);
    EXPECT_EQ(person.requests[1].accountNames, std::vector<std::string>{"zoe the second"});
    const authenticator::CredentialStore store(authorization::passkeyFile());
    EXPECT_EQ(store.find("localhost").size(), 1U);
}

TEST_F(AuthorizationControllerTest, AReportThatCannotBeNotedFailsNobody) {
    std::filesystem::create_directories(authorization::passkeyFile());
    services.report({"localhost", Bytes(32, 1), platform::CredentialReport::Verdict::accepted});
    expectError(*perform({assertion()}), FailureKind::storage);
}

} // namespace kelo
