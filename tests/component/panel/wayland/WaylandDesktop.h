#pragma once

#include "component/http/TestMainLoop.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::test {

/// A program beside the test that is spoken to in lines. It is ended with this object.
class Child {
public:
    explicit Child(const std::vector<std::string>& command);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void say(const std::string& line);
    /// All that it has printed so far, while the main loop ran.
    const std::vector<std::string>& lines() const { return printed; }
    /// The last line that begins like this, without the beginning.
    std::optional<std::string> last(const std::string& beginning) const;

private:
    void readOn();

    gobject::GObjectPointer<GSubprocess> process;
    gobject::GObjectPointer<GDataInputStream> output;
    gobject::GObjectPointer<GCancellable> ending;
    std::vector<std::string> printed;
};

/// What an output shows, in pixels.
struct Picture {
    struct Box {
        int x = 0, y = 0, width = 0, height = 0;
        friend bool operator==(const Box&, const Box&) = default;
    };

    unsigned at(int x, int y) const;
    /// The smallest box that holds all pixels of this color; empty without one.
    std::optional<Box> boxOf(unsigned color) const;

    int width = 0;
    int height = 0;
    std::string pixels;
};

/// sway around the test, with a keyboard, a mouse and other programs. All that waits lets the
/// main loop run, because the test's own windows answer the compositor meanwhile.
class WaylandDesktop {
public:
    explicit WaylandDesktop(TestMainLoop& loop);

    /// Commands of sway, which wait until they have had their effect.
    void sway(const std::string& command);
    std::vector<std::string> outputs();
    /// Adds an output of this size to the right of the first, and returns its name.
    std::string addOutput(int width, int height);
    void removeOutput(const std::string& name);

    void type(const std::string& text) { devices("type " + text); }
    void press(const std::string& key) { devices("press " + key); }
    /// In points of the first output, or beyond it.
    void click(int x, int y);

    Picture picture(const std::string& output = "HEADLESS-1");
    /// For people, where KELO_PICTURES names a folder for it.
    void keepPicture(const std::string& name);

    /// Starts a program as in OtherWindow.cpp, and waits until it is there with the keyboard.
    std::unique_ptr<Child> open(const std::string& kind);
    void until(const std::string& what, const std::function<bool()>& condition);
    /// Waits until it holds and goes on holding for a while: on the way to a state in which all is
    /// at rest, a compositor may give the keyboard and take it back.
    void untilAtRest(const std::string& what, const std::function<bool()>& condition);

private:
    std::string run(const std::vector<std::string>& command);
    void devices(const std::string& line);

    TestMainLoop& loop;
    std::unique_ptr<Child> hands;
    int width = 1280;
    int height = 1024;
};

} // namespace kelo::test
