#include "log/DebugLog.h"

#include "base/Clock.h"
#include "base/Utf8.h"
#include "platform/Desktop.h"
#include "platform/FileSystem.h"

#include <cstdio>

namespace kelo::log {

namespace {

std::string timestamp(std::chrono::system_clock::time_point now) {
    using namespace std::chrono;
    const auto day = floor<days>(now);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(now) - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d +0000",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

} // namespace

void debugLog(std::string_view message) {
    if (!isWellFormedUtf8(message))
        return;
    platform::Desktop& desktop = platform::Desktop::current();
    std::string record = "[" + timestamp(desktop.clock().now()) + "] ";
    record += message;
    record += '\n';
    const Bytes bytes = bytesOf(record);

    const std::string path(debugLogPath);
    if (const auto file = desktop.fileSystem().openForWriting(path)) {
        file->seekToEnd();
        file->write(bytes);
        return;
    }
    desktop.fileSystem().writeWholeFile(path, bytes);
}

} // namespace kelo::log
