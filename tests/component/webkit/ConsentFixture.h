#pragma once

#include "component/webkit/FakeAsker.h"
#include "component/webkit/MediaFixture.h"

#include <memory>
#include <string>

namespace kelo::test {

/// Pages whose user is asked, and answers when the test says so.
class ConsentFixture : public MediaFixture {
protected:
    /// What a frame of another origin says to the shown page: its script posts it to the top.
    std::string saidByAForeignFrame(const std::string& script, const std::string& attributes = "") {
        IdentityRequest wanted;
        wanted.hosts = {"127.0.0.1"};
        const auto otherIdentity = authority.issue(wanted);
        trust(otherIdentity, "127.0.0.1");
        const MisbehavingServer other(otherIdentity,
                                      MisbehavingServer::answering([&script](const WireRequest&) {
                                          return page("<script>" + script + "</script>");
                                      }));
        evaluate("var heard = ''; addEventListener('message', (event) => heard = event.data);"
                 "document.body.innerHTML = `<iframe " +
                 attributes + " src='https://127.0.0.1:" + std::to_string(other.port()) +
                 "/'></iframe>`; 1");
        loop.runUntil([&] { return !evaluate("heard").empty(); });
        return evaluate("heard");
    }
    permission::Answer remembered(permission::Capability capability) const {
        return permissions->answer(capability);
    }

    std::shared_ptr<permission::Permissions> permissions =
        std::make_shared<permission::Permissions>("", "");
    std::shared_ptr<FakeAsker> asker = std::make_shared<FakeAsker>();
    std::unique_ptr<MisbehavingServer> peer;
};

} // namespace kelo::test
