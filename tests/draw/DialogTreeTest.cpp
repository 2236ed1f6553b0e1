// The drawing dialog's tree, its restored selection and what a selection fills in, driven
// against a real library file.
#include <gtest/gtest.h>

#include "DialogTestSupport.h"
#include "draw/DlgPlcRendal.h"
#include "plclib/Engine.h"

using dialog_test::DialogEnvironment;
using testing_support::WriteFile;

namespace {

std::vector<std::string> ChildTexts(const dialog::TreeNode* node) {
    std::vector<std::string> texts;
    for (const auto& child : node->children) {
        texts.push_back(child->text);
    }
    return texts;
}

dialog::TreeNode* Child(dialog::TreeNode* node, const std::string& text) {
    for (const auto& child : node->children) {
        if (child->text == text) {
            return child.get();
        }
    }
    ADD_FAILURE() << "no child " << text << " under " << node->text;
    return nullptr;
}

std::string Path(const dialog::TreeNode* node) {
    std::string path;
    for (; node != nullptr; node = node->parent) {
        path = node->text + (path.empty() ? "" : "/" + path);
    }
    return path;
}

}  // namespace

TEST(DialogTree, BuildsManufacturerSeriesTypeLevelsInLoadOrder) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    ASSERT_TRUE(dlg->libLoaded);
    dialog::TreeNode* root = dlg->tree.Root();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->text, "PLC");
    EXPECT_EQ(ChildTexts(root), (std::vector<std::string>{"Alpha", "Beta", "Gamma"}));
    dialog::TreeNode* alpha = Child(root, "Alpha");
    EXPECT_EQ(alpha->image, dialog::kImageManufacturer);
    EXPECT_EQ(ChildTexts(alpha), (std::vector<std::string>{"S1", "S2"}));
    dialog::TreeNode* s1 = Child(alpha, "S1");
    EXPECT_EQ(s1->image, dialog::kImageSeries);
    EXPECT_EQ(ChildTexts(s1), (std::vector<std::string>{"DI", "DO"}));
    EXPECT_EQ(Child(s1, "DI")->image, dialog::kImageType);
    // Module nodes appear only when a type is first selected or searched.
    EXPECT_TRUE(Child(s1, "DI")->children.empty());
    EXPECT_EQ(ChildTexts(Child(root, "Beta")), (std::vector<std::string>{"B1", "B2"}));
    EXPECT_TRUE(Child(Child(root, "Beta"), "B2")->children.empty());
    EXPECT_TRUE(Child(root, "Gamma")->children.empty());
    EXPECT_EQ(dlg->tree.Selected(), nullptr);  // no last-selection file yet
    EXPECT_EQ(dlg->focus, "tree");
}

TEST(DialogTree, MissingLibraryCancelsCreationAndUnreadableLibraryLeavesOnlyTheRoot) {
    DialogEnvironment env;
    std::filesystem::remove(env.LibraryPath());
    CDlgPlcRendal missing;
    EXPECT_FALSE(missing.Create());
    EXPECT_FALSE(missing.windowCreated);

    // A library whose PLC_MANUFACTURER has no row cannot be read: only the root shows.
    {
        plcdb::Connection db;
        std::string error;
        ASSERT_TRUE(db.Create(env.LibraryPath().string(), error)) << error;
    }
    CDlgPlcRendal empty;
    ASSERT_TRUE(empty.Create());
    empty.Refresh();
    EXPECT_FALSE(empty.libLoaded);
    ASSERT_NE(empty.tree.Root(), nullptr);
    EXPECT_EQ(empty.tree.Count(), 1);
}

TEST(DialogTree, RestoresTheLastSelectionWithoutRegardToCase) {
    DialogEnvironment env;
    WriteFile(env.LastSelectionFile(), "alpha\ns1\ndo\ndo-16\n");
    auto dlg = env.OpenDialog();
    ASSERT_NE(dlg->tree.Selected(), nullptr);
    EXPECT_EQ(Path(dlg->tree.Selected()), "PLC/Alpha/S1/DO/DO-16");
    for (auto* node = dlg->tree.Selected()->parent; node != nullptr; node = node->parent) {
        EXPECT_TRUE(node->expanded) << node->text;
    }
    EXPECT_EQ(dlg->termList.Count(), 2);
    EXPECT_EQ(dlg->editModuleCode, "DO-16");
}

TEST(DialogTree, RestoreStopsAtTheFirstLevelNotFound) {
    DialogEnvironment env;
    WriteFile(env.LastSelectionFile(), "Alpha\nNoSuchSeries\nDI\nDI-16A\n");
    auto dlg = env.OpenDialog();
    ASSERT_NE(dlg->tree.Selected(), nullptr);
    EXPECT_EQ(Path(dlg->tree.Selected()), "PLC/Alpha");

    WriteFile(env.LastSelectionFile(), "Beta\nB1\n\n\n");  // empty line ends the descent
    dlg->Refresh();
    EXPECT_EQ(Path(dlg->tree.Selected()), "PLC/Beta/B1");
}

TEST(DialogTree, ManufacturerSelectionShowsItsShortNameOrNone) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    dialog::TreeNode* root = dlg->tree.Root();
    dlg->SelectTreeNode(Child(root, "Alpha"));
    EXPECT_EQ(dlg->selectionText, "厂家名:Alpha 厂家简称:ALP");
    EXPECT_EQ(dlg->editShortName, "ALP");
    dlg->SelectTreeNode(Child(root, "Beta"));
    EXPECT_EQ(dlg->selectionText, "厂家名:Beta 厂家简称:无");
    EXPECT_EQ(dlg->editShortName, "");
    dlg->SelectTreeNode(Child(Child(root, "Beta"), "B1"));
    EXPECT_EQ(dlg->selectionText, "厂家:Beta 系列:B1");
}

TEST(DialogTree, TypeSelectionFillsTheModuleListAndInsertsModuleNodesOnce) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    dialog::TreeNode* di = Child(Child(Child(dlg->tree.Root(), "Alpha"), "S1"), "DI");
    dlg->SelectTreeNode(di);
    EXPECT_EQ(dlg->selectionText, "厂家:Alpha 系列:S1 系列类型:DI");
    ASSERT_EQ(dlg->moduleList.Count(), 2);
    EXPECT_EQ(dlg->moduleList.Row(0).cells,
              (std::vector<std::string>{"DI-16A", "16", "DI", "数字量输入", "24VDC"}));
    EXPECT_EQ(ChildTexts(di), (std::vector<std::string>{"DI-16A", "DI-32B"}));
    EXPECT_EQ(di->children[0]->image, dialog::kImageModule);
    EXPECT_EQ(dlg->termList.Count(), 0);

    dlg->SelectTreeNode(di);  // a second selection adds no duplicate nodes
    EXPECT_EQ(di->children.size(), 2u);
    EXPECT_EQ(dlg->moduleList.Count(), 2);
}

TEST(DialogTree, ModuleRowSelectionLoadsMarkedTerminalRows) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    dlg->SelectTreeNode(Child(Child(Child(dlg->tree.Root(), "Alpha"), "S1"), "DI"));
    dlg->SelectModuleRow(0);
    EXPECT_EQ(dlg->selectionText, "厂家:Alpha 系列:S1 系列类型:DI 模块代号:DI-16A");
    EXPECT_EQ(dlg->editModuleCode, "DI-16A");
    EXPECT_EQ(dlg->editModuleDesc, "数字量输入");
    ASSERT_EQ(dlg->termList.Count(), 7);
    EXPECT_EQ(dlg->termList.Row(2).cells,
              (std::vector<std::string>{"3", "13", "I0.3", "通道3", "向上"}));
    for (const auto& row : dlg->termList.Rows()) {
        EXPECT_EQ(row.stateImage, kMarkOn);
    }
    dlg->SelectModuleRow(1);  // the list is emptied before the next module fills it
    EXPECT_EQ(dlg->termList.Count(), 3);
    dlg->SelectModuleRow(0);  // reselecting does not pile up rows read before
    EXPECT_EQ(dlg->termList.Count(), 7);
}

TEST(DialogTree, ModuleNodeSelectionShowsOnlyThatModule) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S2", "AI", "AI-08"));
    EXPECT_EQ(dlg->selectionText, "厂家:Alpha 系列:S2 系列类型:AI 模块代码:AI-08");
    ASSERT_EQ(dlg->moduleList.Count(), 1);
    EXPECT_EQ(dlg->moduleList.Text(0, kColCode), "AI-08");
    EXPECT_EQ(dlg->termList.Count(), 2);
    EXPECT_EQ(dlg->editShortName, "ALP");
    EXPECT_FALSE(dlg->SelectModulePath("Alpha", "S2", "AI", "NOPE"));
    EXPECT_FALSE(dlg->SelectModulePath("Nobody", "S2", "AI", "AI-08"));
}

TEST(DialogTree, NewRowsPointRightWithFourBlanksWhenNotHorizontal) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    dlg->OnVertical();
    ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DO", "DO-08X"));
    ASSERT_EQ(dlg->termList.Count(), 2);
    EXPECT_EQ(dlg->termList.Text(0, kColDirection), "    向右");
}

TEST(DialogTree, CloseSavesTheLastSelectionUnlessADrawingIsBusy) {
    DialogEnvironment env;
    auto* dlg = env.OpenDialog().release();
    ASSERT_TRUE(dlg->SelectModulePath("Beta", "B1", "MIX", "MX-01X"));
    bool closed = false;
    dlg->onClosed = [&closed](CDlgPlcRendal* self) {
        closed = true;
        delete self;
    };
    dlg->drawBusy = true;
    dlg->OnClose();
    EXPECT_FALSE(closed);
    EXPECT_FALSE(std::filesystem::exists(env.LastSelectionFile()));
    dlg->drawBusy = false;
    dlg->OnClose();
    EXPECT_TRUE(closed);
    EXPECT_EQ(testing_support::ReadFile(env.LastSelectionFile()), "Beta\nB1\nMIX\nMX-01X\n");
}

TEST(DialogTree, RefreshSavesTheSelectionAndRebuildsOverTheChangedLibrary) {
    DialogEnvironment env;
    auto dlg = env.OpenDialog();
    ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DI", "DI-32B"));
    ASSERT_TRUE(dlg->plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('Delta','','','')"));
    dlg->OnRefresh();
    EXPECT_EQ(testing_support::ReadFile(env.LastSelectionFile()), "Alpha\nS1\nDI\nDI-32B\n");
    EXPECT_EQ(ChildTexts(dlg->tree.Root()),
              (std::vector<std::string>{"Alpha", "Beta", "Gamma", "Delta"}));
    EXPECT_EQ(Path(dlg->tree.Selected()), "PLC/Alpha/S1/DI/DI-32B");
}
