#include "BusValue.h"
#include "FakeBus.h"
#include "FuzzInput.h"
#include "GLibComplaints.h"
#include "linux/input/portal/PortalModifierSource.h"
#include "linux/input/portal/PortalRequest.h"

#include <optional>
#include <set>
#include <string>

// What the desktop's portal, or a program that poses as it, sends. Each line is a message, with
// values as BusValue.h explains them; $R is the path of the last request, $S that of the session.
//
//   O:1.2             the portal has this name on the bus now; without a name it is gone
//   r(o$R)            the oldest call is answered; e: it is refused
//   R$R (u0 {})       Response of the request of this path; X and a path: Closed of a session
//   Ao$S swidget...   Activated; D: Deactivated; a: Activated by another program
//   V                 the portal is asked what it offers; the next lines are the answers

using namespace kelo;
using fuzz::FakeBus;
using fuzz::require;
using input::PortalModifierSource;

namespace {

constexpr platform::ModifierFlags chord = platform::modifier::control | platform::modifier::option;

class Desktop {
public:
    Desktop() {
        bus.called = [this](const bus::Object& object, const std::string& method,
                            GVariant* parameters) { called(object, method, parameters); };
        source.emplace("fake:");
        require(source->start([this](platform::ModifierFlags flags) {
            require(flags == 0 || flags == chord);
            require((flags == chord) != isDown);
            isDown = flags == chord;
        }));
    }

    ~Desktop() {
        source.reset();
        require(openSession.empty() && openRequest.empty());
        require(bus.pending.empty() && bus.subscriptions.empty());
    }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    void take(fuzz::FuzzInput& input) {
        const std::string_view line = input.takeLine();
        const char kind = line.empty() ? ' ' : line.front();
        const std::string_view rest = line.substr(std::min<std::size_t>(line.size(), 1));
        switch (kind) {
        case 'O':
            return changeOwner(std::string(rest.substr(0, 8)));
        case 'r':
            return answer(valueOf(rest));
        case 'e':
            return answer(nullptr);
        case 'R':
        case 'X':
            return respond(kind, rest);
        case 'A':
        case 'D':
        case 'a':
            return trigger(kind, rest);
        case 'V':
            return ask(input);
        default:
            return;
        }
    }

private:
    gobject::GVariantPointer valueOf(std::string_view text) const {
        return fuzz::busValue(text, names);
    }

    /// The text of an option that is a token, made a path as the portal's interface prescribes.
    static std::string pathOf(GVariant* options, const char* key, const char* kind) {
        const char* token = nullptr;
        if (!g_variant_lookup(options, key, "&s", &token))
            return "";
        return std::string("/org/freedesktop/portal/desktop/") + kind + "/1_1/" + token;
    }

    void called(const bus::Object& object, const std::string& method, GVariant* parameters) {
        require(g_variant_is_object_path(object.path.c_str()));
        require(owners.contains(object.owner));
        if (method == "Close") {
            require(!parameters);
            std::string& open =
                object.interface == input::portal::session ? openSession : openRequest;
            require(object.path == open);
            return open.clear();
        }
        const std::string type = g_variant_get_type_string(parameters);
        require(object.owner == owner);
        if (method == "Register") {
            require(type == "(sa{sv})" && ++introductions <= 2);
        } else if (method == "CreateSession") {
            require(type == "(a{sv})" && openSession.empty());
            remember(parameters, 0);
        } else {
            require(method == "BindShortcuts" && type == "(oa(sa{sv})sa{sv})");
            const char* path = nullptr;
            g_variant_get_child(parameters, 0, "&o", &path);
            require(openSession.empty());
            openSession = path;
            remember(parameters, 3);
        }
    }

    void remember(GVariant* parameters, gsize index) {
        const gobject::GVariantPointer options(g_variant_get_child_value(parameters, index));
        names['R'] = pathOf(options.get(), "handle_token", "request");
        require(!names['R'].empty());
        openRequest = names['R'];
        if (const auto path = pathOf(options.get(), "session_handle_token", "session");
            !path.empty())
            names['S'] = path;
    }

    /// A request is over when its call is refused, and otherwise has the path that the answer
    /// names.
    void answer(gobject::GVariantPointer value) {
        const bool isRequest = !bus.pending.empty() && bus.pending.front().method != "Register";
        if (isRequest && !openRequest.empty()) {
            openRequest.clear();
            if (value && g_variant_is_of_type(value.get(), G_VARIANT_TYPE("(o)"))) {
                const char* path = nullptr;
                g_variant_get(value.get(), "(&o)", &path);
                openRequest = path;
            }
        }
        bus.answer(std::move(value));
    }

    void changeOwner(const std::string& name) {
        owner = name;
        owners.insert(name);
        introductions = 0;
        // The former portal's session is closed by the source, which may still tell it.
        bus.changeOwner(name);
        require(!isDown && openSession.empty());
        require(owner.empty() || introductions == 1);
    }

    void respond(char kind, std::string_view text) {
        const auto blank = std::min(text.find(' '), text.size());
        std::string path(text.substr(0, blank));
        if (path == "$R" || path == "$S")
            path = names[path[1]];
        const bool closes = kind == 'X' && !openSession.empty() && path == openSession;
        if (closes)
            openSession.clear();
        if (kind == 'R' && path == openRequest)
            openRequest.clear();
        const auto values = valueOf(text.substr(blank));
        bus.send(owner, path, kind == 'R' ? "Response" : "Closed", values.get());
        require(!closes || !isDown);
    }

    void trigger(char kind, std::string_view text) {
        const auto values = valueOf(text);
        bool counts = false;
        if (kind != 'a' && g_variant_is_of_type(values.get(), G_VARIANT_TYPE("(osta{sv})"))) {
            const char* path = nullptr;
            const char* shortcut = nullptr;
            g_variant_get_child(values.get(), 0, "&o", &path);
            g_variant_get_child(values.get(), 1, "&s", &shortcut);
            counts = !openSession.empty() && path == openSession &&
                     std::string_view(shortcut) == "widget";
        }
        const bool expected = counts ? kind == 'A' : isDown;
        bus.send(kind == 'a' ? ":1.99999999" : owner, input::portal::path,
                 kind == 'D' ? "Deactivated" : "Activated", values.get());
        require(isDown == expected);
    }

    void ask(fuzz::FuzzInput& input) {
        for (int count = 0; count < 2; ++count) {
            const std::string_view line = input.takeLine();
            bus.answers.push_back(line == "e" ? nullptr : valueOf(line));
        }
        const input::Availability availability = source->availability();
        require(!availability.reason.empty());
        bus.answers.clear();
    }

    FakeBus bus;
    std::optional<PortalModifierSource> source;
    std::map<char, std::string> names{{'R', "/none"}, {'S', "/none"}, {'W', "widget"}};
    std::string owner;
    std::set<std::string> owners{""};
    /// The path of the request that waits for its response; empty without one.
    std::string openRequest;
    /// The path of the session for which the shortcut was asked; empty without one.
    std::string openSession;
    bool isDown = false;
    int introductions = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::failOnComplaints();
    fuzz::FuzzInput input(data, size);
    Desktop desktop;
    for (int count = 0; count < 20 && !input.isEmpty(); ++count)
        desktop.take(input);
    return 0;
}
