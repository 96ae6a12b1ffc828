#include "component/webkit/FakeAsker.h"
#include "component/webkit/WindowFixture.h"

#include <gtest/gtest.h>

namespace kelo::test {

using permission::Answer;
using permission::Capability;

namespace {

/// Tells pages what it sees, and shows a notification when it is told to.
constexpr const char* workerScript = R"(
self.addEventListener('install', () => self.skipWaiting());
self.addEventListener('activate', (event) => event.waitUntil(self.clients.claim()));
self.addEventListener('message', (event) => event.waitUntil((async () => {
  let outcome = 'shown';
  try {
    await self.registration.showNotification(event.data);
  } catch (error) {
    outcome = error.name;
  }
  event.source.postMessage(outcome + ' ' + ('NotificationEvent' in self));
})()));
)";

constexpr const char* popup = R"(<script>
opener.heard = 'popup ' + ('showNotification' in ServiceWorkerRegistration.prototype);
</script>)";

} // namespace

/// The service's page with a service worker, where the user has allowed notifications.
class WorkerNotification : public WindowFixture {
protected:
    void SetUp() override {
        permissions->remember(Capability::notifications, Answer::allowed);
        userChoice = {permissions, std::make_shared<FakeAsker>()};
        peer = std::make_unique<MisbehavingServer>(
            identity, MisbehavingServer::answering([](const WireRequest& request) {
                return request.target == "/worker.js"
                           ? httpReply(workerScript, "Content-Type: text/javascript\r\n")
                           : page(request.target == "/popup" ? popup : "hello");
            }));
        makeView(peer->url());
        showInWindow();
        open(peer->url("/"));
        evaluate("window.heard = ''; navigator.serviceWorker.onmessage = (event) => heard = "
                 "event.data; navigator.serviceWorker.register('/worker.js'); 1");
    }
    void askWorker() {
        evaluate("heard = ''; navigator.serviceWorker.ready.then("
                 "(registration) => registration.active.postMessage('A title')); 1");
    }

    std::shared_ptr<permission::Permissions> permissions =
        std::make_shared<permission::Permissions>("", "");
    std::unique_ptr<MisbehavingServer> peer;
};

// The engine would show it past the user's answer and the limits of the page's notifications.
TEST_F(WorkerNotification, IsNotToBeHad) {
    askWorker();
    EXPECT_TRUE(waitForScript("heard", "TypeError false"));
}

// So that it takes the notifications that there are.
TEST_F(WorkerNotification, PageSeesThatThereIsNone) {
    EXPECT_EQ(evaluate("'showNotification' in ServiceWorkerRegistration.prototype"), "false");
    EXPECT_EQ(evaluate("'getNotifications' in ServiceWorkerRegistration.prototype"), "false");
    EXPECT_EQ(evaluate("'PushManager' in window"), "false");
    EXPECT_EQ(evaluate("Notification.permission"), "granted");
}

TEST_F(WorkerNotification, PopupSeesThatThereIsNone) {
    evaluate("window.open('/popup', '', 'width=300,height=200'); 1");
    EXPECT_TRUE(waitForScript("heard", "popup false"));
}

} // namespace kelo::test
