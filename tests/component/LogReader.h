#pragma once

#include <glib.h>

#include <string>
#include <vector>

namespace kelo::test {

/// What the program, GLib and the toolkit log while it exists. Messages that G_MESSAGES_DEBUG would
/// hide are there, too. Main thread only.
class LogReader {
public:
    struct Message {
        std::string domain;
        GLogLevelFlags level;
        std::string text;
    };

    LogReader() : former(g_log_set_default_handler(&LogReader::note, this)) {}
    ~LogReader() { g_log_set_default_handler(former, nullptr); }
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    /// The texts of all messages so far, oldest first; warnings and worse for complaints().
    std::vector<std::string> texts() const { return textsUpTo(G_LOG_LEVEL_DEBUG); }
    std::vector<std::string> complaints() const { return textsUpTo(G_LOG_LEVEL_WARNING); }

    std::vector<Message> messages;

private:
    std::vector<std::string> textsUpTo(GLogLevelFlags least) const {
        std::vector<std::string> result;
        for (const Message& message : messages)
            // The more severe a level is, the lower is its bit.
            if ((message.level & G_LOG_LEVEL_MASK) <= least)
                result.push_back(message.text);
        return result;
    }
    static void note(const char* domain, GLogLevelFlags level, const char* text, gpointer self) {
        static_cast<LogReader*>(self)->messages.push_back(
            {domain ? domain : "", level, text ? text : ""});
    }

    GLogFunc former;
};

} // namespace kelo::test
