#pragma once

#include "testing/screen/XConnection.h"

#include <map>
#include <string>

namespace kelo::test {

/// What tells programs under X11 the user's settings, for as long as it lives. There is one at a
/// time.
class FakeSettingsManager {
public:
    /// Names are XSETTINGS names, such as "Net/CursorBlink".
    using Values = std::map<std::string, int>;

    explicit FakeSettingsManager(const Values& values);
    ~FakeSettingsManager();
    FakeSettingsManager(const FakeSettingsManager&) = delete;
    FakeSettingsManager& operator=(const FakeSettingsManager&) = delete;

    void change(const Values& values);

private:
    void announce() const;

    const screen::XConnection connection;
    const screen::WindowId window;
    unsigned changes = 0;
};

} // namespace kelo::test
