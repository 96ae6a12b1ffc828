#include "linux/startup/RendererChoice.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <unistd.h>

namespace kelo::test {

namespace {

/// Sets an environment variable for the length of a test; nothing: unset.
class Variable {
public:
    Variable(const char* name, std::optional<std::string> value) : name(name) {
        if (const char* current = std::getenv(name))
            before = current;
        put(value);
    }
    ~Variable() { put(before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void put(const std::optional<std::string>& value) {
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }
    const char* name;
    std::optional<std::string> before;
};

} // namespace

TEST(RendererChoice, SoftwareGraphicsDrawWithCairo) {
    const Variable software("LIBGL_ALWAYS_SOFTWARE", "1");
    const Variable renderer("GSK_RENDERER", std::nullopt);
    const Variable debug("GDK_DEBUG", std::nullopt);
    startup::chooseRenderer();
    EXPECT_STREQ(std::getenv("GSK_RENDERER"), "cairo");
    EXPECT_STREQ(std::getenv("GDK_DEBUG"), "gl-disable");
    EXPECT_EQ(startup::rendererVariables(),
              (std::vector<std::string>{"GSK_RENDERER", "GDK_DEBUG"}));
}

TEST(RendererChoice, ChoiceOfTheUserStays) {
    const Variable software("LIBGL_ALWAYS_SOFTWARE", "1");
    const Variable renderer("GSK_RENDERER", "gl");
    const Variable debug("GDK_DEBUG", std::nullopt);
    startup::chooseRenderer();
    EXPECT_STREQ(std::getenv("GSK_RENDERER"), "gl");
    EXPECT_EQ(std::getenv("GDK_DEBUG"), nullptr);
}

TEST(RendererChoice, RenderNodeMeansHardware) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kelo-dri." + std::to_string(getpid()));
    EXPECT_FALSE(startup::hasRenderNode(folder));
    std::filesystem::create_directories(folder);
    EXPECT_FALSE(startup::hasRenderNode(folder));
    std::ofstream(folder / "card0") << "";
    EXPECT_FALSE(startup::hasRenderNode(folder));
    std::ofstream(folder / "renderD128") << "";
    EXPECT_TRUE(startup::hasRenderNode(folder));
    std::filesystem::remove_all(folder);
}

} // namespace kelo::test
