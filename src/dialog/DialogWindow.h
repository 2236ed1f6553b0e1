// The window of a modeless dialog as a toolkit window would have it: created or not, shown,
// minimised, active. A view mirrors these flags; the dialog classes and their runs set them
// through the methods, each of which raises `windowChanged` after the flags changed.
#pragma once

#include "dialog/Signal.h"

namespace dialog {

enum class WindowEvent { Created, Shown, Minimized, Restored, Activated, Destroyed };

class DialogWindow {
public:
    DialogWindow() = default;
    DialogWindow(const DialogWindow&) = delete;
    DialogWindow& operator=(const DialogWindow&) = delete;
    // A window still standing when its object goes says so, so that no view keeps a dialog
    // that no longer exists.
    ~DialogWindow() {
        if (windowCreated) {
            windowCreated = false;
            windowChanged.Emit(WindowEvent::Destroyed);
        }
    }

    bool windowCreated = false;
    bool visible = false;
    bool minimized = false;
    bool active = false;

    // Raised after every method below; a slot may read the flags but must not delete the
    // dialog.
    Signal<WindowEvent> windowChanged;

    // The window exists from now on, hidden.
    void CreateWindow() {
        windowCreated = true;
        visible = false;
        windowChanged.Emit(WindowEvent::Created);
    }
    void Show() {
        visible = true;
        windowChanged.Emit(WindowEvent::Shown);
    }
    void Minimize() {
        minimized = true;
        windowChanged.Emit(WindowEvent::Minimized);
    }
    // A restored window is shown again.
    void Restore() {
        minimized = false;
        visible = true;
        windowChanged.Emit(WindowEvent::Restored);
    }
    void Activate() {
        active = true;
        windowChanged.Emit(WindowEvent::Activated);
    }
    // Destroys the window; the object stays. False when there is no window.
    bool DestroyWindow() {
        if (!windowCreated) {
            return false;
        }
        windowCreated = false;
        visible = false;
        active = false;
        windowChanged.Emit(WindowEvent::Destroyed);
        return true;
    }
};

}  // namespace dialog
