#include "linux/gtk/application/ReplacementNotice.h"

#include "base/Translation.h"
#include "base/async/MainLoop.h"

#include <giomm/file.h>
#include <giomm/notification.h>
#include <glibmm/error.h>

#include <sys/stat.h>

namespace kelo::gtk {

namespace {

constexpr const char* identifier = "replaced";

} // namespace

ReplacementNotice::ReplacementNotice(Gio::Application& application, std::string program,
                                     std::chrono::milliseconds calm)
    : application(application),
      program(std::move(program)),
      calm(calm),
      known(identityOf(this->program)) {
    if (this->program.empty())
        return;
    try {
        monitor = Gio::File::create_for_path(this->program)
                      ->monitor_file(Gio::FileMonitorFlags::WATCH_MOVES);
    } catch (const Glib::Error& error) {
        // The system has no more watches to give. The user then learns of it at the next start.
        g_debug("The program's file is not watched: %s", error.what());
        return;
    }
    monitor->signal_changed().connect(
        [this](const auto&, const auto&, Gio::FileMonitor::Event) { waitForCalm(); });
}

ReplacementNotice::~ReplacementNotice() {
    if (timer)
        timer->invalidate();
    if (monitor)
        monitor->cancel();
    withdraw();
}

// GLib 2.74 frees a notification twice that is sent again while it is shown, so it is withdrawn
// first. Not reported there as far as we know. To be sent without that once Debian 12 is left
// behind and ReplacedProgram.IsToldOfOnceForEachVersion passes.
void ReplacementNotice::withdraw() {
    if (std::exchange(isTold, false))
        application.withdraw_notification(identifier);
}

ReplacementNotice::Identity ReplacementNotice::identityOf(const std::string& path) {
    struct stat status {};
    if (path.empty() || ::stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_dev, status.st_ino};
}

void ReplacementNotice::waitForCalm() {
    if (timer)
        timer->invalidate();
    timer = MainLoop::main().scheduleTimer(calm, [this] { look(); });
}

// A program that is gone was removed, and there is nothing to start.
void ReplacementNotice::look() {
    const Identity found = identityOf(program);
    if (found == Identity{} || found == known)
        return;
    known = found;
    withdraw();
    const auto notice = Gio::Notification::create(translated("Kelo has been updated"));
    notice->set_body(
        translated("The version before is still running. Restart Kelo to use the new one."));
    notice->set_default_action("app.open");
    notice->add_button(translated("Restart"), "app.restart");
    application.send_notification(identifier, notice);
    isTold = true;
}

} // namespace kelo::gtk
