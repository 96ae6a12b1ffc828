// The pages for people to try the window with.
#include "component/webkit/WebKitFixture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

namespace kelo::test {

namespace {

std::map<std::string, std::string> galleryFiles() {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(KELO_TEST_PAGES)) {
        std::ifstream stream(entry.path());
        files["/" + entry.path().filename().string()].assign(std::istreambuf_iterator<char>(stream),
                                                             {});
    }
    return files;
}

/// Keeps what the page would write to its console as an error.
constexpr const char* errorKeeper = R"(window.errors = [];
console.error = (...words) => errors.push(words.join(' '));
addEventListener('error', (event) => errors.push(event.message || 'not loaded: ' +
                                                 (event.target.src || event.target.href)), true);
addEventListener('unhandledrejection', (event) => errors.push(String(event.reason)));
addEventListener('securitypolicyviolation', (event) => errors.push(event.violatedDirective));)";

} // namespace

class GalleryPages : public WebKitFixture {
protected:
    void SetUp() override {
        server = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([this](const WireRequest& request) {
                const auto found = files.find(request.target);
                if (found == files.end())
                    return httpReply("", "", "404 Not Found");
                const bool isStyle = found->first.ends_with(".css");
                return httpReply(found->second, isStyle ? "Content-Type: text/css\r\n"
                                                        : "Content-Type: text/html\r\n");
            }));
        platform::WebViewConfiguration configuration;
        configuration.userScripts = {{errorKeeper, platform::InjectionTime::atDocumentStart, true}};
        makeView(server->url(), configuration);
    }

    const std::map<std::string, std::string> files = galleryFiles();
    std::unique_ptr<MisbehavingServer> server;
};

TEST_F(GalleryPages, OpenWithoutErrorsAndSayWhatToExpect) {
    for (const auto& [name, content] : files) {
        if (!name.ends_with(".html"))
            continue;
        open(server->url(name));
        EXPECT_EQ(evaluate("errors.join('; ')"), "") << name;
        EXPECT_EQ(evaluate("document.querySelectorAll('h1').length"), "1") << name;
        EXPECT_NE(evaluate("document.title"), "") << name;
        EXPECT_EQ(evaluate("getComputedStyle(document.body).maxWidth"), "704px") << name;
        const std::string signs = name == "/index.html" ? "0" : "2";
        EXPECT_EQ(evaluate("document.querySelectorAll('.expect, nav a').length"), signs) << name;
    }
    EXPECT_TRUE(dialogs->asked.empty());
}

TEST_F(GalleryPages, AreAllLinkedFromTheIndex) {
    open(server->url("/index.html"));
    std::set<std::string> pages;
    for (const auto& [name, content] : files)
        if (name.ends_with(".html") && name != "/index.html")
            pages.insert(name);
    std::string linked;
    for (const std::string& name : pages)
        linked += (linked.empty() ? "" : ",") + name;
    EXPECT_GT(pages.size(), 10U);
    EXPECT_EQ(evaluate("[...document.querySelectorAll('li a')].map((link) => "
                       "new URL(link.href).pathname).sort().join()"),
              linked);
}

} // namespace kelo::test
