// Search for a module code: the walk from each level of the tree, both match modes and the
// wrap-around question.
#include <gtest/gtest.h>

#include "DialogTestSupport.h"
#include "draw/DlgPlcRendal.h"

using dialog_test::DialogEnvironment;

namespace {

dialog::TreeNode* Node(CDlgPlcRendal& dlg, std::initializer_list<std::string> path) {
    dialog::TreeNode* node = dlg.tree.Root();
    for (const std::string& name : path) {
        dialog::TreeNode* next = node->FindChildNoCase(name);
        if (next == nullptr) {
            ADD_FAILURE() << "no node " << name;
            return node;
        }
        node = next;
    }
    return node;
}

std::string Selected(const CDlgPlcRendal& dlg) {
    return dlg.tree.Selected() != nullptr ? dlg.tree.Selected()->text : "<none>";
}

class SearchTest : public ::testing::Test {
protected:
    void SetUp() override { dlg = env.OpenDialog(); }
    // Selects `start` (nothing when null), searches `text` and returns what got selected.
    std::string SearchFrom(dialog::TreeNode* start, const std::string& text, int mode) {
        dlg->tree.Select(start);
        dlg->OnMatchMode(mode);
        dlg->editSearch = text;
        dlg->OnSearch();
        return Selected(*dlg);
    }
    DialogEnvironment env;
    std::unique_ptr<CDlgPlcRendal> dlg;
};

}  // namespace

TEST_F(SearchTest, RepeatedSearchWalksEveryMatchInTreeOrder) {
    EXPECT_EQ(SearchFrom(nullptr, "x", 1), "DO-08X");
    dlg->OnSearch();
    EXPECT_EQ(Selected(*dlg), "AI-04X");  // from a module: the modules after it, then on
    dlg->OnSearch();
    EXPECT_EQ(Selected(*dlg), "MX-01X");  // across manufacturers
    EXPECT_TRUE(env.host.messages.empty());
    EXPECT_EQ(dlg->searchText, "x");
    EXPECT_EQ(dlg->selectionText, "厂家:Beta 系列:B1 系列类型:MIX 模块代码:MX-01X");
    EXPECT_EQ(dlg->termList.Count(), 2);  // the match fills the lists like a selection
}

TEST_F(SearchTest, EndOfTreeAsksToWrapAndYesStartsFromTheFirstManufacturer) {
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Beta", "B1", "MIX"}), "X", 1), "MX-01X");
    env.host.messageAnswers.push_back(host::MsgResult::No);
    dlg->OnSearch();
    ASSERT_EQ(env.host.MessageTexts(), (std::vector<std::string>{"搜索已达末尾,是否从头开始?"}));
    EXPECT_EQ(env.host.messages[0].caption, "Zandrix");
    EXPECT_EQ(env.host.messages[0].icon, host::MsgIcon::Question);
    EXPECT_EQ(env.host.messages[0].buttons, host::MsgButtons::YesNo);
    EXPECT_EQ(Selected(*dlg), "MX-01X");  // No leaves the selection alone

    env.host.messageAnswers.push_back(host::MsgResult::Yes);
    dlg->OnSearch();
    EXPECT_EQ(Selected(*dlg), "DO-08X");
    EXPECT_EQ(env.host.messages.size(), 2u);
}

TEST_F(SearchTest, StartLevelDecidesWhereTheWalkBegins) {
    // A type start searches the type itself first.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Alpha", "S1", "DO"}), "DO", 0), "DO-08X");
    // A series start searches its types, then the following series.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Alpha", "S2"}), "x", 1), "AI-04X");
    // A manufacturer start skips the manufacturers before it.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Beta"}), "x", 1), "MX-01X");
    // A module start does not test the module itself.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Alpha", "S1", "DI"}), "DI-16A", 0), "DI-16A");
    env.host.messageAnswers.push_back(host::MsgResult::No);
    EXPECT_EQ(SearchFrom(dlg->tree.Selected(), "DI-16A", 0), "DI-16A");
    EXPECT_EQ(env.host.messages.size(), 1u);
    // From the last type of a series the walk goes on into the next series.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Alpha", "S1", "DO"}), "ai", 0), "AI-04X");
    // From the last type of the last series it goes on into the next manufacturer.
    EXPECT_EQ(SearchFrom(Node(*dlg, {"Alpha", "S2", "AI"}), "MX", 0), "MX-01X");
}

TEST_F(SearchTest, PrefixModeAndContainsModeDiffer) {
    EXPECT_EQ(SearchFrom(nullptr, "ai-0", 0), "AI-04X");  // without regard to case
    env.host.messageAnswers.push_back(host::MsgResult::No);
    EXPECT_EQ(SearchFrom(nullptr, "04X", 0), "<none>");  // not at the beginning
    EXPECT_EQ(env.host.messages.size(), 1u);
    EXPECT_EQ(SearchFrom(nullptr, "04x", 1), "AI-04X");
    EXPECT_EQ(dlg->matchMode, 1);
}

TEST_F(SearchTest, WalkFillsTypesWithModuleNodesOnlyAsFarAsItGoes) {
    dialog::TreeNode* mix = Node(*dlg, {"Beta", "B1", "MIX"});
    EXPECT_EQ(SearchFrom(nullptr, "DI-32", 0), "DI-32B");
    EXPECT_TRUE(Node(*dlg, {"Alpha", "S1", "DO"})->children.empty());
    EXPECT_TRUE(mix->children.empty());
    EXPECT_EQ(SearchFrom(nullptr, "MX", 0), "MX-01X");
    EXPECT_EQ(Node(*dlg, {"Alpha", "S2", "AI"})->children.size(), 2u);
    EXPECT_TRUE(Node(*dlg, {"Alpha", "S2", "AI"})->expanded == false);
    EXPECT_TRUE(mix->expanded);
}
