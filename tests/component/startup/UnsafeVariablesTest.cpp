#include "linux/startup/UnsafeVariables.h"

#include "component/ScopedVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace kelo::test {

TEST(UnsafeVariables, AreGoneForThisProcessAndItsChildren) {
    for (const char* name :
         {"WEBKIT_INSPECTOR_SERVER", "WEBKIT_INSPECTOR_HTTP_SERVER",
          "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS", "WEBKIT_FORCE_SANDBOX",
          "WEBKIT_ENABLE_DEBUG_PERMISSIONS_IN_SANDBOX", "WEBKIT_GST_ALLOWED_URI_PROTOCOLS",
          "WEBKIT_EXEC_PATH", "WEBKIT_INJECTED_BUNDLE_PATH", "WEB_PROCESS_CMD_PREFIX",
          "NETWORK_PROCESS_CMD_PREFIX", "JSC_useDollarVM", "JSC_dumpOptions", "SSLKEYLOGFILE",
          "G_TLS_GNUTLS_PRIORITY", "GTK_DEBUG", "GTK_PATH", "GTK_EXE_PREFIX", "GIO_EXTRA_MODULES",
          "GIO_MODULE_DIR"}) {
        const ScopedVariable variable(name, "1");
        startup::unsetUnsafeVariables();
        EXPECT_EQ(std::getenv(name), nullptr) << name;
    }
}

TEST(UnsafeVariables, SeveralThatBeginAlikeAllGo) {
    const ScopedVariable one("JSC_one", "1");
    const ScopedVariable two("JSC_two", "1");
    const ScopedVariable three("JSC_three", "1");
    startup::unsetUnsafeVariables();
    EXPECT_EQ(std::getenv("JSC_one"), nullptr);
    EXPECT_EQ(std::getenv("JSC_two"), nullptr);
    EXPECT_EQ(std::getenv("JSC_three"), nullptr);
}

TEST(UnsafeVariables, WhatTheDesktopNeedsStays) {
    for (const char* name :
         {"GTK_IM_MODULE", "GDK_BACKEND", "GDK_DEBUG", "GDK_DISABLE", "GIO_USE_TLS", "https_proxy",
          "XDG_DATA_HOME", "JSCX", "GTK_DEBUGGER"}) {
        const ScopedVariable variable(name, "1");
        startup::unsetUnsafeVariables();
        EXPECT_STREQ(std::getenv(name), "1") << name;
    }
}

TEST(UnsafeVariables, StarStandsAtTheEndOfANameOnly) {
    for (const std::string_view name : startup::unsafeVariables())
        EXPECT_EQ(std::ranges::count(name.substr(0, name.size() - 1), '*'), 0) << name;
}

} // namespace kelo::test
