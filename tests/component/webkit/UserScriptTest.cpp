#include "web/UserScript.h"
#include "component/webkit/WebKitFixture.h"

namespace kelo::test {

/// Pages with the script that takes the page's own passkey buttons out of sight.
class UserScriptInPage : public WebKitFixture {
protected:
    void show(const std::string& html, std::map<std::string, std::string> more = {}) {
        more["/"] = html;
        peer = site(std::move(more));
        platform::WebViewConfiguration configuration;
        platform::UserScript script;
        script.source = web::hidePasskeyButtonsScript;
        configuration.userScripts.push_back(script);
        makeView(peer->url(), configuration);
        open(peer->url("/"));
    }
    static std::string displayOf(const std::string& element) {
        return "getComputedStyle(document.querySelector('" + element + "')).display";
    }

    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(UserScriptInPage, ButtonsOfBothTextsAreHiddenWithTheirParent) {
    show("<div id=a><button>Sign in with passkey</button></div>"
         "<div id=b><button>Waiting for passkey…</button></div>"
         "<div id=c><button>Log in</button></div>");
    EXPECT_EQ(evaluate(displayOf("#a")), "none");
    EXPECT_EQ(evaluate(displayOf("#b")), "none");
    EXPECT_EQ(evaluate(displayOf("#c")), "block");
}

TEST_F(UserScriptInPage, TextIsTrimmedAndItsCaseCounts) {
    show("<div id=a><button> \n Sign in with passkey\t </button></div>"
         "<div id=b><button>Sign In With Passkey</button></div>"
         "<div id=c><button>Sign in with passkey now</button></div>");
    EXPECT_EQ(evaluate(displayOf("#a")), "none");
    EXPECT_EQ(evaluate(displayOf("#b")), "block");
    EXPECT_EQ(evaluate(displayOf("#c")), "block");
}

TEST_F(UserScriptInPage, ButtonThatAppearsLaterIsHiddenToo) {
    show("<main></main>");
    evaluate("document.querySelector('main').innerHTML ="
             "'<div id=a><button>Sign in with passkey</button></div>'; 1");
    EXPECT_TRUE(waitForScript(displayOf("#a"), "none"));
}

TEST_F(UserScriptInPage, PageWithoutMutationObserversIsLookedAtAtItsEndAndWhenItSaysItIsComplete) {
    show("<script>window.MutationObserver = null</script>"
         "<div id=a><button>Sign in with passkey</button></div><main></main>");
    EXPECT_EQ(evaluate(displayOf("#a")), "none");
    evaluate("document.querySelector('main').innerHTML ="
             "'<div id=b><button>Sign in with passkey</button></div>'; 1");
    EXPECT_EQ(evaluate(displayOf("#b")), "block") << "nobody has looked";
    evaluate("document.dispatchEvent(new Event('DOMContentLoaded')); 1");
    EXPECT_EQ(evaluate(displayOf("#b")), "none");
}

TEST_F(UserScriptInPage, FramesAreCovered) {
    show("<iframe src='/frame'></iframe>",
         {{"/frame", "<div id=a><button>Sign in with passkey</button></div>"}});
    EXPECT_TRUE(waitForScript("(d => d ? getComputedStyle(d).display : '')"
                              "(document.querySelector('iframe').contentDocument"
                              ".querySelector('#a'))",
                              "none"));
}

TEST_F(UserScriptInPage, ScriptMayBeKeptToTheMainFrame) {
    const auto own = site({{"/", "<iframe src='/frame'></iframe>"}, {"/frame", "inside"}});
    platform::WebViewConfiguration configuration;
    platform::UserScript script;
    script.source = "document.documentElement.dataset.seen = 'yes'";
    script.forMainFrameOnly = true;
    configuration.userScripts.push_back(script);
    makeView(own->url(), configuration);
    open(own->url("/"));
    EXPECT_EQ(evaluate("document.documentElement.dataset.seen"), "yes");
    EXPECT_EQ(evaluate("document.querySelector('iframe').contentDocument"
                       ".documentElement.dataset.seen"),
              "undefined");
}

TEST_F(UserScriptInPage, InjectionTimeIsKept) {
    const auto own = site({{"/", "<p>text</p>"}});
    platform::WebViewConfiguration configuration;
    platform::UserScript early;
    early.source = "window.early = String(document.querySelector('p'))";
    early.injectionTime = platform::InjectionTime::atDocumentStart;
    platform::UserScript late;
    late.source = "window.late = document.querySelector('p').textContent";
    configuration.userScripts = {early, late};
    makeView(own->url(), configuration);
    open(own->url("/"));
    EXPECT_EQ(evaluate("window.early"), "null");
    EXPECT_EQ(evaluate("window.late"), "text");
}

TEST_F(UserScriptInPage, ContentScriptsCanBeForbiddenAndOursStillRun) {
    const auto own = site({{"/", "<p>text</p><script>window.theirs = 1</script>"}});
    platform::WebViewConfiguration configuration;
    configuration.allowsContentJavaScript = false;
    platform::UserScript script;
    script.source = "document.querySelector('p').textContent = 'ours'";
    configuration.userScripts.push_back(script);
    makeView(own->url(), configuration);
    open(own->url("/"));
    EXPECT_EQ(evaluate("typeof window.theirs"), "undefined");
    EXPECT_EQ(evaluate("document.querySelector('p').textContent"), "ours");
}

} // namespace kelo::test
