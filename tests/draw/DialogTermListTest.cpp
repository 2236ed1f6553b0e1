// The drawing dialog's terminal list: marks, direction patterns, flips and orientation.
#include <gtest/gtest.h>

#include "DialogTestSupport.h"
#include "draw/DlgPlcRendal.h"

using dialog_test::DialogEnvironment;

namespace {

const std::string kUp(kDirUp), kDown(kDirDown), kLeft(kDirLeft), kRight(kDirRight);

std::vector<std::string> Directions(const CDlgPlcRendal& dlg) {
    std::vector<std::string> texts;
    for (int i = 0; i < dlg.termList.Count(); ++i) {
        texts.push_back(dlg.termList.Text(i, kColDirection));
    }
    return texts;
}

// A dialog showing module DI-16A (7 terminal rows).
class TermListTest : public ::testing::Test {
protected:
    void SetUp() override {
        dlg = env.OpenDialog();
        ASSERT_TRUE(dlg->SelectModulePath("Alpha", "S1", "DI", "DI-16A"));
        ASSERT_EQ(dlg->termList.Count(), 7);
    }
    DialogEnvironment env;
    std::unique_ptr<CDlgPlcRendal> dlg;
};

}  // namespace

TEST_F(TermListTest, ClickInTheIconColumnTogglesTheMarkOfTheOneSelectedRow) {
    auto& list = dlg->termList;
    list.SelectOnly(2);
    dlg->OnTermListClick(dlg->stateIconWidth);
    EXPECT_EQ(list.StateImage(2), 0);
    dlg->OnTermListClick(3);
    EXPECT_EQ(list.StateImage(2), 1);

    dlg->OnTermListClick(dlg->stateIconWidth + 1);  // beside the icon: no change
    EXPECT_EQ(list.StateImage(2), 1);

    list.SetStateImage(2, 3);
    dlg->OnTermListClick(0);
    EXPECT_EQ(list.StateImage(2), 1);
    list.SetStateImage(2, 4);
    dlg->OnTermListClick(0);
    EXPECT_EQ(list.StateImage(2), 0);
    list.SetStateImage(2, 2);
    dlg->OnTermListClick(0);
    EXPECT_EQ(list.StateImage(2), 2);

    list.SetSelected(3, true);  // two rows selected: clicks change nothing
    list.SetStateImage(2, 1);
    dlg->OnTermListClick(0);
    EXPECT_EQ(list.StateImage(2), 1);
    EXPECT_EQ(list.StateImage(3), 1);
}

TEST_F(TermListTest, PatternsOverSevenRowsHorizontal) {
    dlg->OnTermMenuCommand(kMenuHalfFirst);
    EXPECT_EQ(dlg->termDirChoice, 4);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kUp, kUp, kUp, kUp, kDown, kDown, kDown}));
    dlg->OnTermMenuCommand(kMenuHalfSecond);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kDown, kDown, kDown, kDown, kUp, kUp, kUp}));
    dlg->OnTermMenuCommand(kMenuEvenFirst);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kUp, kDown, kUp, kDown, kUp, kDown, kUp}));
    dlg->OnTermMenuCommand(kMenuEvenSecond);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kDown, kUp, kDown, kUp, kDown, kUp, kDown}));
    dlg->OnTermMenuCommand(kMenuAllSecond);
    EXPECT_EQ(Directions(*dlg), std::vector<std::string>(7, kDown));
    dlg->OnTermMenuCommand(kMenuAllFirst);
    EXPECT_EQ(dlg->termDirChoice, 0);
    EXPECT_EQ(Directions(*dlg), std::vector<std::string>(7, kUp));
}

TEST_F(TermListTest, PatternsApplyToUnmarkedRowsAndUseLeftRightWhenVertical) {
    dlg->termList.SetStateImage(0, 0);
    dlg->OnVertical();
    dlg->OnTermMenuCommand(kMenuHalfFirst);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kLeft, kLeft, kLeft, kLeft, kRight, kRight, kRight}));
    EXPECT_EQ(kRight, "     向右");  // five blanks, unlike new rows
}

TEST_F(TermListTest, FlipRewritesEachSelectedRowByItsFirstMatchingCharacter) {
    auto& list = dlg->termList;
    const std::vector<std::string> before = {"向上",     "     向下", "上下", "向左",
                                             "    向右", "右左",      "斜"};
    const std::vector<std::string> after = {kDown, kUp, kDown, kRight, kLeft, kRight, "斜"};
    for (int i = 0; i < 7; ++i) {
        list.SetText(i, kColDirection, before[i]);
        list.SetSelected(i, true);
    }
    dlg->OnTermMenuCommand(kMenuFlip);
    EXPECT_EQ(Directions(*dlg), after);
}

TEST_F(TermListTest, DoubleClickFlipsOnlyTheSelectedRows) {
    dlg->termList.SetSelected(1, true);
    dlg->termList.SetSelected(5, true);
    dlg->OnTermListDoubleClick();
    EXPECT_EQ(Directions(*dlg), (std::vector<std::string>{kUp, kDown, kUp, kUp, kUp, kDown, kUp}));
    dlg->OnTermListDoubleClick();
    EXPECT_EQ(Directions(*dlg), std::vector<std::string>(7, kUp));
}

TEST_F(TermListTest, SwitchingOrientationReappliesTheStoredPatternDiscardingFlips) {
    dlg->OnTermMenuCommand(kMenuEvenFirst);
    dlg->termList.SelectOnly(0);
    dlg->OnTermListDoubleClick();
    EXPECT_EQ(dlg->termList.Text(0, kColDirection), kDown);
    dlg->OnVertical();
    EXPECT_EQ(dlg->orientation, 1);
    EXPECT_FALSE(dlg->horizontalChecked);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kLeft, kRight, kLeft, kRight, kLeft, kRight, kLeft}));
    dlg->OnHorizontal();
    EXPECT_EQ(dlg->orientation, 0);
    EXPECT_EQ(Directions(*dlg),
              (std::vector<std::string>{kUp, kDown, kUp, kDown, kUp, kDown, kUp}));
}

// What the draw buttons hand to the drawing: the selected module, the pattern and each row's
// mark and side as the list shows them after the user's clicks.
TEST_F(TermListTest, CurrentChoiceFollowsTheSelectionMarksAndPattern) {
    dlg->OnTermMenuCommand(kMenuEvenFirst);
    dlg->termList.SelectOnly(2);
    dlg->OnTermListClick(0);  // unmarks row 3
    dlg->termList.SetStateImage(4, 3);
    dlg->editTag = "-K1";
    draw::ModuleChoice choice = dlg->CurrentChoice();
    EXPECT_EQ(choice.manufacturer + "/" + choice.series + "/" + choice.type + "/" + choice.code,
              "Alpha/S1/DI/DI-16A");
    EXPECT_EQ(choice.shortName, "ALP");
    EXPECT_EQ(choice.tag, "-K1");
    EXPECT_EQ(choice.pattern, 2);
    ASSERT_EQ(choice.terminals.size(), 7u);
    for (std::size_t i = 0; i < choice.terminals.size(); ++i) {
        const draw::ChosenTerminal& t = choice.terminals[i];
        EXPECT_EQ(t.sequence, std::to_string(i + 1));
        EXPECT_EQ(t.marked, i != 2 && i != 4) << "row " << i;
        EXPECT_EQ(t.side, i % 2 == 0 ? draw::Side::Upper : draw::Side::Lower) << "row " << i;
    }

    // Turning the module vertical keeps the pattern on the left and right sides.
    dlg->OnVertical();
    choice = dlg->CurrentChoice();
    EXPECT_EQ(choice.orientation, 1);
    EXPECT_EQ(choice.terminals[0].side, draw::Side::Left);
    EXPECT_EQ(choice.terminals[1].side, draw::Side::Right);
    // A flipped row changes side, and the mark stays as it was.
    dlg->termList.SelectOnly(2);
    dlg->OnTermListDoubleClick();
    choice = dlg->CurrentChoice();
    EXPECT_EQ(choice.terminals[2].side, draw::Side::Right);
    EXPECT_FALSE(choice.terminals[2].marked);
}
