#include "ui/Views.h"

#include "app/PlcRendalMain.h"
#include "ui/PlcRendalView.h"

namespace ui {

void InstallViews() {
    app::g_rendalWindowCreated = [](CDlgPlcRendal& dlg) { new PlcRendalView(dlg); };
}

void RemoveViews() {
    app::g_rendalWindowCreated = nullptr;
    for (PlcRendalView* view : PlcRendalView::All()) {
        delete view;
    }
}

}  // namespace ui
