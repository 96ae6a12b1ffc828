#include "linux/startup/EglDrivers.h"

#include "component/ScopedVariable.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

namespace kelo::test {

namespace {

constexpr const char* variable = "__EGL_VENDOR_LIBRARY_FILENAMES";

/// What this process is given for EGL's default display: null where there is no driver.
void* eglDisplay() {
    void* const library = dlopen("libEGL.so.1", RTLD_LAZY);
    auto* const get = reinterpret_cast<void* (*)(void*)>(dlsym(library, "eglGetDisplay"));
    return get(nullptr);
}

/// 0 if there is a driver, 1 if there is none.
[[noreturn]] void reportDriver() {
    std::_Exit(eglDisplay() ? 0 : 1);
}

} // namespace

/// In processes of their own: EGL's library makes up its mind once.
class EglDrivers : public testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        if (!std::filesystem::exists("/usr/share/glvnd/egl_vendor.d"))
            GTEST_SKIP() << "there is no driver for EGL";
    }
};

TEST_F(EglDrivers, AreFoundByAProcessThatHidesNone) {
    EXPECT_EXIT(reportDriver(), testing::ExitedWithCode(0), "");
}

TEST_F(EglDrivers, AreNotFoundOnceTheyAreHidden) {
    EXPECT_EXIT(
        {
            startup::hideEglDrivers();
            reportDriver();
        },
        testing::ExitedWithCode(1), "");
}

TEST_F(EglDrivers, AreFoundByProgramsThatAreStarted) {
    for (const auto& before : {std::optional<std::string>(), std::optional<std::string>("/mine")}) {
        const ScopedVariable users(variable, before);
        startup::hideEglDrivers();
        const char* const after = std::getenv(variable);
        EXPECT_EQ(after ? std::optional<std::string>(after) : std::nullopt, before);
    }
}

} // namespace kelo::test
