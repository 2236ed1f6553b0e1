// The binders keep a Qt item widget equal to a plain-data control through every kind of
// change, and report only the user's clicks.
#include <gtest/gtest.h>

#include <QTreeWidget>

#include "ViewTestSupport.h"
#include "ui/ModelBinders.h"

namespace ui_test {
namespace {

using Texts = std::vector<std::string>;

QIcon NoIcon(int) {
    return {};
}

Texts Children(QTreeWidgetItem* item) {
    Texts texts;
    for (int i = 0; i < item->childCount(); ++i) {
        texts.push_back(item->child(i)->text(0).toStdString());
    }
    return texts;
}

TEST(TreeBinder, FollowsInsertsRenamesRemovalsSelectionAndExpansion) {
    dialog::TreeModel model;
    QTreeWidget widget;
    auto* binder = new ui::TreeBinder(model, widget, NoIcon);
    std::vector<dialog::TreeNode*> clicked;
    binder->onSelect = [&](dialog::TreeNode* node) { clicked.push_back(node); };

    dialog::TreeNode* root = model.InsertRoot("PLC", 6);
    dialog::TreeNode* a = model.Insert(root, "A", 1);
    dialog::TreeNode* b = model.Insert(root, "B", 1);
    dialog::TreeNode* a1 = model.Insert(a, "A1", 2);
    ASSERT_EQ(widget.topLevelItemCount(), 1);
    QTreeWidgetItem* rootItem = widget.topLevelItem(0);
    EXPECT_EQ(Children(rootItem), (Texts{"A", "B"}));
    EXPECT_EQ(Children(binder->ItemOf(a)), Texts{"A1"});

    model.SetText(b, "Bee");
    EXPECT_EQ(Children(rootItem), (Texts{"A", "Bee"}));
    model.Select(a1);
    EXPECT_EQ(widget.currentItem(), binder->ItemOf(a1));
    EXPECT_TRUE(clicked.empty());  // the model's own selection is not a click

    model.Remove(a);  // takes the selection with it
    EXPECT_EQ(Children(rootItem), Texts{"Bee"});
    EXPECT_EQ(binder->NodeOf(binder->ItemOf(b)), b);
    EXPECT_EQ(widget.currentItem() != nullptr && widget.currentItem()->isSelected(), false);
    EXPECT_EQ(binder->ItemOf(a1), nullptr);
    model.Insert(root, "C", 1);
    EXPECT_EQ(Children(rootItem), (Texts{"Bee", "C"}));

    model.Expand(root);
    EXPECT_TRUE(rootItem->isExpanded());
    std::vector<std::pair<dialog::TreeNode*, bool>> expanded;
    binder->onExpand = [&](dialog::TreeNode* node, bool on) { expanded.emplace_back(node, on); };
    rootItem->setExpanded(false);
    EXPECT_EQ(expanded, (std::vector<std::pair<dialog::TreeNode*, bool>>{{root, false}}));

    widget.setCurrentItem(binder->ItemOf(b));
    EXPECT_EQ(clicked, std::vector<dialog::TreeNode*>{b});
    EXPECT_EQ(model.Selected(), nullptr);  // the binder only reports; the view decides

    model.Clear();
    EXPECT_EQ(widget.topLevelItemCount(), 0);
}

TEST(ListBinder, FollowsRowsCellsMarksColumnsAndSelection) {
    dialog::ListModel model;
    model.SetColumns({"one", "two"}, 200, {4, 6});
    QTreeWidget widget;
    auto* binder = new ui::ListBinder(model, widget, [](int image) { return image == 1; });
    std::vector<std::vector<int>> selections;
    binder->onSelect = [&](const std::vector<int>& rows) { selections.push_back(rows); };
    std::vector<int> checks;
    binder->onCheckClicked = [&](int row) { checks.push_back(row); };

    EXPECT_EQ(widget.headerItem()->text(1).toStdString(), "two");
    EXPECT_EQ(widget.columnWidth(0), 80);
    model.AddRow({"a", "1"}, 1);
    model.AddRow({"c", "3"}, 0);
    model.InsertRow(1, {"b", "2"}, 1);
    EXPECT_EQ(ColumnTexts(&widget, 0), (Texts{"a", "b", "c"}));
    EXPECT_EQ(Checks(&widget), (std::vector<bool>{true, true, false}));
    model.SetText(2, 1, "three");
    model.SetStateImage(0, 0);
    EXPECT_EQ(ColumnTexts(&widget, 1), (Texts{"1", "2", "three"}));
    EXPECT_EQ(Checks(&widget), (std::vector<bool>{false, true, false}));
    model.RemoveRow(0);
    EXPECT_EQ(ColumnTexts(&widget, 0), (Texts{"b", "c"}));

    model.SelectOnly(1);
    EXPECT_TRUE(widget.topLevelItem(1)->isSelected());
    EXPECT_FALSE(widget.topLevelItem(0)->isSelected());
    EXPECT_TRUE(selections.empty());  // the model's own selection is not a click
    widget.setCurrentItem(widget.topLevelItem(0));
    ASSERT_FALSE(selections.empty());
    EXPECT_EQ(selections.back(), std::vector<int>{0});

    widget.topLevelItem(1)->setCheckState(0, Qt::Checked);
    EXPECT_EQ(checks, std::vector<int>{1});
    EXPECT_EQ(widget.topLevelItem(1)->checkState(0), Qt::Unchecked);  // the model said no

    model.SetColumns({"x", "y", "z"}, 300, {1, 1, 1});
    EXPECT_EQ(widget.columnCount(), 3);
    EXPECT_EQ(ColumnTexts(&widget, 0), (Texts{"b", "c"}));
    model.SetRows({});
    EXPECT_EQ(widget.topLevelItemCount(), 0);
}

TEST(TreeBinder, AModelOutlivedByItsWidgetIsLeftAlone) {
    dialog::TreeModel model;
    {
        QTreeWidget widget;
        new ui::TreeBinder(model, widget, NoIcon);
        model.InsertRoot("PLC", 6);
    }
    // The binder went with its widget and disconnected itself: changes reach nobody.
    EXPECT_FALSE(model.changed.Connected());
    model.InsertRoot("again", 6);
}

}  // namespace
}  // namespace ui_test
