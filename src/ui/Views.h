// The Qt views of the plug-in's dialogs, as the desktop host installs them.
#pragma once

#include <string>
#include <string_view>

namespace ui {

// From now on every plug-in dialog that gets a window is shown by a Qt view.
void InstallViews();
// Closes and deletes every view; dialogs created afterwards get none.
void RemoveViews();

// One script line "dialog ..." acting on the open dialog's view as the user would (select a
// tree path, mark a terminal, set an edit, press a button...). Returns an empty string when it
// was done, else the error.
std::string RunDialogLine(std::string_view line);
// The forms RunDialogLine accepts, one per line, for --help.
std::string DialogLineHelp();

}  // namespace ui
