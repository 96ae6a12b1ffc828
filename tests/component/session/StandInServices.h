#pragma once

#include "component/passkey/SessionBus.h"

#include <gio/gio.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

/// A service on a bus that a test answers for. It leaves the bus with this object.
class StandInService {
public:
    StandInService(const SessionBus& bus, const char* name);
    virtual ~StandInService();
    StandInService(const StandInService&) = delete;
    StandInService& operator=(const StandInService&) = delete;

    bool waitUntilOwned(const SessionBus& bus) const { return bus.waitForName(name); }
    /// Gives up its name and stays on the bus.
    void giveUpName();
    /// Answers all that was asked while it was silent.
    void answerLate();
    /// Whether methods are left without an answer.
    bool isSilent = false;
    int questions = 0;

protected:
    void serve(const char* path, const char* description);
    void send(const char* path, const char* interface, const char* signal, GVariant* values) const;
    /// Null for an error.
    virtual GVariant* answer(const std::string& method, GVariant* arguments) = 0;

private:
    struct Question {
        std::string method;
        gobject::GVariantPointer arguments;
        GDBusMethodInvocation* invocation;
    };
    void reply(const Question& question);
    static void called(GDBusConnection* connection, const char* sender, const char* path,
                       const char* interface, const char* method, GVariant* arguments,
                       GDBusMethodInvocation* invocation, gpointer self);

    const char* name;
    gobject::GObjectPointer<GDBusConnection> connection;
    guint ownership;
    std::vector<guint> objects;
    std::vector<Question> unanswered;
};

/// The login manager, with one session.
class StandInLoginManager final : public StandInService {
public:
    explicit StandInLoginManager(const SessionBus& bus);

    void set(const char* property, bool value, bool isTold = true);
    /// Says that a property has changed, and not what it is now.
    void invalidate(const char* property) const;
    void changeSomebodyElses(const char* property, bool value) const;
    /// Says that the computer is about to sleep, or has woken up.
    void prepareForSleep(bool begins) const;

    bool hasSession = true;
    std::map<std::string, bool> properties{{"LockedHint", false}, {"Active", true}};
    /// The name of the session's seat; empty if it has none. Nothing: an old manager that knows of
    /// none.
    std::optional<std::string> seat;

private:
    GVariant* answer(const std::string& method, GVariant* arguments) override;
};

class StandInScreenSaver final : public StandInService {
public:
    StandInScreenSaver(const SessionBus& bus, const char* name, const char* path);

    void set(bool isActive);
    /// The same, told by another object than the one that is asked.
    void setFrom(const char* object, bool isActive);

    bool active = false;
    bool knowsIt = true;

private:
    GVariant* answer(const std::string& method, GVariant* arguments) override;

    const char* interface;
    const char* path;
};

} // namespace kelo::test
