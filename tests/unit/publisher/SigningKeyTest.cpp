#include "publisher/SigningKey.h"
#include "base/Base64.h"
#include "component/installer/Trees.h"
#include "publisher/Commands.h"
#include "publisher/Failure.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <sstream>

namespace kelo::publisher {

namespace {

using testing::HasSubstr;
using tests::TreeFolder;

void expectRefused(const std::filesystem::path& path, const std::string& because) {
    try {
        SigningKey::load(path);
        FAIL() << "it was taken";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(because));
    }
}

} // namespace

TEST(SigningKey, SignsWhatItsPublicHalfVerifies) {
    const TreeFolder folder;
    SigningKey::generate().save(folder / "key");
    const auto key = SigningKey::load(folder / "key");
    const auto bytes = bytesOf("an archive");
    const auto publicKey = updater::parsePublicKey(base64Encode(key.publicKey()));
    const auto signature = updater::parseSignature(base64Encode(key.sign(bytes)));
    ASSERT_TRUE(publicKey && signature);
    EXPECT_TRUE(updater::verifies(*publicKey, *signature, bytes));
    EXPECT_FALSE(updater::verifies(*publicKey, *signature, bytesOf("an Archive")));
}

TEST(SigningKey, IsItsOwnersAloneFromTheFirstByte) {
    const TreeFolder folder;
    ::umask(0);
    SigningKey::generate().save(folder / "key");
    ::umask(022);
    struct stat status {};
    ASSERT_EQ(::stat((folder / "key").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(SigningKey, NeverTakesThePlaceOfAnother) {
    const TreeFolder folder;
    tests::writeFile(folder / "key", "the old key");
    EXPECT_THROW(SigningKey::generate().save(folder / "key"), Failure);
    EXPECT_EQ(tests::readFile(folder / "key"), "the old key");
}

TEST(SigningKey, ThatOthersCanReadIsNotUsed) {
    const TreeFolder folder;
    SigningKey::generate().save(folder / "key");
    ::chmod((folder / "key").c_str(), 0640);
    expectRefused(folder / "key", "Others can read");
}

TEST(SigningKey, ThatIsMissingOrNoneIsSaidPlainly) {
    const TreeFolder folder;
    expectRefused(folder / "key", "There is no key");
    tests::writeFile(folder / "key", "no key", 0600);
    expectRefused(folder / "key", "is not a signing key");
    tests::writeFile(folder / "key", "", 0600);
    expectRefused(folder / "key", "is not a signing key");
}

TEST(SigningKey, IsAskedForWhereNoneIsNamed) {
    Arguments arguments;
    arguments.command = Command::sign;
    arguments.files = {"file"};
    std::ostringstream output;
    EXPECT_THROW(run(arguments, output, output), UsageError);
}

TEST(SigningKey, TheToolNeverPrintsThePrivateHalf) {
    const TreeFolder folder;
    Arguments arguments;
    arguments.command = Command::keygen;
    arguments.key = folder / "key";
    std::ostringstream output;
    std::ostringstream remarks;
    run(arguments, output, remarks);
    const std::string publicKey = base64Encode(SigningKey::load(folder / "key").publicKey());
    EXPECT_EQ(output.str(), publicKey + "\n");
    EXPECT_THAT(remarks.str(), testing::Not(HasSubstr("PRIVATE")));
}

} // namespace kelo::publisher
