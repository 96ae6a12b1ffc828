#pragma once

#include "linux/notification/DesktopNotifications.h"
#include "linux/permission/PermissionAsker.h"
#include "linux/permission/Permissions.h"

#include <webkit/webkit.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::webkit {

/// How the program asks its user what pages may use, and remembers the answers; and what it shows
/// to the user for them.
struct UserChoice {
    /// Null where there is nobody to ask: nothing is allowed then.
    std::shared_ptr<permission::Permissions> remembered;
    std::shared_ptr<permission::PermissionAsker> asker;
    std::shared_ptr<notification::DesktopNotifications> notifications = {};

    explicit operator bool() const { return remembered && asker; }
};

/// What the user allows the service's page in a view. What is not decided yet is asked, one
/// question at a time. A question that is closed without an answer is a refusal that nobody
/// remembers. Main thread only.
class UserConsent {
public:
    /// host: the service's, as the question names it. The view must outlive this object.
    UserConsent(WebKitWebView* view, std::string host, UserChoice choice);

    bool isAllowed(permission::Capability capability) const;
    permission::Answer answer(permission::Capability capability) const;

    /// decided: called once; at once unless the user has to be asked. Refused without a question
    /// while no window shows the view.
    void request(std::vector<permission::Capability> capabilities,
                 std::function<void(bool isGranted)> decided);
    /// Takes the open question away and refuses all that wait for an answer: their page has gone,
    /// or its window.
    void refuseWaiting();

private:
    struct Request {
        std::vector<permission::Capability> capabilities;
        std::function<void(bool isGranted)> decided;
    };

    std::vector<permission::Capability> undecided(const Request& request) const;
    bool isRefused(const Request& request) const;
    void goOn();
    void answered(const std::vector<permission::Capability>& asked, std::optional<bool> isAllowed);

    WebKitWebView* view;
    std::string host;
    UserChoice choice;
    std::deque<Request> waiting; ///< the first one is being asked about
    std::unique_ptr<permission::PermissionAsker::Asked> question;
};

} // namespace kelo::webkit
