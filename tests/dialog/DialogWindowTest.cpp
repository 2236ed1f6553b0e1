#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "dialog/DialogWindow.h"

namespace {

using dialog::WindowEvent;

struct Recorder {
    std::vector<WindowEvent> events;
    std::vector<bool> visibleAtEvent;
    void Watch(dialog::DialogWindow& window) {
        window.windowChanged.Connect([this, &window](WindowEvent event) {
            events.push_back(event);
            visibleAtEvent.push_back(window.visible);
        });
    }
};

TEST(DialogWindow, EveryStateMethodRaisesItsEventAfterTheFlagsChanged) {
    dialog::DialogWindow window;
    Recorder recorder;
    recorder.Watch(window);
    window.CreateWindow();
    window.Show();
    window.Activate();
    window.Minimize();
    window.Restore();
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_FALSE(window.DestroyWindow());  // nothing left: no second event
    EXPECT_EQ(recorder.events,
              (std::vector<WindowEvent>{WindowEvent::Created, WindowEvent::Shown,
                                        WindowEvent::Activated, WindowEvent::Minimized,
                                        WindowEvent::Restored, WindowEvent::Destroyed}));
    EXPECT_EQ(recorder.visibleAtEvent, (std::vector<bool>{false, true, true, true, true, false}));
    EXPECT_FALSE(window.windowCreated);
    EXPECT_FALSE(window.active);
}

TEST(DialogWindow, AnObjectDeletedWithItsWindowStandingReportsTheWindowGone) {
    Recorder recorder;
    auto window = std::make_unique<dialog::DialogWindow>();
    recorder.Watch(*window);
    window->CreateWindow();
    window.reset();
    EXPECT_EQ(recorder.events,
              (std::vector<WindowEvent>{WindowEvent::Created, WindowEvent::Destroyed}));

    // Without a window there is nothing to report.
    Recorder quiet;
    auto never = std::make_unique<dialog::DialogWindow>();
    quiet.Watch(*never);
    never.reset();
    EXPECT_TRUE(quiet.events.empty());
}

}  // namespace
