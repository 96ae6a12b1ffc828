#pragma once

#include "component/gtk/RunningProgram.h"
#include "linux/downloads/DownloadList.h"
#include "linux/downloads/QuitQuestion.h"
#include "linux/gtk/dialogs/GtkAlertPresenter.h"
#include "linux/window/OpenPages.h"
#include "testing/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace kelo::tests {

/// The program with downloads that the test begins and ends.
class DownloadFixture : public testing::Test {
protected:
    gtk::HostSettings settings() {
        gtk::HostSettings given;
        given.downloads = list;
        given.pages = pages;
        given.beforeQuit = {[this] { return downloads::mayEndDownloads(list, *alerts); }};
        return given;
    }
    /// Runs the program to its own end after the body, which must not end it.
    void run(const std::function<void()>& body) {
        bool goesOn = false;
        program.runToItsOwnEnd([&] {
            try {
                body();
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
            dropSpawnedTasks();
            list->cancelAll();
            // A program that was told to end does not come to this any more.
            MainLoop::main().post([&] {
                goesOn = true;
                program.host.terminate();
            });
        });
        EXPECT_TRUE(goesOn);
    }
    unsigned begin(const std::string& name) {
        return list->begin(name, [this, name] { cancelled.push_back(name); });
    }
    std::string finish(unsigned identifier, const std::string& name) {
        const std::string path = (folder / name).string();
        std::ofstream(path) << "contents";
        list->finish(identifier, path);
        return path;
    }

    Gtk::Window& main() { return program.window("Kelo"); }
    Gtk::Widget* bar() { return withClass(main(), "kelo-downloads"); }
    void untilPageHasKeyboard() {
        RunningProgram::until("the page has the keyboard",
                              [&] { return program.app.page->area.has_focus(); });
    }
    void pressButton(const std::string& name) {
        auto* const button = buttonNamed(main(), name);
        ASSERT_TRUE(button) << name;
        program.click(*button);
    }

    const test::TemporaryFolder folder;
    std::vector<std::string> cancelled;
    std::vector<std::string> opened;
    std::vector<std::string> shown;
    const std::shared_ptr<downloads::DownloadList> list = std::make_shared<downloads::DownloadList>(
        downloads::FileHandling{[](const std::string& path) { return !path.ends_with(".html"); },
                                [this](const std::string& path) { opened.push_back(path); },
                                [this](const std::string& path) { shown.push_back(path); }});
    const std::shared_ptr<window::OpenPages> pages = std::make_shared<window::OpenPages>();
    std::unique_ptr<gtk::GtkAlertPresenter> alerts;
    RunningProgram program{settings()};

    void SetUp() override {
        alerts = std::make_unique<gtk::GtkAlertPresenter>(program.host, hurryingClock());
    }
};

} // namespace kelo::tests
