#include "linux/webkit/permission/UserConsent.h"

#include <algorithm>
#include <utility>

namespace kelo::webkit {

using permission::Answer;
using permission::Capability;

UserConsent::UserConsent(WebKitWebView* view, std::string host, UserChoice choice)
    : view(view), host(std::move(host)), choice(std::move(choice)) {}

Answer UserConsent::answer(Capability capability) const {
    return choice ? choice.remembered->answer(capability) : Answer::denied;
}

bool UserConsent::isAllowed(Capability capability) const {
    return answer(capability) == Answer::allowed;
}

std::vector<Capability> UserConsent::undecided(const Request& request) const {
    std::vector<Capability> found;
    for (const auto capability : request.capabilities)
        if (answer(capability) == Answer::ask)
            found.push_back(capability);
    return found;
}

bool UserConsent::isRefused(const Request& request) const {
    return std::ranges::any_of(request.capabilities, [this](Capability capability) {
        return answer(capability) == Answer::denied;
    });
}

void UserConsent::request(std::vector<Capability> capabilities,
                          std::function<void(bool isGranted)> decided) {
    waiting.push_back({std::move(capabilities), std::move(decided)});
    if (!question)
        goOn();
}

void UserConsent::goOn() {
    while (!waiting.empty()) {
        const auto asked = undecided(waiting.front());
        const bool refused = isRefused(waiting.front());
        if (!refused && !asked.empty() && gtk_widget_get_mapped(GTK_WIDGET(view))) {
            question = choice.asker->ask(
                GTK_WIDGET(view), {host, asked},
                [this, asked](std::optional<bool> isAllowed) { answered(asked, isAllowed); });
            return;
        }
        const auto decided = std::move(waiting.front().decided);
        waiting.pop_front();
        decided(!refused && asked.empty());
    }
}

void UserConsent::answered(const std::vector<Capability>& asked, std::optional<bool> isAllowed) {
    // All that a page asks for while the question is open, the user refuses by closing it.
    // Otherwise a page could ask until the user gives in.
    if (!isAllowed)
        return refuseWaiting();
    question.reset();
    for (const auto capability : asked)
        choice.remembered->remember(capability, *isAllowed ? Answer::allowed : Answer::denied);
    goOn();
}

void UserConsent::refuseWaiting() {
    question.reset();
    for (const auto& request : std::exchange(waiting, {}))
        request.decided(false);
}

} // namespace kelo::webkit
