// The Qt views of the plug-in's dialogs.
#pragma once

#include <string>
#include <string_view>

namespace ui {
void InstallViews();  // from now on every plug-in dialog that gets a window is shown by a Qt view
void RemoveViews();   // closes and deletes every view
// One script line "dialog ..." acting on the open dialog's view (select a tree path,
// mark a terminal, set an edit, press a button...). Empty string: done; else the error.
std::string RunDialogLine(std::string_view line);
std::string DialogLineHelp();  // the forms RunDialogLine accepts, for --help
}  // namespace ui
