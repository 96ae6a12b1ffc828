#include "unit/authenticator/Records.h"

#include "component/ScopedVariable.h"
#include "linux/inventory/Listing.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace kelo::inventory {
namespace {

using authenticator::CredentialRecord;
using Json = nlohmann::json;

CredentialRecord used() {
    CredentialRecord made = acceptedRecord("used one", "user");
    made.keeper = authenticator::KeyKeeper::chip;
    made.lastUsed = std::chrono::sys_seconds(std::chrono::seconds(1'700'100'000));
    return made;
}

TEST(Listing, TableShowsWhatTheOwnerAsks) {
    const test::ScopedVariable zone("TZ", "UTC");
    CredentialRecord fresh = record("fresh one", "é");
    EXPECT_EQ(tableOf(std::vector{used(), fresh}),
              "Name      Account          Service    Made        Last used   Kept in        "
              "Accepted\n"
              "75736564  account of user  localhost  2023-11-14  2023-11-16  security chip  yes\n"
              "66726573  account of é     localhost  2023-11-14  never       software       not "
              "yet\n");
}

TEST(Listing, NameHasAsManyDigitsAsTellItFromOthers) {
    const std::vector<CredentialRecord> all{record("same 1", "a"), record("same 2", "b"),
                                            record("other", "c")};
    EXPECT_EQ(nameOf(all[0], all), "73616d652031");
    EXPECT_EQ(nameOf(all[1], all), "73616d652032");
    EXPECT_EQ(nameOf(all[2], all), "6f746865");
}

TEST(Listing, AccountCannotWriteIntoOtherColumns) {
    CredentialRecord strange = record("strange one", "user");
    strange.accountName = "ada\n00000000\x1b[2J";
    const std::string table = tableOf(std::vector{strange});
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 2);
    EXPECT_EQ(table.find('\x1b'), std::string::npos);
}

TEST(Listing, ProgramsGetEveryFieldInOneForm) {
    const Json all = Json::parse(jsonOf(std::vector{used(), record("fresh one", "user")}));
    EXPECT_EQ(all["passkeys"][0], (Json{{"name", "75736564"},
                                        {"identifier", "dXNlZCBvbmU"},
                                        {"account", "account of user"},
                                        {"service", "localhost"},
                                        {"made", "2023-11-14T22:13:20Z"},
                                        {"lastUsed", "2023-11-16T02:00:00Z"},
                                        {"keptIn", "chip"},
                                        {"accepted", true},
                                        {"refusals", 0}}));
    EXPECT_EQ(all["passkeys"][1]["lastUsed"], nullptr);
    EXPECT_EQ(all["passkeys"][1]["keptIn"], "software");
    EXPECT_EQ(Json::parse(jsonOf(std::span<const CredentialRecord>())),
              (Json{{"passkeys", Json::array()}}));
}

TEST(Listing, ProgramsGetAnAccountThatIsNoUtf8) {
    CredentialRecord strange = record("strange one", "user");
    strange.accountName = "a\xff";
    EXPECT_EQ(Json::parse(jsonOf(std::vector{strange}))["passkeys"][0]["account"], "a\uFFFD");
}

TEST(Listing, FindingsHaveAStateForPrograms) {
    const std::vector<Finding> findings{{"chip", Finding::State::notice, "Chip", "None."}};
    EXPECT_EQ(Json::parse(jsonOf(findings))["findings"][0],
              (Json{{"name", "chip"}, {"state", "notice"}, {"sentence", "None."}}));
    EXPECT_EQ(reportOf(findings), "– Chip: None.\n");
}

} // namespace
} // namespace kelo::inventory
