#pragma once

#include "base/async/Continuation.h"
#include "updater/archive/Transport.h"

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

/// Replies from a table. A URL in "hanging" gets no reply; a URL in no table fails with the error.
class FakeTransport final : public updater::Transport {
public:
    Task<Bytes> fetch(Url url, std::size_t limit) override {
        requests.push_back(url.absoluteString());
        limits.push_back(limit);
        co_await waitIfHanging(url.absoluteString());
        co_return reply(url.absoluteString());
    }

    Task<void> download(Url url, std::shared_ptr<updater::ByteSink> sink) override {
        requests.push_back(url.absoluteString());
        const Bytes body = reply(url.absoluteString());
        if (announced)
            sink->announce(*announced);
        for (std::size_t at = 0; at < body.size(); at += portionSize) {
            const auto end = std::min(body.size(), at + portionSize);
            Bytes portion(body.begin() + static_cast<std::ptrdiff_t>(at),
                          body.begin() + static_cast<std::ptrdiff_t>(end));
            co_await sink->take(std::move(portion));
            co_await waitIfHanging(url.absoluteString());
        }
        if (failAtEnd)
            std::rethrow_exception(failAtEnd);
    }

    /// Sends the replies that are hanging.
    void answer() {
        hanging.clear();
        for (const auto& flow : std::exchange(waiting, {}))
            flow.resume();
    }

    std::map<std::string, Bytes> replies;
    std::exception_ptr failure;
    std::exception_ptr failAtEnd;
    std::vector<std::string> hanging;
    std::optional<std::uint64_t> announced;
    std::size_t portionSize = 4;
    std::vector<std::string> requests;
    std::vector<std::size_t> limits;

private:
    Bytes reply(const std::string& address) const {
        const auto found = replies.find(address);
        if (found == replies.end())
            std::rethrow_exception(failure);
        return found->second;
    }

    Task<void> waitIfHanging(std::string address) {
        if (std::find(hanging.begin(), hanging.end(), address) == hanging.end())
            co_return;
        co_await withCheckedContinuation<void>(
            [this](CheckedContinuation<void> flow) { waiting.push_back(flow); });
    }

    std::vector<CheckedContinuation<void>> waiting;
};

} // namespace kelo::test
