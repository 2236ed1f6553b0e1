// The terminal-symbol chooser: the list scanned from the symbol folder, its pages and labels,
// and the checks on OK.
#include <gtest/gtest.h>

#include <cstdio>

#include "SettingsFixture.h"
#include "draw/settings/DlgSelectDz.h"

class SelectDzTest : public SettingsFixture {
protected:
    // Symbols S00..S<count-1>, written in reverse order so that sorting is visible.
    void MakeSymbols(int count) {
        for (int i = count - 1; i >= 0; --i) {
            char name[16];
            std::snprintf(name, sizeof name, "S%02d", i);
            TouchSymbol(name);
        }
    }
};

TEST_F(SelectDzTest, ScanListsDrawingsSortedByBlockName) {
    TouchSymbol("SYMB2_S_KTR5");
    TouchSymbol("SYMB2_S_01");
    testing_support::WriteFile(commonDir / "SYMB2LIB/README.md", "not a symbol");
    testing_support::WriteFile(commonDir / "SYMB2LIB/UPPER.DXF", "");
    std::filesystem::create_directory(commonDir / "SYMB2LIB/folder.dxf");
    const auto list = ScanTermSymbols(TermSymbolFolder());
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].blockName, "SYMB2_S_01");
    EXPECT_EQ(list[0].path, Common() + "SYMB2LIB/SYMB2_S_01.dxf");
    EXPECT_EQ(list[1].blockName, "SYMB2_S_KTR5");
    EXPECT_EQ(list[2].blockName, "UPPER");
    EXPECT_TRUE(ScanTermSymbols((temp / "absent").string()).empty());
}

TEST_F(SelectDzTest, PagesHoldTwentyFourSymbols) {
    MakeSymbols(49);
    CDlgSelectDz dialog;
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.pageCount, 3);
    EXPECT_EQ(dialog.scrollMin, 1);
    EXPECT_EQ(dialog.scrollMax, 3);
    EXPECT_EQ(dialog.scrollPos, 1);
    EXPECT_EQ(dialog.pageCountLabel, "共3页");
    EXPECT_EQ(dialog.currentPageLabel, "第1页");
    auto cells = dialog.VisibleCells();
    ASSERT_EQ(cells.size(), 24u);
    EXPECT_EQ(cells[0]->blockName, "S00");
    EXPECT_EQ(cells[23]->blockName, "S23");

    dialog.OnScroll(3);
    EXPECT_EQ(dialog.currentPageLabel, "第3页");
    cells = dialog.VisibleCells();
    ASSERT_EQ(cells.size(), 1u);
    EXPECT_EQ(cells[0]->blockName, "S48");
    dialog.OnClickCell(0);
    ASSERT_TRUE(dialog.OnOK());
    EXPECT_EQ(dialog.chosenName, "S48");
    EXPECT_EQ(dialog.chosenPath, Common() + "SYMB2LIB/S48.dxf");

    dialog.OnScroll(9);  // clamped to the bar's range
    EXPECT_EQ(dialog.scrollPos, 3);
    dialog.OnScroll(0);
    EXPECT_EQ(dialog.scrollPos, 1);
    dialog.OnClickCell(5);
    EXPECT_EQ(dialog.picked, 5);
}

TEST_F(SelectDzTest, PageCountRoundsUp) {
    CDlgSelectDz dialog;
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.pageCountLabel, "共0页");
    EXPECT_TRUE(dialog.VisibleCells().empty());
    MakeSymbols(24);
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.pageCountLabel, "共1页");
    MakeSymbols(25);
    dialog.OnInitDialog();
    EXPECT_EQ(dialog.pageCountLabel, "共2页");
}

TEST_F(SelectDzTest, OkNeedsAPickedSymbolWhoseFileExists) {
    MakeSymbols(3);
    CDlgSelectDz dialog;
    dialog.OnInitDialog();
    EXPECT_FALSE(dialog.OnOK());
    dialog.OnClickCell(7);  // an empty cell picks nothing
    EXPECT_FALSE(dialog.OnOK());
    dialog.OnClickCell(2);
    std::filesystem::remove(commonDir / "SYMB2LIB/S02.dxf");
    EXPECT_FALSE(dialog.OnOK());
    ASSERT_EQ(recorder.messages.size(), 3u);
    EXPECT_EQ(recorder.messages[0].text, "没有二次符号被选中！");
    EXPECT_EQ(recorder.messages[1].text, "没有二次符号被选中！");
    EXPECT_EQ(recorder.messages[2].text,
              "符号S02对应库文件" + Common() + "SYMB2LIB/S02.dxf已被破坏！");
    for (const auto& message : recorder.messages) {
        EXPECT_EQ(message.caption, "Zandrix");
        EXPECT_EQ(message.icon, host::MsgIcon::Exclamation);
    }
    EXPECT_TRUE(dialog.chosenName.empty());
}
