#include "ui/Views.h"

#include <QApplication>
#include <QMainWindow>

#include "app/PlcRendalMain.h"
#include "ui/PlcRendalView.h"

namespace ui {

namespace {

// The host's main window, which owns the plug-in's windows; null when there is none.
QWidget* MainWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMainWindow*>(widget) != nullptr) {
            return widget;
        }
    }
    return nullptr;
}

}  // namespace

void InstallViews() {
    app::g_rendalWindowCreated = [](CDlgPlcRendal& dlg) { new PlcRendalView(dlg, MainWindow()); };
}

void RemoveViews() {
    app::g_rendalWindowCreated = nullptr;
    for (PlcRendalView* view : PlcRendalView::All()) {
        delete view;
    }
}

}  // namespace ui
