// The window of a modeless dialog as a toolkit window would have it: created or not, shown,
// minimised, active. A view mirrors these flags; the dialog classes and their runs set them.
#pragma once

namespace dialog {

class DialogWindow {
public:
    bool windowCreated = false;
    bool visible = false;
    bool minimized = false;
    bool active = false;

    void Show() { visible = true; }
    void Minimize() { minimized = true; }
    // A restored window is shown again.
    void Restore() {
        minimized = false;
        visible = true;
    }
    void Activate() { active = true; }
    // Destroys the window; the object stays. False when there is no window.
    bool DestroyWindow() {
        if (!windowCreated) {
            return false;
        }
        windowCreated = false;
        visible = false;
        active = false;
        return true;
    }
};

}  // namespace dialog
