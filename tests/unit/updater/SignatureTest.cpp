#include "updater/archive/Signature.h"

#include "posix/FileDescriptor.h"
#include "testing/TemporaryFolder.h"
#include "unit/updater/Publisher.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>

namespace kelo::test {

using updater::parsePublicKey;
using updater::parseSignature;
using updater::verifies;
using updater::verifiesFile;

namespace {

// Made with other tools.
const std::string publishedText = "Hello World!\n";
const std::string publishedKey = "rhHib+w769W2/6/t+oM1ZxgjBB93BfBKMLO0Qo1etQs=";
const std::string publishedSignature = "EIawm2YkDZ2gBfkEMF2+1VuuTeXnCGZOdnMdVgPPvDZioq7bvDayXqKkII"
                                       "zSjKMmeFdcFJOHdnba5ZV60+gPBw==";

class SignatureOfFile : public testing::Test {
protected:
    posix::FileDescriptor fileWith(const std::string& text) {
        const auto path = folder.path() / "archive";
        std::ofstream(path, std::ios::binary) << text;
        return posix::FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }
    bool holds(const std::string& text, std::uint64_t size) {
        const posix::FileDescriptor file = fileWith(text);
        return verifiesFile(*parsePublicKey(publishedKey), *parseSignature(publishedSignature),
                            file.get(), size);
    }
    TemporaryFolder folder;
};

} // namespace

TEST(Signature, PublishedOneHolds) {
    EXPECT_TRUE(verifies(*parsePublicKey(publishedKey), *parseSignature(publishedSignature),
                         bytesOf(publishedText)));
}

TEST(Signature, OfOneOtherBitDoesNotHold) {
    const auto key = *parsePublicKey(publishedKey);
    const auto signature = *parseSignature(publishedSignature);
    for (std::size_t i = 0; i < publishedText.size(); ++i) {
        auto bytes = bytesOf(publishedText);
        bytes[i] ^= 1;
        EXPECT_FALSE(verifies(key, signature, bytes)) << i;
    }
    for (std::size_t i = 0; i < signature.size(); ++i) {
        auto wrong = signature;
        wrong[i] ^= 1;
        EXPECT_FALSE(verifies(key, wrong, bytesOf(publishedText))) << i;
    }
}

TEST(Signature, OfSomebodyElseDoesNotHold) {
    const Publisher other;
    EXPECT_TRUE(verifies(*parsePublicKey(other.publicKey()), *parseSignature(other.sign("abc")),
                         bytesOf("abc")));
    EXPECT_FALSE(verifies(*parsePublicKey(publishedKey), *parseSignature(other.sign("abc")),
                          bytesOf("abc")));
}

TEST(Signature, BlanksAroundItAreNoMatter) {
    EXPECT_EQ(parseSignature("\n  " + publishedSignature + " \r\n\t"),
              parseSignature(publishedSignature));
    EXPECT_EQ(parsePublicKey(" " + publishedKey + "\n"), parsePublicKey(publishedKey));
}

TEST(Signature, OfWrongLengthIsNone) {
    EXPECT_FALSE(parseSignature(publishedKey));
    EXPECT_FALSE(parsePublicKey(publishedSignature));
    EXPECT_FALSE(parseSignature(""));
    EXPECT_FALSE(parsePublicKey(""));
    EXPECT_FALSE(parseSignature(publishedSignature.substr(0, 84)));
}

TEST(Signature, ThatIsNoBase64IsNone) {
    std::string inside = publishedSignature;
    inside.insert(10, "\n");
    EXPECT_FALSE(parseSignature(inside));
    std::string other = publishedSignature;
    other[3] = '-';
    EXPECT_FALSE(parseSignature(other));
}

TEST_F(SignatureOfFile, Holds) {
    EXPECT_TRUE(holds(publishedText, publishedText.size()));
}

TEST_F(SignatureOfFile, IsReadFromTheBeginningWhateverTheOffset) {
    const posix::FileDescriptor file = fileWith(publishedText);
    lseek(file.get(), 5, SEEK_SET);
    EXPECT_TRUE(verifiesFile(*parsePublicKey(publishedKey), *parseSignature(publishedSignature),
                             file.get(), publishedText.size()));
}

TEST_F(SignatureOfFile, ThatIsLongerOrShorterDoesNotHold) {
    EXPECT_FALSE(holds(publishedText + "x", publishedText.size()));
    EXPECT_FALSE(holds(publishedText, publishedText.size() + 1));
    EXPECT_FALSE(holds(publishedText, publishedText.size() - 1));
    EXPECT_FALSE(holds("", publishedText.size()));
}

TEST_F(SignatureOfFile, ThatCannotBeReadDoesNotHold) {
    const posix::FileDescriptor writeOnly(
        open((folder.path() / "new").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    EXPECT_FALSE(verifiesFile(*parsePublicKey(publishedKey), *parseSignature(publishedSignature),
                              writeOnly.get(), publishedText.size()));
    EXPECT_FALSE(verifiesFile(*parsePublicKey(publishedKey), *parseSignature(publishedSignature),
                              -1, publishedText.size()));
}

} // namespace kelo::test
