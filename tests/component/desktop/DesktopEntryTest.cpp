#include <glib.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kelo::test {

namespace {

struct KeyFileDeleter {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
struct TextsDeleter {
    void operator()(char** texts) const { g_strfreev(texts); }
};
using Texts = std::unique_ptr<char*, TextsDeleter>;

bool isForPeople(const std::string& key) {
    return key == "Name" || key == "GenericName" || key == "Comment" || key == "Keywords";
}

} // namespace

TEST(DesktopEntry, SaysEveryTextInEveryLanguage) {
    const std::unique_ptr<GKeyFile, KeyFileDeleter> entry(g_key_file_new());
    ASSERT_TRUE(g_key_file_load_from_file(entry.get(), KELO_DESKTOP_ENTRY,
                                          G_KEY_FILE_KEEP_TRANSLATIONS, nullptr));
    const Texts groups(g_key_file_get_groups(entry.get(), nullptr));
    int texts = 0;
    for (char** group = groups.get(); *group; ++group) {
        const Texts keys(g_key_file_get_keys(entry.get(), *group, nullptr, nullptr));
        for (char** key = keys.get(); *key; ++key) {
            // The program's own name is the same everywhere.
            const bool isOwnName =
                std::string(*key) == "Name" && std::string(*group) == "Desktop Entry";
            if (!isForPeople(*key) || isOwnName)
                continue;
            ++texts;
            for (const char* language : {"de", "nl", "fr", "es"})
                EXPECT_TRUE(g_key_file_has_key(entry.get(), *group,
                                               (std::string(*key) + "[" + language + "]").c_str(),
                                               nullptr))
                    << *group << ", " << *key << ", " << language;
        }
    }
    EXPECT_EQ(texts, 9);
}

} // namespace kelo::test
