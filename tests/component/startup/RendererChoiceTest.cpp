#include "linux/startup/RendererChoice.h"

#include "component/ScopedVariable.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace kelo::test {

TEST(RendererChoice, SoftwareGraphicsDrawWithCairo) {
    const ScopedVariable software("LIBGL_ALWAYS_SOFTWARE", "1");
    const ScopedVariable renderer("GSK_RENDERER", std::nullopt);
    const ScopedVariable debug("GDK_DEBUG", std::nullopt);
    startup::chooseRenderer();
    EXPECT_STREQ(std::getenv("GSK_RENDERER"), "cairo");
    EXPECT_STREQ(std::getenv("GDK_DEBUG"), "gl-disable");
    EXPECT_EQ(startup::rendererVariables(),
              (std::vector<std::string>{"GSK_RENDERER", "GDK_DEBUG"}));
}

TEST(RendererChoice, ChoiceOfTheUserStays) {
    const ScopedVariable software("LIBGL_ALWAYS_SOFTWARE", "1");
    const ScopedVariable renderer("GSK_RENDERER", "gl");
    const ScopedVariable debug("GDK_DEBUG", std::nullopt);
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
