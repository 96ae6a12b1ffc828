#include "DemoFixture.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <sstream>

namespace kelo::demo {
namespace {

class ServiceProcess : public DemoFixture {
protected:
    std::filesystem::path stateFile() const { return directory.path() / "state.json"; }

    static std::string read(const std::filesystem::path& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    static bool connects(const char* address, const std::string& port) {
        const auto client = gobject::GObjectPointer<GSocketClient>::adopt(g_socket_client_new());
        const auto target = gobject::GObjectPointer<GSocketAddress>::adopt(
            g_inet_socket_address_new_from_string(address, static_cast<guint>(std::stoi(port))));
        const auto connection =
            gobject::GObjectPointer<GSocketConnection>::adopt(g_socket_client_connect(
                client.get(), G_SOCKET_CONNECTABLE(target.get()), nullptr, nullptr));
        return static_cast<bool>(connection);
    }

    test::TemporaryFolder directory;
};

TEST_F(ServiceProcess, ListensOnLoopbackOnly) {
    EXPECT_TRUE(connects("127.0.0.1", service->port()));
    // Any address of 127.0.0.0/8 reaches a listener on every interface, and none on 127.0.0.1.
    EXPECT_FALSE(connects("127.0.0.2", service->port()));
}

TEST_F(ServiceProcess, SaysOneLineAndEndsCleanly) {
    for (const int signal : {SIGTERM, SIGINT}) {
        startService();
        const auto outcome = service->stop(signal);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST_F(ServiceProcess, TakenPortIsExplained) {
    const auto outcome =
        runDemoService({"--authority", authority().string(), "--port", service->port()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("is taken by another program"), std::string::npos)
        << outcome.errors;
}

TEST_F(ServiceProcess, WrongOptionsAreExplained) {
    for (const auto& [arguments, text] :
         {std::pair<std::vector<std::string>, std::string>{{}, "--authority is missing"},
          {{"--authority"}, "--authority needs a value"},
          {{"--authority", "x", "--port", "65536"}, "--port takes a number"},
          {{"--authority", "x", "--port", "1x"}, "--port takes a number"},
          {{"--authority", "x", "--origin", "http://a"}, "--origin takes https://"},
          {{"--authority", "x", "--origin", "https://a/"}, "--origin takes https://"},
          {{"--nonsense"}, "There is no option \"--nonsense\""}}) {
        const auto outcome = runDemoService(arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.errors.find(text), std::string::npos) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
    }
}

TEST_F(ServiceProcess, TimesNameRequestsInTheirOrderAndLeaveQueriesOut) {
    const auto file = directory.path() / "times";
    startService({"--times", file.string()});
    browser->get("/login?secret=4711");
    std::istringstream times(read(file));
    std::string what, method, path;
    long long asked = 0, served = 0;
    times >> what >> method >> path >> asked;
    EXPECT_EQ(what + " " + method + " " + path, "asked GET /login");
    times >> what >> method >> path >> served;
    EXPECT_EQ(what + " " + method + " " + path, "served GET /login");
    EXPECT_GT(asked, 0);
    EXPECT_GE(served, asked);
    EXPECT_EQ(times.str().find("secret"), std::string::npos);
}

TEST_F(ServiceProcess, HelpNamesTheAccounts) {
    const auto outcome = runDemoService({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("ada@example.org    password \"analytical engine\""),
              std::string::npos);
    EXPECT_NE(outcome.output.find("grace@example.org  password \"nanosecond\""), std::string::npos);
}

TEST_F(ServiceProcess, StateSurvivesRestart) {
    startService({"--state", stateFile().string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    passkey->counter = 3;
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    passkey->counter = 4;
    HttpsClient other(authority(), service->origin());
    ASSERT_EQ(signInWithPasskey(other, *passkey).status, 200u);
    const auto cookies = browser->cookies;
    const auto outcome = service->stop(SIGTERM);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    auto registered = std::move(passkey);

    startService({"--state", stateFile().string()});
    browser->cookies = cookies;
    const auto page = browser->get("/").body;
    EXPECT_NE(page.find("Welcome, Ada"), std::string::npos);
    EXPECT_NE(page.find("Mac (Kelo)"), std::string::npos);
    registered->origin = service->origin();
    EXPECT_EQ(signInWithPasskey(*browser, *registered).status, 401u) << "the counter was kept";
    registered->counter = 5;
    EXPECT_EQ(signInWithPasskey(*browser, *registered).status, 200u);
}

TEST_F(ServiceProcess, SignedOutSessionStaysEndedAfterRestart) {
    startService({"--state", stateFile().string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    const auto cookies = browser->cookies;
    const auto token = browser->get("/api/csrf").json().at("token").get<std::string>();
    ASSERT_EQ(browser->postForm("/logout", {{"csrfToken", token}}).status, 303u);
    startService({"--state", stateFile().string()});
    browser->cookies = cookies;
    EXPECT_EQ(browser->get("/api/csrf").status, 401u);
}

TEST_F(ServiceProcess, StateFileIsForItsOwnerAndHoldsNothingToSignInWith) {
    startService({"--state", stateFile().string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    struct stat status {};
    ASSERT_EQ(::stat(stateFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    const auto text = read(stateFile());
    EXPECT_EQ(text.find(browser->cookies.at(sessionCookie)), std::string::npos);
    EXPECT_EQ(text.find(adaPassword), std::string::npos);
}

TEST_F(ServiceProcess, CorruptStateIsReportedAndLeftUntouched) {
    constexpr const char* brokenSession = R"({"version":1,"passkeys":[],"sessions":[
        {"identifier":"a","email":"b","csrfToken":"c","expires":-1}]})";
    for (const std::string text :
         {"", "{", "[]", R"({"version":1})", R"({"version":1,"passkeys":[7],"sessions":[]})",
          brokenSession}) {
        std::ofstream(stateFile()) << text;
        const auto outcome = runDemoService(
            {"--authority", authority().string(), "--port", "0", "--state", stateFile().string()});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_NE(outcome.errors.find("is damaged. It was left as it is"), std::string::npos)
            << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(read(stateFile()), text);
    }
}

TEST_F(ServiceProcess, StateOfAnotherVersionIsReportedAndLeftUntouched) {
    const std::string text = "{\"version\":2}";
    std::ofstream(stateFile()) << text;
    const auto outcome = runDemoService(
        {"--authority", authority().string(), "--port", "0", "--state", stateFile().string()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.errors.find("another version"), std::string::npos) << outcome.errors;
    EXPECT_EQ(read(stateFile()), text);
}

TEST_F(ServiceProcess, PasskeyThatCannotBeStoredIsNotTaken) {
    const auto folder = directory.path() / "state";
    std::filesystem::create_directory(folder);
    startService({"--state", (folder / "state.json").string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    std::filesystem::remove_all(folder);
    const auto response = registerPasskey(*browser, *passkey);
    EXPECT_EQ(response.status, 500u);
    EXPECT_EQ(response.reason(), "The passkey could not be stored");
    std::filesystem::create_directory(folder);
    EXPECT_EQ(registerPasskey(*browser, *passkey).status, 200u);
}

TEST_F(ServiceProcess, AcceptedCeremoniesAreWrittenDownForOtherVerifiers) {
    const auto record = directory.path() / "record";
    startService({"--record", record.string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    ASSERT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    ASSERT_EQ(signInWithPasskey(*browser, *passkey).status, 200u);
    passkey->origin = "https://elsewhere.example";
    ASSERT_EQ(signInWithPasskey(*browser, *passkey).status, 401u);
    std::istringstream lines(read(record));
    for (const std::string expected : {"registration", "sign-in"}) {
        std::string line;
        ASSERT_TRUE(std::getline(lines, line));
        const auto ceremony = nlohmann::json::parse(line);
        EXPECT_EQ(ceremony["ceremony"], expected);
        EXPECT_EQ(ceremony["origin"], service->origin());
        EXPECT_EQ(ceremony["challenge"].get<std::string>().size(), 43u) << "32 bytes";
        EXPECT_TRUE(ceremony["credential"]["response"].contains("clientDataJSON"));
    }
    std::string more;
    EXPECT_FALSE(std::getline(lines, more)) << "a ceremony that was refused";
}

TEST_F(ServiceProcess, RecordThatCannotBeWrittenStopsNobody) {
    startService({"--record", (directory.path() / "none" / "record").string()});
    ASSERT_EQ(signInWithPassword(*browser).status, 303u);
    EXPECT_EQ(registerPasskey(*browser, *passkey).status, 200u);
    EXPECT_NE(service->stop(SIGTERM).errors.find("could not be written"), std::string::npos);
}

} // namespace
} // namespace kelo::demo
