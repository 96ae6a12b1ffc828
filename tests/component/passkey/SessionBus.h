#pragma once

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelo {

using gobject::GVariantPointer;

/// A child process with its standard input and output piped; killed and collected when it goes.
class Child {
public:
    Child() = default;
    Child(const std::vector<std::string>& command, const std::vector<std::string>& environment);
    Child(Child&&) = default;
    Child& operator=(Child&&) = default;
    ~Child();

    /// Writes a text and leaves the input open.
    void write(const std::string& text) const;
    void closeInput() const;
    /// The next line, without its end; empty at the end of the output.
    std::string readLine() const;
    pid_t identifier() const;
    /// Kills it and waits until it is gone.
    void kill() const;
    /// Stops it until it is resumed or killed. Whoever asks it something gets no answer meanwhile.
    void suspend() const;
    void resume() const;

private:
    gobject::GObjectPointer<GSubprocess> process;
    gobject::GObjectPointer<GDataInputStream> output;
};

/// A session bus of its own, on which nothing is started by itself.
class SessionBus {
public:
    explicit SessionBus(const std::filesystem::path& folder);

    const std::string& address() const { return address_; }
    GDBusConnection* connection() const { return connection_.get(); }
    /// Waits until somebody owns the name.
    bool waitForName(const char* name) const;
    /// Waits until nobody owns it any more.
    bool waitForNoName(const char* name) const;
    /// Stops it until it is resumed. It accepts connections and answers nothing meanwhile.
    void suspend() const { daemon.suspend(); }
    void resume() const { daemon.resume(); }
    /// Whether the owner of a name answers.
    bool ping(const char* name) const;
    /// Locks the keyring's default collection.
    bool lockKeyring() const;
    /// Gives the keyring daemon a default collection that opens without a question.
    bool makeKeyringWithoutPassword(const std::string& label = "login") const;
    /// Gives it a collection without a password. Its path; empty if it failed.
    std::string makeCollection(const std::string& label) const;

private:
    GVariantPointer call(const char* interface, const char* method, GVariant* parameters) const;

    Child daemon;
    std::string address_;
    gobject::GObjectPointer<GDBusConnection> connection_;
};

} // namespace kelo
