// Until the dialogs have views, the plug-in's dialogs run without a window of their own.
#include "ui/Views.h"

namespace ui {

void InstallViews() {}
void RemoveViews() {}
std::string RunDialogLine(std::string_view line) {
    return "dialogs have no views in this build: " + std::string(line);
}
std::string DialogLineHelp() {
    return {};
}

}  // namespace ui
