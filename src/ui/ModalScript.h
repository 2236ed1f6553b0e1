// Modal windows driven by a script. A script cannot click inside a modal window while the
// window waits for the user, so its lines for the window are kept until the window opens;
// a window that opens with lines waiting plays them on its own widgets and closes as they say.
#pragma once

#include <functional>
#include <string>
#include <vector>

class QDialog;

namespace ui {

// Keeps `line` for the next modal window of `kind` ("sheet", "terminals", "symbols").
void KeepModalLine(const std::string& kind, std::string line);
// Drops the lines kept for `kind` (those a window that did not open left behind).
void DropModalLines(const std::string& kind);
// Drops every kept line and error.
void ClearModalLines();
// The first error met while playing kept lines since it was last taken; empty when none.
std::string TakeModalError();

// Plays one kept line on a window: presses its buttons as the line says; returns the error.
using PlayLine = std::function<std::string(const std::string& line)>;

// Shows `window` modally. With lines kept for `kind`, plays them in order (the first failure
// is noted and ends the play) and then cancels the window if no line closed it; without
// them, waits for the user. True when the window was closed with OK.
bool RunModal(QDialog& window, const std::string& kind, const PlayLine& play);

}  // namespace ui
