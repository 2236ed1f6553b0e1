#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dialog/Controls.h"

namespace {

using dialog::ListChange;
using dialog::TreeChange;

TEST(Controls, TreeNotifiesEveryChangeAndRemovingASelectedBranchClearsTheSelection) {
    dialog::TreeModel tree;
    std::vector<std::string> seen;
    tree.changed.Connect([&](TreeChange change, const dialog::TreeNode* node) {
        const char* kinds[] = {"nodes", "selection", "expansion"};
        seen.push_back(std::string(kinds[static_cast<int>(change)]) + ":" +
                       (node ? node->text : "-"));
    });
    auto* root = tree.InsertRoot("PLC", 6);
    auto* maker = tree.Insert(root, "Alpha", 1);
    auto* series = tree.Insert(maker, "S1", 2);
    tree.Select(series);
    tree.Expand(maker);
    tree.SetText(maker, "Beta");
    tree.Remove(maker);
    EXPECT_EQ(tree.Selected(), nullptr);
    EXPECT_TRUE(root->children.empty());
    EXPECT_EQ(seen, (std::vector<std::string>{"nodes:-", "nodes:PLC", "nodes:Alpha", "selection:S1",
                                              "expansion:Alpha", "nodes:Beta", "selection:-",
                                              "nodes:PLC"}));
    // A removed sibling leaves the selection alone.
    auto* keep = tree.Insert(root, "Keep", 1);
    auto* drop = tree.Insert(root, "Drop", 1);
    tree.Select(keep);
    tree.Remove(drop);
    EXPECT_EQ(tree.Selected(), keep);
    EXPECT_EQ(keep->NextSibling(), nullptr);
}

TEST(Controls, ListNotifiesAndKeepsRowsInOrderThroughInsertAndRemove) {
    dialog::ListModel list;
    int rowsChanged = 0;
    int selectionChanged = 0;
    const int id = list.changed.Connect([&](ListChange change, int) {
        (change == ListChange::Selection ? selectionChanged : rowsChanged)++;
    });
    list.AddRow({"1", "a"});
    list.AddRow({"3", "c"});
    EXPECT_EQ(list.InsertRow(1, {"2", "b"}), 1);
    EXPECT_EQ(list.InsertRow(99, {"4", "d"}), 3);  // out of range appends
    list.SetSelected(2, true);
    list.RemoveRow(0);
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Text(0, 1), "b");
    EXPECT_EQ(list.FirstSelected(), 1);  // the selection moved with its row
    list.SetText(2, 3, "wide");          // a cell beyond the row's width widens it
    EXPECT_EQ(list.Row(2).cells.size(), 4u);
    EXPECT_EQ(rowsChanged, 6);
    EXPECT_EQ(selectionChanged, 1);
    list.changed.Disconnect(id);
    list.Clear();
    EXPECT_EQ(rowsChanged, 6);
}

TEST(Controls, ColumnWidthsAreWholeTenthsOfTheClientWidth) {
    dialog::ListModel list;
    list.SetColumns({"a", "b", "c"}, 599, {2.5, 1.5, 12});
    ASSERT_EQ(list.Columns().size(), 3u);
    EXPECT_EQ(list.Columns()[0].width, 147);  // u = 59
    EXPECT_EQ(list.Columns()[1].width, 88);
    EXPECT_EQ(list.Columns()[2].width, 708);
}

}  // namespace
