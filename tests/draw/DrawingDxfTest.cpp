// Drawn modules written to DXF and read back by an independent reader (Debian's ezdxf):
// strict load, clean audit, every extended-data link resolving to the entity it should,
// texts (CJK, backslashes, braces, quotes) coming back as typed, in every save format.
#include <gtest/gtest.h>

#include <sstream>

#include "DrawingTestSupport.h"
#include "cad/Dxf.h"
#include "draw/ModuleDrawing.h"
#include "draw/SheetDrawing.h"

using namespace drawing_test;
using host::InputStatus;

namespace {

std::vector<Row> SidedRows(int orientation, int first, int second) {
    std::vector<Row> rows;
    for (int i = 0; i < first; ++i) {
        rows.push_back({std::to_string(i + 1), "输入" + std::to_string(i),
                        orientation == 0 ? "向上" : "     向右"});
    }
    for (int i = 0; i < second; ++i) {
        rows.push_back({std::to_string(first + i + 1), "输出" + std::to_string(i),
                        orientation == 0 ? "     向下" : "向左"});
    }
    return rows;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string WriteAndCheck(const cad::Database& db, const std::filesystem::path& path,
                          cad::DxfVersion version = cad::DxfVersion::R2010) {
    cad::WriteDxfFile(db, path.string(), version);
    return RunPythonCheck("check_module_links.py", path.string());
}

}  // namespace

// Links per drawn terminal: symbol 3 (number, description, label), number text 2, label 1.
TEST(DrawingDxf, WholeModulesOfEveryFormatAndOrientationReadBackLinked) {
    for (int type = 1; type <= 3; ++type) {
        for (int orientation = 0; orientation <= 1; ++orientation) {
            SCOPED_TRACE("format " + std::to_string(type) + " orientation " +
                         std::to_string(orientation));
            DrawingEnvironment env;
            auto dlg = env.MakeDialog(type, orientation, SidedRows(orientation, 3, 2));
            env.host.pointAnswers = {{InputStatus::Normal, {40, 30, 0}}};
            ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
            const int outlines = type == 3 ? 2 + 5 : 1;
            const int links = 5 * 6 + 2 * outlines + 2;
            const auto lines = Lines(WriteAndCheck(env.drawing, env.LocalDir() / "module.dxf"));
            ASSERT_FALSE(lines.empty());
            EXPECT_EQ(lines[0], "INSERT=5 LWPOLYLINE=" + std::to_string(outlines) +
                                    " MTEXT=2 TEXT=10 links=" + std::to_string(links));
        }
    }
}

TEST(DrawingDxf, DividedPiecesReadBackLinkedWithTheDescriptionBackLink) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(3, 1, SidedRows(1, 3, 1));
    env.host.pointAnswers = {{InputStatus::Normal, {0, 0, 0}},
                             {InputStatus::Normal, {0, -30, 0}},
                             {InputStatus::Normal, {50, 0, 0}},
                             {InputStatus::Normal, {50, -40, 0}}};
    ASSERT_TRUE(DrawDivided(*dlg, dlg->CurrentChoice(), env.drawing));
    // Two pieces (2 + 1 right, 1 left): 4 cells and 4 brackets; one more link per terminal.
    const int links = 4 * 7 + 2 * 8 + 2;
    const auto lines = Lines(WriteAndCheck(env.drawing, env.LocalDir() / "divided.dxf"));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "INSERT=4 LWPOLYLINE=8 MTEXT=2 TEXT=8 links=" + std::to_string(links));
}

// Every terminal text and both header texts of every format, orientation and drawing kind,
// read back by ezdxf and judged by the alignment rules (tests/draw/check_text_alignment.py).
// Each text starts with the side it belongs to.
TEST(DrawingDxf, EveryTextStandsWhereTheAlignmentRulesPutIt) {
    for (const bool divided : {false, true}) {
        for (int type = 1; type <= 3; ++type) {
            for (int orientation = 0; orientation <= 1; ++orientation) {
                const std::string mode = divided ? "divided" : "whole";
                SCOPED_TRACE(mode + " format " + std::to_string(type) + " orientation " +
                             std::to_string(orientation));
                const std::string first = orientation == 0 ? "上" : "右";
                const std::string second = orientation == 0 ? "下" : "左";
                std::vector<Row> rows;
                for (int i = 0; i < 3; ++i) {
                    rows.push_back({first + std::to_string(i), first + "描述" + std::to_string(i),
                                    "向" + first});
                }
                for (int i = 0; i < 2; ++i) {
                    rows.push_back({second + std::to_string(i), second + "描述" + std::to_string(i),
                                    "向" + second});
                }
                DrawingEnvironment env;
                auto dlg = env.MakeDialog(type, orientation, rows);
                const auto along = [orientation](double x0, double y0, double d) {
                    return orientation == 0 ? cad::Point3d{x0 + d, y0, 0}
                                            : cad::Point3d{x0, y0 - d, 0};
                };
                if (divided) {
                    // Two pieces: two places each (36 long), the second holds the last one.
                    env.host.pointAnswers = {{InputStatus::Normal, {40, 30, 0}},
                                             {InputStatus::Normal, along(40, 30, 36)},
                                             {InputStatus::Normal, {200, 30, 0}},
                                             {InputStatus::Normal, along(200, 30, 36)}};
                    ASSERT_TRUE(DrawDivided(*dlg, dlg->CurrentChoice(), env.drawing));
                } else {
                    env.host.pointAnswers = {{InputStatus::Normal, {40, 30, 0}}};
                    ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
                }
                const auto file = env.LocalDir() / "aligned.dxf";
                cad::WriteDxfFile(env.drawing, file.string(), cad::DxfVersion::R2010);
                const std::string args = file.string() + " " + std::to_string(type) + " " +
                                         std::to_string(orientation) + " " + mode + " 40 30";
                EXPECT_EQ(RunPythonCheck("check_text_alignment.py", args), "checked 10 texts\n");
            }
        }
    }
}

// The module's texts are written in the style "qvcjk" with the configured fonts, and their
// Chinese characters show where each text stands: in LibreCAD (through the stroke font the
// build makes) and in the project's own renderer (tests/draw/check_cjk_rendering.py).
TEST(DrawingDxf, ChineseTextsShowInLibreCadAndInTheOwnRenderer) {
    const auto fonts = testing_support::CommonResDir() / "fonts";
    if (!std::filesystem::exists(fonts / "qvcjk.lff")) {
        GTEST_SKIP() << "qvcjk.lff was not built (needs python3-fonttools, fonts-wqy-microhei)";
    }
    for (const auto& [type, orientation] : {std::pair{1, 0}, std::pair{3, 1}}) {
        SCOPED_TRACE("format " + std::to_string(type) + " orientation " +
                     std::to_string(orientation));
        DrawingEnvironment env;
        std::vector<Row> rows;
        for (int i = 0; i < 4; ++i) {
            rows.push_back(
                {"端" + std::to_string(i), "输入端子描述" + std::to_string(i),
                 i % 2 ? (orientation ? "向左" : "向下") : (orientation ? "向右" : "向上")});
        }
        auto dlg = env.MakeDialog(type, orientation, rows);
        dlg->editTag = "模块甲";
        env.host.pointAnswers = {{InputStatus::Normal, {0, 0, 0}}};
        ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
        const cad::Handle style = env.drawing.FindTextStyle("qvcjk");
        ASSERT_NE(style, cad::kNullHandle);
        EXPECT_EQ(env.drawing.TextStyle(style)->font, "txt.shx");
        EXPECT_EQ(env.drawing.TextStyle(style)->bigFont, "gbcbig.shx");
        const auto file = env.LocalDir() / "cjk.dxf";
        cad::WriteDxfFile(env.drawing, file.string(), cad::DxfVersion::R2010);
        const auto scratch = env.LocalDir() / "render";
        std::filesystem::create_directories(scratch);
        std::string output;
        const int status = testing_support::RunCommand(
            testing_support::Python() + " " +
                (testing_support::SourceDir() / "tests/draw/check_cjk_rendering.py").string() +
                " " + file.string() + " " +
                (testing_support::BinaryDir() / "bin" / "qvplc").string() + " " + fonts.string() +
                " " + scratch.string(),
            &output);
        if (status == 77) {
            GTEST_SKIP() << output;
        }
        EXPECT_EQ(status, 0) << output;
        EXPECT_NE(output.find("qvplc renderer: 10 Chinese texts checked"), std::string::npos)
            << output;
        EXPECT_NE(output.find("LibreCAD: 10 Chinese texts checked"), std::string::npos) << output;
    }
}

TEST(DrawingDxf, TextsComeBackAsTypedInEverySaveFormat) {
    DrawingEnvironment env;
    std::vector<Row> rows = {{"1\\2", "反斜杠\\和{括号}", "向上"},
                             {"\"3\"", "引号\"与'单引号'", "     向下"}};
    auto dlg = env.MakeDialog(1, 0, rows);
    dlg->editTag = "-A{1}\\x";
    dlg->editModuleDesc = "描述\\P不是换行{}";
    env.host.pointAnswers = {{InputStatus::Normal, {0, 0, 0}}};
    ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
    const std::vector<std::string> expected = {
        "MTEXT -A{1}\\x",
        "MTEXT 厂家:ALP|模块代号:DI-16A|模块描述:描述\\P不是换行{}|框架号:1|槽号:3",
        "TEXT 1\\2",
        "TEXT 反斜杠\\和{括号}",
        "TEXT \"3\"",
        "TEXT 引号\"与'单引号'",
    };
    for (auto version : {cad::DxfVersion::R14, cad::DxfVersion::R2000, cad::DxfVersion::R2004,
                         cad::DxfVersion::R2007, cad::DxfVersion::R2010}) {
        SCOPED_TRACE(cad::AcadVer(version));
        auto lines = Lines(WriteAndCheck(env.drawing, env.LocalDir() / "texts.dxf", version));
        ASSERT_FALSE(lines.empty());
        lines.erase(lines.begin());
        EXPECT_EQ(lines, expected);
    }
}

TEST(DrawingDxf, LargeAndEmptyModules) {
    {
        SCOPED_TRACE("500 terminals with 60-character descriptions");
        DrawingEnvironment env;
        std::vector<Row> rows;
        for (int i = 0; i < 500; ++i) {
            std::string desc = "端子描述" + std::to_string(i) + "\\{}";
            while (desc.size() < 60 * 3) {  // 60 characters, most of them CJK
                desc += "长";
            }
            rows.push_back({std::to_string(i), desc, i % 2 ? "     向下" : "向上"});
        }
        auto dlg = env.MakeDialog(3, 0, rows);
        env.host.pointAnswers = {{InputStatus::Normal, {0, 0, 0}}};
        ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
        const auto lines = Lines(WriteAndCheck(env.drawing, env.LocalDir() / "large.dxf"));
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines[0], "INSERT=500 LWPOLYLINE=502 MTEXT=2 TEXT=1000 links=" +
                                std::to_string(500 * 6 + 2 * 502 + 2));
        EXPECT_EQ(lines[4], "TEXT " + rows[0].desc);
    }
    {
        SCOPED_TRACE("no terminals");
        DrawingEnvironment env;
        auto dlg = env.MakeDialog(1, 1, {});
        env.host.pointAnswers = {{InputStatus::Normal, {0, 0, 0}}};
        ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
        const auto lines = Lines(WriteAndCheck(env.drawing, env.LocalDir() / "empty.dxf"));
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines[0], "INSERT=0 LWPOLYLINE=1 MTEXT=2 TEXT=0 links=4");
    }
}
