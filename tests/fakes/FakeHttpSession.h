#pragma once

#include "base/async/Continuation.h"
#include "platform/HttpSession.h"

#include <deque>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace kelo::fakes {

/// A session with replies that a test prepares. It records every request.
class FakeHttpSession final : public platform::HttpSession, public platform::HttpCookieStorage {
public:
    struct Sent {
        platform::UrlRequest request;
        /// Sent by the plain fetch of a URL, without settings of its own.
        bool byUrl = false;
    };

    /// The next request without an answer gets this one, which sets these cookies when it comes.
    void reply(std::optional<int> status, std::string body,
               std::vector<platform::HttpCookie> cookies = {}) {
        answers.emplace_back(Reply{platform::HttpReply{bytesOf(body), status}, std::move(cookies)});
    }
    /// As reply(), after a redirect to another origin.
    void replyFromElsewhere(int status, std::string body) {
        answers.emplace_back(Reply{platform::HttpReply{bytesOf(body), status, true}, {}});
    }
    void fail(std::exception_ptr error) { answers.emplace_back(std::move(error)); }
    /// The next request without an answer stays open until the continuation is resumed.
    void holdNext() { answers.emplace_back(Hold{}); }

    Task<platform::HttpReply> data(platform::UrlRequest request) override {
        sent.push_back({std::move(request), false});
        return answer();
    }
    Task<platform::HttpReply> data(Url url) override {
        sent.push_back({platform::UrlRequest{std::move(url)}, true});
        return answer();
    }
    const platform::HttpCookieStorage* cookieStorage() const override {
        return hasStorage ? this : nullptr;
    }
    std::optional<std::vector<platform::HttpCookie>> cookies(const Url& url) const override {
        askedCookiesFor.push_back(url.absoluteString());
        return storedCookies;
    }

    std::vector<Sent> sent;
    std::optional<CheckedContinuation<platform::HttpReply>> held;
    bool hasStorage = true;
    std::optional<std::vector<platform::HttpCookie>> storedCookies =
        std::vector<platform::HttpCookie>();
    mutable std::vector<std::string> askedCookiesFor;

private:
    struct Reply {
        platform::HttpReply reply;
        std::vector<platform::HttpCookie> cookies;
    };
    struct Hold {};
    using Answer = std::variant<Reply, std::exception_ptr, Hold>;

    Task<platform::HttpReply> answer() {
        if (answers.empty())
            throw std::logic_error("a request was sent that the test did not expect: " +
                                   sent.back().request.url.absoluteString());
        Answer next = std::move(answers.front());
        answers.pop_front();
        return deliver(std::move(next));
    }

    Task<platform::HttpReply> deliver(Answer next) {
        co_return co_await withCheckedContinuation<platform::HttpReply>(
            [&](CheckedContinuation<platform::HttpReply> continuation) {
                if (auto* answer = std::get_if<Reply>(&next)) {
                    if (storedCookies)
                        storedCookies->insert(storedCookies->end(), answer->cookies.begin(),
                                              answer->cookies.end());
                    continuation.resume(std::move(answer->reply));
                }
                if (auto* error = std::get_if<std::exception_ptr>(&next))
                    continuation.fail(*error);
                if (std::get_if<Hold>(&next))
                    held = continuation;
            });
    }

    std::deque<Answer> answers;
};

} // namespace kelo::fakes
