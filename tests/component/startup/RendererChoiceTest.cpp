#include "linux/startup/RendererChoice.h"

#include "component/ScopedVariable.h"
#include "linux/startup/OwnVariables.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace kelo::test {

class RendererChoice : public testing::Test {
protected:
    const ScopedVariable software{"LIBGL_ALWAYS_SOFTWARE", "1"};
    const ScopedVariable renderer{"GSK_RENDERER", std::nullopt};
    const ScopedVariable debug{"GDK_DEBUG", std::nullopt};
    const ScopedVariable disable{"GDK_DISABLE", std::nullopt};
    const ScopedVariable buffers{"WEBKIT_DISABLE_DMABUF_RENDERER", std::nullopt};
    const bool hasDisable = gtk_get_minor_version() >= 18;
};

TEST_F(RendererChoice, SoftwareGraphicsDrawWithCairoAndWithoutOpenGl) {
    startup::chooseRenderer();
    EXPECT_STREQ(std::getenv("GSK_RENDERER"), "cairo");
    EXPECT_STREQ(std::getenv("GDK_DEBUG"), hasDisable ? nullptr : "gl-disable");
    EXPECT_STREQ(std::getenv("GDK_DISABLE"), hasDisable ? "gl" : nullptr);
    EXPECT_STREQ(std::getenv("WEBKIT_DISABLE_DMABUF_RENDERER"), "1");
    EXPECT_EQ(startup::ownVariables(),
              (std::vector<std::string>{"GSK_RENDERER", hasDisable ? "GDK_DISABLE" : "GDK_DEBUG",
                                        "WEBKIT_DISABLE_DMABUF_RENDERER"}));
}

TEST_F(RendererChoice, ChoiceOfTheUserStays) {
    for (const char* chosen : {"GSK_RENDERER", "GDK_DEBUG", "GDK_DISABLE"}) {
        const ScopedVariable choice(chosen, "chosen");
        startup::chooseRenderer();
        for (const char* name :
             {"GSK_RENDERER", "GDK_DEBUG", "GDK_DISABLE", "WEBKIT_DISABLE_DMABUF_RENDERER"})
            EXPECT_STREQ(std::getenv(name), std::string(name) == chosen ? "chosen" : nullptr)
                << chosen;
    }
}

TEST_F(RendererChoice, WhatTheUserSetForTheEngineStaysTheirs) {
    const ScopedVariable chosen("WEBKIT_DISABLE_DMABUF_RENDERER", "0");
    startup::chooseRenderer();
    EXPECT_STREQ(std::getenv("WEBKIT_DISABLE_DMABUF_RENDERER"), "0");
    EXPECT_EQ(startup::ownVariables().size(), 2U);
}

TEST_F(RendererChoice, RenderNodeMeansHardware) {
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
