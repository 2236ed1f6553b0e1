// A module described as a value, with no dialog list behind it, draws exactly what the same
// module chosen in the dialog's terminal list draws, in every drawing command.
#include <gtest/gtest.h>

#include <sstream>

#include "DrawingTestSupport.h"
#include "cad/Dxf.h"
#include "draw/ModuleChoice.h"
#include "draw/ModuleDrawing.h"
#include "draw/SheetDrawing.h"

using namespace drawing_test;
using draw::ChosenTerminal;
using draw::ModuleChoice;
using draw::Side;
using host::InputStatus;

namespace {

// Both sides of the orientation, unmarked terminals, a terminal on a side of the other
// orientation and one on no side; texts a header or MText could take for codes.
ModuleChoice HandMadeChoice(int orientation) {
    const Side first = orientation == 0 ? Side::Upper : Side::Right;
    const Side second = orientation == 0 ? Side::Lower : Side::Left;
    const Side other = orientation == 0 ? Side::Left : Side::Upper;
    ModuleChoice choice;
    choice.manufacturer = "Alpha";
    choice.series = "S1";
    choice.type = "DI";
    choice.shortName = "ALP";
    choice.code = "DI-{16}A";
    choice.description = "16点\\数字量输入";
    choice.tag = "-A7";
    choice.frameNo = "2";
    choice.slotNo = "5";
    choice.location = "+CP3";
    choice.pattern = 4;
    choice.orientation = orientation;
    const struct {
        bool marked;
        std::optional<Side> side;
    } kinds[] = {{true, first},        {true, second}, {false, first},  {true, first},
                 {true, other},        {true, second}, {false, second}, {true, first},
                 {true, std::nullopt}, {true, first}};
    int n = 0;
    for (const auto& kind : kinds) {
        ++n;
        choice.terminals.push_back({std::to_string(n), "X" + std::to_string(n),
                                    "输入" + std::to_string(n), "详细" + std::to_string(n),
                                    kind.marked, kind.side});
    }
    return choice;
}

std::string DirectionText(const std::optional<Side>& side) {
    if (!side) {
        return "";
    }
    switch (*side) {
        case Side::Upper:
            return std::string(kDirUp);
        case Side::Lower:
            return std::string(kDirDown);
        case Side::Right:
            return std::string(kDirRight);
        case Side::Left:
            return std::string(kDirLeft);
    }
    return "";
}

// Puts `choice` into the dialog's fields and list as a user would have it: marked rows with
// state images 1, 2 or 4, unmarked ones with 0 or 3.
void ShowInDialog(CDlgPlcRendal& dlg, const ModuleChoice& choice) {
    dlg.manufacturerInfo.manufacturer = choice.manufacturer;
    dlg.manufacturerInfo.series = choice.series;
    dlg.manufacturerInfo.type = choice.type;
    dlg.editShortName = choice.shortName;
    dlg.editModuleCode = choice.code;
    dlg.editModuleDesc = choice.description;
    dlg.editTag = choice.tag;
    dlg.editFrameNo = choice.frameNo;
    dlg.editSlotNo = choice.slotNo;
    dlg.editLocation = choice.location;
    dlg.termDirChoice = choice.pattern;
    dlg.orientation = choice.orientation;
    dlg.termList.Clear();
    static constexpr int kMarkedImages[] = {1, 2, 4}, kUnmarkedImages[] = {0, 3};
    int marked = 0, unmarked = 0;
    for (const ChosenTerminal& t : choice.terminals) {
        const int image = t.marked ? kMarkedImages[marked++ % 3] : kUnmarkedImages[unmarked++ % 2];
        dlg.termList.AddRow({t.sequence, t.value, t.description, t.detail, DirectionText(t.side)},
                            image);
    }
}

// A dialog that holds only the drawing settings: no texts, no terminal rows.
void ForgetModule(CDlgPlcRendal& dlg) {
    dlg.editTag = dlg.editShortName = dlg.editModuleCode = dlg.editModuleDesc = "";
    dlg.editFrameNo = dlg.editSlotNo = dlg.editLocation = "";
    dlg.termList.Clear();
}

enum class Command { Module, OutlineOnly, FullSheet, Divided };

// Runs `command` in a fresh environment with format `type` and returns the drawing as DXF.
// With `throughDialog` the choice is shown in the dialog and drawn as the dialog reports it;
// otherwise it is drawn as given by a dialog that holds none of it.
std::string Drawn(Command command, int type, const ModuleChoice& choice, bool throughDialog) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(type, 0, {});
    ModuleChoice drawn = choice;
    if (throughDialog) {
        ShowInDialog(*dlg, choice);
        drawn = dlg->CurrentChoice();
    } else {
        ForgetModule(*dlg);
    }
    const bool vertical = choice.orientation != 0;
    auto along = [vertical](double x, double d) {
        return vertical ? testing_support::PointAnswer{InputStatus::Normal, {x, -d, 0}}
                        : testing_support::PointAnswer{InputStatus::Normal, {x + d, 0, 0}};
    };
    cad::Database side;
    cad::Database& target =
        command == Command::Module || command == Command::OutlineOnly ? side : env.drawing;
    switch (command) {
        case Command::Module:
        case Command::OutlineOnly:
            EXPECT_TRUE(DrawModule(*dlg, drawn, side, command == Command::OutlineOnly ? 1 : 0));
            break;
        case Command::FullSheet:
            env.host.pointAnswers = {{InputStatus::Normal, {40, 30, 0}}};
            EXPECT_TRUE(DrawFullSheet(*dlg, drawn, env.drawing));
            break;
        case Command::Divided:
            // Three places in the first piece, the rest in the second.
            env.host.pointAnswers = {along(0, 0), along(0, 40), along(100, 0), along(100, 90)};
            EXPECT_TRUE(DrawDivided(*dlg, drawn, env.drawing));
            EXPECT_EQ(dlg->drawFinished, 1);
            break;
    }
    return cad::WriteDxfString(target, cad::DxfVersion::R2010);
}

// The first line where two DXF texts part, for a readable failure.
std::string FirstDifference(const std::string& a, const std::string& b) {
    std::istringstream ia(a), ib(b);
    std::string la, lb;
    for (int line = 1;; ++line) {
        const bool moreA = static_cast<bool>(std::getline(ia, la));
        const bool moreB = static_cast<bool>(std::getline(ib, lb));
        if (!moreA && !moreB) {
            return "none";
        }
        if (la != lb || moreA != moreB) {
            return "line " + std::to_string(line) + ": '" + la + "' / '" + lb + "'";
        }
    }
}

}  // namespace

TEST(ModuleChoice, TheDialogReportsItsFieldsAndListAsTheValue) {
    for (int orientation = 0; orientation <= 1; ++orientation) {
        DrawingEnvironment env;
        auto dlg = env.MakeDialog(1, orientation, {});
        const ModuleChoice choice = HandMadeChoice(orientation);
        ShowInDialog(*dlg, choice);
        EXPECT_EQ(dlg->CurrentChoice(), choice) << "orientation " << orientation;
    }
}

TEST(ModuleChoice, AValueWithoutADialogListDrawsWhatTheDialogDraws) {
    const Command commands[] = {Command::Module, Command::OutlineOnly, Command::FullSheet,
                                Command::Divided};
    for (const Command command : commands) {
        for (int type = 1; type <= 3; ++type) {
            for (int orientation = 0; orientation <= 1; ++orientation) {
                SCOPED_TRACE("command " + std::to_string(static_cast<int>(command)) + " format " +
                             std::to_string(type) + " orientation " + std::to_string(orientation));
                const ModuleChoice choice = HandMadeChoice(orientation);
                const std::string viaDialog = Drawn(command, type, choice, true);
                const std::string byValue = Drawn(command, type, choice, false);
                EXPECT_NE(viaDialog.find("DI-\\{16\\}A"), std::string::npos)
                    << "the header carries the module's texts";
                EXPECT_TRUE(viaDialog == byValue) << FirstDifference(viaDialog, byValue);
            }
        }
    }
}

TEST(ModuleChoice, OnlyMarkedTerminalsOnTheOrientationsSidesAreDrawn) {
    for (int orientation = 0; orientation <= 1; ++orientation) {
        DrawingEnvironment env;
        auto dlg = env.MakeDialog(1, 0, {});
        ForgetModule(*dlg);
        cad::Database db;
        ASSERT_TRUE(DrawModule(*dlg, HandMadeChoice(orientation), db, 0));
        // First side X1 X4 X8 X10 (X3 unmarked), second X2 X6 (X7 unmarked); X5 stands on a
        // side of the other orientation and X9 on none.
        std::vector<std::string> numbers;
        for (const cad::Text* t : All<cad::Text>(db)) {
            if (t->text.rfind("X", 0) == 0) {
                numbers.push_back(t->text);
            }
        }
        EXPECT_EQ(numbers, (std::vector<std::string>{"X1", "X4", "X8", "X10", "X2", "X6"}))
            << "orientation " << orientation;
    }
}
