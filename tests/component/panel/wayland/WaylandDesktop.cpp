#include "component/panel/wayland/WaylandDesktop.h"

#include <gdk/gdk.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

namespace kelo::test {

namespace {

using gobject::GObjectPointer;

std::vector<const char*> pointers(const std::vector<std::string>& command) {
    std::vector<const char*> words;
    for (const auto& word : command)
        words.push_back(word.c_str());
    words.push_back(nullptr);
    return words;
}

GObjectPointer<GSubprocess> start(const std::vector<std::string>& command, int pipes) {
    GError* error = nullptr;
    auto process = GObjectPointer<GSubprocess>::adopt(
        g_subprocess_newv(pointers(command).data(), GSubprocessFlags(pipes), &error));
    if (!process)
        throw std::runtime_error(command.front() + ": " + error->message);
    return process;
}

} // namespace

Child::Child(const std::vector<std::string>& command)
    : process(start(command, G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE)),
      output(GObjectPointer<GDataInputStream>::adopt(
          g_data_input_stream_new(g_subprocess_get_stdout_pipe(process.get())))),
      ending(GObjectPointer<GCancellable>::adopt(g_cancellable_new())) {
    readOn();
}

Child::~Child() {
    g_cancellable_cancel(ending.get());
    g_subprocess_force_exit(process.get());
    g_subprocess_wait(process.get(), nullptr, nullptr);
}

void Child::say(const std::string& line) {
    const std::string ended = line + "\n";
    g_output_stream_write_all(g_subprocess_get_stdin_pipe(process.get()), ended.data(),
                              ended.size(), nullptr, nullptr, nullptr);
}

std::optional<std::string> Child::last(const std::string& beginning) const {
    for (auto line = printed.rbegin(); line != printed.rend(); ++line)
        if (line->starts_with(beginning))
            return line->substr(beginning.size());
    return std::nullopt;
}

void Child::readOn() {
    const GAsyncReadyCallback read = [](GObject* stream, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        char* const line = g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(stream), result,
                                                                nullptr, &error);
        // With an error, the object may be gone.
        if (error)
            return g_error_free(error);
        if (!line)
            return;
        static_cast<Child*>(self)->printed.emplace_back(line);
        g_free(line);
        static_cast<Child*>(self)->readOn();
    };
    g_data_input_stream_read_line_async(output.get(), G_PRIORITY_DEFAULT, ending.get(), read, this);
}

unsigned Picture::at(int x, int y) const {
    const auto* const pixel =
        reinterpret_cast<const unsigned char*>(pixels.data()) + 3 * (std::size_t(y) * width + x);
    return unsigned(pixel[0]) << 16 | unsigned(pixel[1]) << 8 | pixel[2];
}

std::optional<Picture::Box> Picture::boxOf(unsigned color) const {
    int left = width;
    int right = -1;
    int top = height;
    int bottom = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (at(x, y) == color) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    if (right < 0)
        return std::nullopt;
    return Box{left, top, right - left + 1, bottom - top + 1};
}

WaylandDesktop::WaylandDesktop(TestMainLoop& loop)
    : loop(loop), hands(std::make_unique<Child>(std::vector<std::string>{KELO_DEVICES})) {
    GdkDisplay* const display = gdk_display_get_default();
    until("keyboard and mouse are plugged in", [&] {
        GdkSeat* const seat = gdk_display_get_default_seat(display);
        return !hands->lines().empty() && seat && gdk_seat_get_keyboard(seat);
    });
    // The compositor learns that the test listens to them.
    gdk_display_sync(display);
}

void WaylandDesktop::until(const std::string& what, const std::function<bool()>& condition) {
    if (!loop.runUntil(condition))
        throw std::runtime_error("never happened: " + what);
}

void WaylandDesktop::untilAtRest(const std::string& what, const std::function<bool()>& condition) {
    int looks = 0;
    until(what, [&] { return (looks = condition() ? looks + 1 : 0) > 60; });
}

std::string WaylandDesktop::run(const std::vector<std::string>& command) {
    const auto process = start(command, G_SUBPROCESS_FLAGS_STDOUT_PIPE);
    struct Outcome {
        bool hasEnded = false;
        std::string printed;
    } outcome;
    const GAsyncReadyCallback done = [](GObject* source, GAsyncResult* result, gpointer data) {
        GBytes* bytes = nullptr;
        g_subprocess_communicate_finish(G_SUBPROCESS(source), result, &bytes, nullptr, nullptr);
        gsize size = 0;
        const auto* const text = static_cast<const char*>(g_bytes_get_data(bytes, &size));
        *static_cast<Outcome*>(data) = {true, std::string(text, size)};
        g_bytes_unref(bytes);
    };
    g_subprocess_communicate_async(process.get(), nullptr, nullptr, done, &outcome);
    until(command.front() + " has ended", [&] { return outcome.hasEnded; });
    if (!g_subprocess_get_successful(process.get()))
        throw std::runtime_error(command.front() + " failed: " + outcome.printed);
    return outcome.printed;
}

void WaylandDesktop::devices(const std::string& line) {
    const auto before = hands->lines().size();
    hands->say(line);
    until("done: " + line, [&] { return hands->lines().size() > before; });
}

void WaylandDesktop::click(int x, int y) {
    std::ostringstream line;
    line << "move " << x << ' ' << y << ' ' << width << ' ' << height;
    devices(line.str());
    devices("click");
}

void WaylandDesktop::sway(const std::string& command) {
    run({"swaymsg", "--quiet", command});
}

std::vector<std::string> WaylandDesktop::outputs() {
    std::vector<std::string> names;
    for (const auto& output : nlohmann::json::parse(run({"swaymsg", "-r", "-t", "get_outputs"})))
        names.push_back(output.at("name"));
    return names;
}

std::string WaylandDesktop::addOutput(int newWidth, int newHeight) {
    const auto before = outputs();
    sway("create_output");
    std::string name;
    until("there is another output", [&] {
        for (const auto& each : outputs())
            if (std::ranges::find(before, each) == before.end())
                name = each;
        return !name.empty();
    });
    sway("output " + name + " resolution " + std::to_string(newWidth) + "x" +
         std::to_string(newHeight) + " position 1280 0 background #ffffff solid_color");
    width = 1280 + newWidth;
    return name;
}

void WaylandDesktop::removeOutput(const std::string& name) {
    sway("output " + name + " unplug");
    until("the output is gone", [&] {
        const auto left = outputs();
        return std::ranges::find(left, name) == left.end();
    });
}

Picture WaylandDesktop::picture(const std::string& output) {
    const std::string file = run({"grim", "-t", "ppm", "-o", output, "-"});
    std::istringstream header(file);
    std::string kind;
    Picture picture;
    int most = 0;
    header >> kind >> picture.width >> picture.height >> most;
    picture.pixels = file.substr(std::size_t(header.tellg()) + 1);
    return picture;
}

void WaylandDesktop::keepPicture(const std::string& name) {
    if (const char* const folder = std::getenv("KELO_PICTURES"))
        run({"grim", std::string(folder) + "/" + name + ".png"});
}

std::unique_ptr<Child> WaylandDesktop::open(const std::string& kind) {
    auto child = std::make_unique<Child>(std::vector<std::string>{KELO_OTHER_WINDOW, kind});
    const std::string ready = kind == "bar" ? "mapped" : "active";
    until("the other program is there", [&] { return child->last(ready).has_value(); });
    return child;
}

} // namespace kelo::test
