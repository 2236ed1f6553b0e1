// A drawing dialog opened by PLCRENDAL with the views installed, over the sample library of
// the dialog tests, and small helpers that act on widgets as a user would.
#pragma once

#include <gtest/gtest.h>

#include <QPointer>

#include <string>
#include <vector>

#include "../draw/DialogTestSupport.h"
#include "app/PlcRendalMain.h"

class CDlgPlcRendal;
class QTreeWidget;
class QTreeWidgetItem;

namespace ui {
class PlcRendalView;
}

namespace ui_test {

class ViewTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Runs PLCRENDAL; the view it brings up.
    ui::PlcRendalView* OpenView();
    CDlgPlcRendal& Dlg() const;
    // Lets deferred deletions happen.
    static void Settle();

    dialog_test::DialogEnvironment env;
    app::CPlcRendalMain run;
    QPointer<ui::PlcRendalView> view;
};

// The child of `parent` (a top-level item when null) showing `text`.
QTreeWidgetItem* Child(QTreeWidget* tree, QTreeWidgetItem* parent, const std::string& text);
// Column `column` of every row of a list widget.
std::vector<std::string> ColumnTexts(QTreeWidget* list, int column);
std::vector<bool> Checks(QTreeWidget* list);

}  // namespace ui_test
