#include "ViewTestSupport.h"

#include <QApplication>
#include <QTreeWidget>

#include "draw/DlgPlcRendal.h"
#include "ui/PlcRendalView.h"
#include "ui/Views.h"

namespace ui_test {

void ViewTest::SetUp() {
    ui::InstallViews();
}

void ViewTest::TearDown() {
    app::DestroyPluginDialogs();
    ui::RemoveViews();
    Settle();
    EXPECT_TRUE(ui::PlcRendalView::All().empty());
}

ui::PlcRendalView* ViewTest::OpenView() {
    run.RunRendal();
    view = ui::PlcRendalView::Current();
    return view;
}

CDlgPlcRendal& ViewTest::Dlg() const {
    return *g_pDlgPlcRendal;
}

void ViewTest::Settle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

QTreeWidgetItem* Child(QTreeWidget* tree, QTreeWidgetItem* parent, const std::string& text) {
    const int count = parent ? parent->childCount() : tree->topLevelItemCount();
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem* item = parent ? parent->child(i) : tree->topLevelItem(i);
        if (item->text(0).toStdString() == text) {
            return item;
        }
    }
    return nullptr;
}

std::vector<std::string> ColumnTexts(QTreeWidget* list, int column) {
    std::vector<std::string> texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        texts.push_back(list->topLevelItem(i)->text(column).toStdString());
    }
    return texts;
}

std::vector<bool> Checks(QTreeWidget* list) {
    std::vector<bool> checks;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        checks.push_back(list->topLevelItem(i)->checkState(0) == Qt::Checked);
    }
    return checks;
}

}  // namespace ui_test
