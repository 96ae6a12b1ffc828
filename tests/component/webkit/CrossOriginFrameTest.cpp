#include "component/webkit/MediaFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

// A page that reports to the topmost one what became of what it tried.
constexpr const char* reporting = R"(<body><script>
const told = (text) => top.postMessage(text, '*');
const report = (promise) => promise.then(() => told('captured'), (error) => told(error.name));
const wanted = {audio: true};
const child = (change) => {
  const frame = document.createElement('iframe');
  frame.allow = 'microphone; camera; display-capture';
  change?.(frame);
  document.body.append(frame);
  return frame;
};
const inside = `Promise.resolve().then(() => navigator.mediaDevices.getUserMedia({audio: true}))
    .then(() => top.postMessage('captured', '*'), (error) => top.postMessage(error.name, '*'));`;
try {
)";
constexpr const char* reportingEnd = "} catch (error) { told(error.name) }</script>";

// Reaches a window that no script of ours has seen.
constexpr const char* cleverest =
    "report(child((frame) => frame.src = '/never').contentWindow.MediaDevices.prototype"
    ".getUserMedia.call(navigator.mediaDevices, wanted))";

struct Case {
    const char* name;
    const char* text;
};

void PrintTo(const Case& given, std::ostream* stream) {
    *stream << given.name;
}

std::string nameOf(const testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

} // namespace

/// A page of the service with a frame of another host in it. The delegate would grant everything to
/// everybody: what is refused is refused before it.
class CrossOriginFrame : public MediaFixture, public testing::WithParamInterface<Case> {
protected:
    void SetUp() override {
        IdentityRequest request;
        request.hosts = {"127.0.0.1"};
        otherIdentity = authority.issue(request);
    }

    /// FOREIGN in the page stands for the address of the other host.
    void show(std::string html, const std::string& foreignScript) {
        prepare(std::move(html), foreignScript);
        makeMediaView(peer->url());
        trust(otherIdentity, "127.0.0.1");
        open(peer->url("/"));
    }
    void prepare(std::string html, const std::string& foreignScript) {
        foreign = std::make_unique<MisbehavingServer>(
            otherIdentity,
            MisbehavingServer::answering([foreignScript](const WireRequest& request) {
                return page(request.target == "/" ? reporting + foreignScript + reportingEnd : "");
            }));
        const std::string address = "https://127.0.0.1:" + std::to_string(foreign->port()) + "/";
        for (auto at = html.find("FOREIGN"); at != std::string::npos; at = html.find("FOREIGN"))
            html.replace(at, 7, address);
        peer = site({{"/", "<body><script>var results = [];"
                           "addEventListener('message', (event) => results.push(event.data))"
                           "</script>" +
                               html},
                     {"/frame", html},
                     {"/own", reporting + foreignScript + reportingEnd}});
    }
    std::string firstResult() {
        loop.runUntil([&] { return evaluate("results.length > 0") == "true"; });
        return evaluate("results[0]");
    }

    Identity otherIdentity;
    std::unique_ptr<MisbehavingServer> foreign;
    std::unique_ptr<MisbehavingServer> peer;
};

TEST_F(CrossOriginFrame, FrameOfTheServiceGetsTheMicrophone) {
    show("<iframe src='/own'></iframe>", "report(navigator.mediaDevices.getUserMedia(wanted))");
    EXPECT_EQ(firstResult(), "captured");
    EXPECT_THAT(decider->types, SizeIs(1));
}

TEST_F(CrossOriginFrame, FrameOfTheServiceMayBeKeptFromTheMicrophone) {
    show("<iframe src='/own' allow=\"microphone 'none'\"></iframe>",
         "report(navigator.mediaDevices.getUserMedia(wanted))");
    EXPECT_EQ(firstResult(), "NotAllowedError");
}

TEST_F(CrossOriginFrame, OtherPermissionsOfAFrameAreLeftAlone) {
    show("<iframe src='FOREIGN' allow='fullscreen; microphone *; autoplay'></iframe>",
         "told('here')");
    EXPECT_EQ(firstResult(), "here");
    EXPECT_EQ(evaluate("document.querySelector('iframe').allow"), "fullscreen; autoplay");
}

TEST_F(CrossOriginFrame, PinnedMethodsRefuseWhereTheEngineWouldNot) {
    show("<p><template shadowrootmode=closed><iframe allow=microphone src='FOREIGN'></iframe>"
         "</template></p>",
         "report(MediaDevices.prototype.getUserMedia.call(navigator.mediaDevices, wanted))");
    EXPECT_EQ(firstResult(), "NotAllowedError");
    EXPECT_THAT(decider->types, IsEmpty());
}

class CunningFrame : public CrossOriginFrame {};

TEST_P(CunningFrame, DoesNotGetTheMicrophone) {
    show("<iframe allow='microphone; camera; display-capture' src='FOREIGN'></iframe>",
         GetParam().text);
    EXPECT_THAT(firstResult(), Not("captured"));
    EXPECT_THAT(firstResult(), Not(IsEmpty()));
    EXPECT_THAT(decider->types, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    , CunningFrame,
    testing::Values(
        Case{"Direct", "report(navigator.mediaDevices.getUserMedia(wanted))"},
        Case{"Camera", "report(navigator.mediaDevices.getUserMedia({video: true}))"},
        Case{"Prototype",
             "report(MediaDevices.prototype.getUserMedia.call(navigator.mediaDevices, wanted))"},
        Case{"Legacy", "report(new Promise((yes, no) => (navigator.getUserMedia ||"
                       "navigator.webkitGetUserMedia).call(navigator, wanted, yes, no)))"},
        Case{"Screen", "report(navigator.mediaDevices.getDisplayMedia({video: true}))"},
        Case{"EmptyChild",
             "report(child().contentWindow.navigator.mediaDevices.getUserMedia(wanted))"},
        Case{"LoadingChild", "report(child((frame) => frame.src = '/never').contentWindow"
                             ".navigator.mediaDevices.getUserMedia(wanted))"},
        Case{"MethodOfALoadingChild", cleverest},
        Case{"SourceChildAtOnce", "report(child((frame) => frame.srcdoc = 'x').contentWindow"
                                  ".navigator.mediaDevices.getUserMedia(wanted))"},
        Case{"SourceChild", "child((frame) => frame.srcdoc = '<script>' + inside + '<\\/script>')"},
        Case{"BlobChild", "child((frame) => frame.src = URL.createObjectURL(new Blob("
                          "['<script>' + inside + '<\\/script>'], {type: 'text/html'})))"},
        Case{"DataChild",
             "child((frame) => frame.src = 'data:text/html,<script>' + inside + '<\\/script>')"},
        Case{"ScriptAddressChild", "child((frame) => frame.src = 'javascript:' + inside)"},
        Case{"OpenedDocument", "document.open();"
                               "document.write('<script>' + inside + '<\\/script>');"
                               "document.close()"}),
    nameOf);

class HostingPage : public CrossOriginFrame {};

TEST_P(HostingPage, DoesNotPassTheMicrophoneOn) {
    show(GetParam().text, cleverest);
    EXPECT_THAT(firstResult(), Not("captured"));
    EXPECT_THAT(firstResult(), Not(IsEmpty()));
    EXPECT_THAT(decider->types, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    , HostingPage,
    testing::Values(
        Case{"InItsText", "<iframe allow=microphone src='FOREIGN'></iframe>"},
        Case{"ToAnybody", "<iframe allow='autoplay; MICROPHONE *' src='FOREIGN'></iframe>"},
        Case{"ByScript", "<script>const f = document.createElement('iframe');"
                         "f.src = 'FOREIGN'; document.body.append(f); f.allow = 'microphone'"
                         "</script>"},
        Case{"ByMarkup", "<script>document.body.insertAdjacentHTML('beforeend',"
                         "'<p><iframe allow=microphone src=FOREIGN></iframe></p>')</script>"},
        Case{"InAShadow", "<p></p><script>document.querySelector('p')"
                          ".attachShadow({mode: 'closed'}).innerHTML ="
                          "'<iframe allow=microphone src=FOREIGN></iframe>'</script>"},
        Case{"InADeclaredShadow", "<p><template shadowrootmode=open><iframe allow=microphone "
                                  "src='FOREIGN'></iframe></template></p>"},
        Case{"InAnEmptyFrame", "<iframe allow=microphone></iframe><script>"
                               "frames[0].document.body.innerHTML ="
                               "'<iframe allow=microphone src=FOREIGN></iframe>'</script>"},
        Case{"InASourceFrame", "<iframe allow=microphone srcdoc='<iframe allow=microphone "
                               "src=FOREIGN></iframe>'></iframe>"},
        Case{"InABlobFrame", "<iframe allow=microphone></iframe><script>"
                             "document.querySelector('iframe').src = URL.createObjectURL(new Blob("
                             "['<iframe allow=microphone src=FOREIGN></iframe>'],"
                             "{type: 'text/html'}))</script>"},
        Case{"InADataFrame", "<iframe allow=microphone src='data:text/html,<iframe "
                             "allow=microphone src=FOREIGN></iframe>'></iframe>"}),
    nameOf);

} // namespace kelo::test
