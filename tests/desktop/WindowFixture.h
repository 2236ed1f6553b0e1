// The main window with the plug-in linked in (so tests reach its dialog object), a copy of
// the sample library in a scratch local folder, and a helper that answers the window's
// questions and point requests as a user would, when the window asks for them.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "MainWindow.h"
#include "QtHost.h"
#include "TestPaths.h"

namespace desktop_test {

class WindowFixture : public ::testing::Test {
protected:
    WindowFixture();
    ~WindowFixture() override;

    // An action that waits for its moment: false while the window is not ready for it.
    using Step = std::function<bool()>;
    // Queues steps done in turn, each when its moment comes, while the window runs.
    void Then(Step step) { steps_.push_back(std::move(step)); }
    Step ClickAt(QPoint screen);
    Step TypePoint(const cad::Point3d& point);
    Step PressEscape();
    // Runs the event loop until no command is running or queued and every step was done;
    // false after the time limit.
    bool RunUntilIdle(int milliseconds = 20000);

    // One "dialog ..." script line on the plug-in's dialog view; the test fails unless taken.
    void Dialog(const std::string& line);
    // PLCRENDAL, then the sample module picked in the dialog's tree and its tag, frame and
    // slot typed in, as the options of `qvplc draw` in QvplcDraw give them.
    void OpenDialogOnSampleModule();
    // Runs qvplc draw with `options` into `drawing`; its exit code.
    int QvplcDraw(const std::string& options, const std::string& drawing, std::string* output);

    testing_support::TempDir local;
    testing_support::ScopedEnv localEnv;
    testing_support::ScopedEnv commonEnv;
    testing_support::ScopedEnv styleEnv;
    std::unique_ptr<desktop::MainWindow> window;
    std::vector<cad::Point3d> clicked;  // what the view reported for each click

private:
    void Poll();
    std::deque<Step> steps_;
};

inline constexpr const char* kSampleModule = "Norvik Controls/NX 10/Digital input/NX1-DI16";

// "%.17g,%.17g": a point typed or given to qvplc exactly as it was clicked.
std::string PointText(const cad::Point3d& p);

}  // namespace desktop_test
