// The module drawing checked entity by entity against geometry worked out from the drawing
// rules for small modules: both orientations, the three formats, unequal sides, no rows.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "DrawingTestSupport.h"
#include "cad/Dxf.h"
#include "draw/AworkSettings.h"
#include "draw/ModuleDrawing.h"

using namespace drawing_test;

namespace {

constexpr double k90 = 1.5707963, k180 = 3.1415926, kMinus90 = -1.5707963, k270 = 4.7123889;

// Rows of every kind the collection must sort: unmarked rows (images 0 and 3), a row with
// both 上 and 下 (upper wins), a row for the other orientation, image 2 (drawn), image 4.
std::vector<Row> MixedHorizontalRows() {
    return {
        {"1", "DI0", "向上"},    {"2", "DI1", "     向下"},    {"3", "DI2", "向上", 0},
        {"4", "DI3", "上下"},    {"5", "DI4", "向左"},         {"6", "DI5", "向上", 3},
        {"7", "DI6", "向上", 2}, {"8", "DI7", "     向下", 4},
    };
}

struct Expected {
    cad::Point3d at;
    double rotation;
    cad::TextHorz horz;
    cad::TextVert vert;
};

void ExpectText(const cad::Text& t, const std::string& content, const Expected& e, double height,
                int color, const std::string& what) {
    EXPECT_EQ(t.text, content) << what;
    ExpectPoint(t.Anchor(), e.at, what);
    EXPECT_DOUBLE_EQ(t.rotation, e.rotation) << what;
    EXPECT_EQ(t.horizontal, e.horz) << what;
    EXPECT_EQ(t.vertical, e.vert) << what;
    EXPECT_DOUBLE_EQ(t.height, height) << what;
    EXPECT_DOUBLE_EQ(t.widthFactor, 0.8) << what;
    EXPECT_EQ(t.color, color) << what;
}

// Every symbol reference links to its two texts, the number text back to the symbol under
// both names, the label to every symbol; the description text carries no link here.
void ExpectTerminalLinks(cad::Database& db, const cad::MText& label) {
    const auto refs = All<cad::BlockReference>(db);
    const auto texts = All<cad::Text>(db);
    ASSERT_EQ(texts.size(), 2 * refs.size());
    std::vector<cad::Handle> refHandles;
    for (std::size_t i = 0; i < refs.size(); ++i) {
        const cad::Text& number = *texts[2 * i];
        const cad::Text& desc = *texts[2 * i + 1];
        const auto* termItems = db.GetXData(*refs[i], "QV_SYMB2_TERM_TEXT_1");
        ASSERT_NE(termItems, nullptr);
        ASSERT_EQ(termItems->size(), 2u);
        EXPECT_EQ((*termItems)[0].code, 1000);
        EXPECT_EQ((*termItems)[0].value, "1");
        EXPECT_EQ((*termItems)[1].AsHandle(), number.handle);
        EXPECT_EQ(Links(db, *refs[i], "QV_SYMB2_TERMDESC_TEXT_1"),
                  std::vector<cad::Handle>{desc.handle});
        EXPECT_EQ(Links(db, *refs[i], "QV_SYMB2_LABEL"), std::vector<cad::Handle>{label.handle});
        EXPECT_EQ(Links(db, number, "QV_SYMB2_TERM_TEXT_1"),
                  std::vector<cad::Handle>{refs[i]->handle});
        EXPECT_EQ(Links(db, number, "QV_SYMB2_TERMDESC_TEXT_1"),
                  std::vector<cad::Handle>{refs[i]->handle});
        EXPECT_TRUE(desc.xdata.empty()) << "description text " << i;
        refHandles.push_back(refs[i]->handle);
    }
    EXPECT_EQ(Links(db, label, "QV_SYMB2_LABEL"), refHandles);
}

void ExpectOutlineLinks(cad::Database& db, const cad::MText& label) {
    std::vector<cad::Handle> outlines;
    for (const cad::LwPolyline* p : All<cad::LwPolyline>(db)) {
        EXPECT_EQ(Links(db, *p, "QV_ GROUPPARTXRECT_TEXT"), std::vector<cad::Handle>{label.handle});
        outlines.push_back(p->handle);
    }
    EXPECT_EQ(Links(db, label, "QV_ GROUPPARTXRECT_XRECT"), outlines);
}

}  // namespace

TEST(DrawingModule, HorizontalFrameWithUnequalSides) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, MixedHorizontalRows());
    dlg->drawActive = 7;
    cad::Database db;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    EXPECT_EQ(dlg->drawActive, 7) << "left as it was on success";

    // Header: label h = 4 at (-h, -H/2), data text at (-2h, -H/2), both turned up the page.
    const auto mtexts = All<cad::MText>(db);
    ASSERT_EQ(mtexts.size(), 2u);
    const cad::MText& label = *mtexts[0];
    const cad::MText& data = *mtexts[1];
    EXPECT_EQ(label.contents, "-A1");
    ExpectPoint(label.position, {-4, -5}, "label");
    EXPECT_DOUBLE_EQ(label.height, 4.0);
    EXPECT_EQ(label.attachment, 5);
    EXPECT_DOUBLE_EQ(label.rotation, k90);
    EXPECT_EQ(data.contents,
              "厂家:ALP\\P模块代号:DI-16A\\P模块描述:16点数字量输入\\P框架号:1\\P槽号:3");
    ExpectPoint(data.position, {-8, -5}, "data");
    EXPECT_DOUBLE_EQ(data.height, 2.5);
    EXPECT_EQ(data.attachment, 8);
    EXPECT_EQ(data.color, 2);

    // Upper: rows 1, 4, 7 (image 2 drawn, 上下 counts as upper); lower: rows 2, 8. n = 3.
    const auto frames = All<cad::LwPolyline>(db);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_TRUE(frames[0]->closed);
    ExpectPoints(Vertices(*frames[0]), {{0, -10}, {30, -10}, {30, 0}, {0, 0}}, "frame");

    const auto refs = All<cad::BlockReference>(db);
    ASSERT_EQ(refs.size(), 5u);
    const std::vector<cad::Point3d> refAt = {{5, 0}, {15, 0}, {25, 0}, {5, -10}, {15, -10}};
    const std::vector<double> refRot = {k90, k90, k90, kMinus90, kMinus90};
    for (std::size_t i = 0; i < refs.size(); ++i) {
        ExpectPoint(refs[i]->position, refAt[i], "symbol " + std::to_string(i));
        EXPECT_DOUBLE_EQ(refs[i]->rotation, refRot[i]);
        EXPECT_EQ(refs[i]->block, db.FindBlock("SYMB2_T"));
    }
    // Turned up, the symbol measures dx = 1, dy = 5.
    const auto texts = All<cad::Text>(db);
    ASSERT_EQ(texts.size(), 10u);
    const std::vector<std::string> numbers = {"1", "4", "7", "2", "8"};
    const std::vector<std::string> descs = {"DI0", "DI3", "DI6", "DI1", "DI7"};
    using H = cad::TextHorz;
    using V = cad::TextVert;
    for (std::size_t i = 0; i < 5; ++i) {
        const double x = refAt[i].x;
        const bool upper = i < 3;
        const Expected number{{x, upper ? -5.8 : -10 + 5.8}, k90, H::Middle, V::Baseline};
        const Expected desc{{x, upper ? 5.5 : -15.5}, k90, H::Middle, upper ? V::Top : V::Baseline};
        ExpectText(*texts[2 * i], numbers[i], number, 2.0, 2, "number " + std::to_string(i));
        ExpectText(*texts[2 * i + 1], descs[i], desc, 2.0, 2, "desc " + std::to_string(i));
    }
    EXPECT_FLOAT_EQ(dlg->termLength, 5.0f);
    ExpectTerminalLinks(db, label);
    ExpectOutlineLinks(db, label);
}

TEST(DrawingModule, VerticalFrameRunsDownTheYAxis) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 1,
                              {{"1", "A", "向左"},
                               {"2", "B", "     向右"},
                               {"3", "C", "    向右"},
                               {"4", "D", "右左"},
                               {"5", "E", "向上"}});
    cad::Database db;
    db.AddLayer("DIM");
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));

    const auto mtexts = All<cad::MText>(db);
    ASSERT_EQ(mtexts.size(), 2u);
    ExpectPoint(mtexts[0]->position, {-5, 4}, "label");
    ExpectPoint(mtexts[1]->position, {-5, 8}, "data");
    EXPECT_DOUBLE_EQ(mtexts[0]->rotation, 0.0);
    EXPECT_DOUBLE_EQ(mtexts[1]->rotation, 0.0);
    EXPECT_EQ(mtexts[0]->layer, db.FindLayer("DIM"));

    // Right: rows 2, 3, 4 (右左 counts as right); left: row 1; the 向上 row is not drawn.
    const auto frames = All<cad::LwPolyline>(db);
    ASSERT_EQ(frames.size(), 1u);
    ExpectPoints(Vertices(*frames[0]), {{-10, -30}, {0, -30}, {0, 0}, {-10, 0}}, "frame");
    const auto refs = All<cad::BlockReference>(db);
    ASSERT_EQ(refs.size(), 4u);
    const std::vector<cad::Point3d> refAt = {{0, -5}, {0, -15}, {0, -25}, {-10, -5}};
    for (std::size_t i = 0; i < 4; ++i) {
        ExpectPoint(refs[i]->position, refAt[i], "symbol " + std::to_string(i));
        EXPECT_DOUBLE_EQ(refs[i]->rotation, i < 3 ? 0.0 : k180);
    }
    // s = max(dx, dy) = 5.
    using H = cad::TextHorz;
    using V = cad::TextVert;
    const auto texts = All<cad::Text>(db);
    ASSERT_EQ(texts.size(), 8u);
    const std::vector<std::string> numbers = {"2", "3", "4", "1"};
    for (std::size_t i = 0; i < 4; ++i) {
        const double y = refAt[i].y;
        const bool right = i < 3;
        ExpectText(*texts[2 * i], numbers[i],
                   {{right ? -5.8 : -10 + 5.8, y}, kMinus90, H::Middle, V::Baseline}, 2.0, 2,
                   "number " + std::to_string(i));
        ExpectText(*texts[2 * i + 1], texts[2 * i + 1]->text,
                   {{right ? 5.5 : -15.5, y}, kMinus90, H::Middle, right ? V::Top : V::Baseline},
                   2.0, 2, "desc " + std::to_string(i));
        EXPECT_EQ(texts[2 * i]->layer, db.FindLayer("DIM"));
    }
    ExpectTerminalLinks(db, *mtexts[0]);
}

TEST(DrawingModule, CellStyleHorizontalBracketsCellsAndSymbolsOnTheEdge) {
    DrawingEnvironment env;
    auto dlg =
        env.MakeDialog(3, 0, {{"1", "A", "向上"}, {"2", "B", "     向下"}, {"3", "C", "向上"}});
    cad::Database db;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    // u = 2, l = 1, W = n p + p = 30; terminals at x = i p + p.
    const auto polys = All<cad::LwPolyline>(db);
    ASSERT_EQ(polys.size(), 5u);
    ExpectPoints(Vertices(*polys[0]), {{5, 0}, {0, 0}, {0, -10}, {5, -10}}, "left bracket");
    ExpectPoints(Vertices(*polys[1]), {{25, 0}, {30, 0}, {30, -10}, {15, -10}}, "right bracket");
    EXPECT_FALSE(polys[0]->closed);
    EXPECT_FALSE(polys[1]->closed);
    const std::vector<cad::Point3d> centre = {{10, 0}, {20, 0}, {10, -10}};
    for (std::size_t i = 0; i < 3; ++i) {
        const cad::Point3d c = centre[i];
        EXPECT_TRUE(polys[2 + i]->closed);
        ExpectPoints(Vertices(*polys[2 + i]),
                     {{c.x - 5, c.y - 2.5},
                      {c.x + 5, c.y - 2.5},
                      {c.x + 5, c.y + 2.5},
                      {c.x - 5, c.y + 2.5}},
                     "cell " + std::to_string(i));
    }
    // The test symbol's base is its inner end, so it already stands on the edge: upper at
    // y = 2.5 reaching to 7.5, lower at -12.5 reaching down to -17.5.
    const auto refs = All<cad::BlockReference>(db);
    ASSERT_EQ(refs.size(), 3u);
    ExpectPoint(refs[0]->position, {10, 2.5}, "upper symbol");
    ExpectPoint(refs[2]->position, {10, -12.5}, "lower symbol");
    using H = cad::TextHorz;
    using V = cad::TextVert;
    const auto texts = All<cad::Text>(db);
    ASSERT_EQ(texts.size(), 6u);
    ExpectText(*texts[0], "1", {{10, 0}, 0, H::Center, V::Middle}, 2.0, 2, "upper number");
    ExpectText(*texts[4], "2", {{10, -10}, 0, H::Center, V::Middle}, 2.0, 2, "lower number");
    // Descriptions beyond the symbol's far end, hanging away from the body.
    ExpectText(*texts[1], "A", {{10, 2.5 + 5 + 0.5 + 1.5}, 0, H::Center, V::Top}, 1.5, 4,
               "upper desc");
    ExpectText(*texts[5], "B", {{10, -10 - 2.5 - 5 - 0.5 - 1.5}, 0, H::Center, V::Bottom}, 1.5, 4,
               "lower desc");
    ExpectOutlineLinks(db, *All<cad::MText>(db)[0]);
}

TEST(DrawingModule, CellStyleVerticalAndSymbolBasePointElsewhere) {
    DrawingEnvironment env;
    // A symbol whose base point is its connection end still ends up on the cell's edge.
    {
        cad::Database sym;
        auto* lead = sym.AppendNew<cad::Line>();
        lead->start = {-5, 0, 0};
        lead->end = {0, 0, 0};
        std::filesystem::remove(env.SymbolPath());
        cad::WriteDxfFile(sym, env.SymbolPath().string(), cad::DxfVersion::R2010);
    }
    auto dlg =
        env.MakeDialog(3, 1, {{"1", "A", "     向右"}, {"2", "B", "向左"}, {"3", "C", "向左"}});
    cad::Database db;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    const auto polys = All<cad::LwPolyline>(db);
    ASSERT_EQ(polys.size(), 5u);
    ExpectPoints(Vertices(*polys[0]), {{-10, -5}, {-10, 0}, {0, 0}, {0, -5}}, "top bracket");
    // r = 1, l = 2, W = 30.
    ExpectPoints(Vertices(*polys[1]), {{-10, -25}, {-10, -30}, {0, -30}, {0, -15}},
                 "bottom bracket");
    ExpectPoints(Vertices(*polys[2]), {{-2.5, -5}, {-2.5, -15}, {2.5, -15}, {2.5, -5}},
                 "right cell");
    const auto refs = All<cad::BlockReference>(db);
    ASSERT_EQ(refs.size(), 3u);
    // Right side: no rotation, the lead spans [-5, 0] from its base: moved to span [2.5, 7.5].
    ExpectPoint(refs[0]->position, {7.5, -10}, "right symbol");
    // Left side turned half round: spans [x, x + 5] from its base, moved to end at -12.5.
    ExpectPoint(refs[1]->position, {-17.5, -10}, "left symbol");
    const auto texts = All<cad::Text>(db);
    using H = cad::TextHorz;
    using V = cad::TextVert;
    ExpectText(*texts[0], "1", {{0, -10}, k270, H::Center, V::Middle}, 2.0, 2, "right number");
    ExpectText(*texts[1], "A", {{2.5 + 5 + 2, -10}, k270, H::Center, V::Top}, 1.5, 4, "right desc");
    // On the left the text's top faces the body too, so it hangs outward from half a unit
    // beyond the symbol.
    ExpectText(*texts[3], "B", {{-10 - 2.5 - 5 - 0.5, -10}, k270, H::Center, V::Top}, 1.5, 4,
               "left desc");
}

TEST(DrawingModule, FrameStyleTwoPutsTheNumberOnTheSymbolsTextPoint) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(2, 0, {{"1", "A", "向上"}});
    cad::Database db;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    const auto texts = All<cad::Text>(db);
    ASSERT_EQ(texts.size(), 2u);
    // Text point (2, 0.4) turned by 1.5707963 about the base, then to (5, 0).
    ExpectPoint(texts[0]->Anchor(), {5 - 0.4, 2}, "number on text point");
    ExpectPoint(texts[1]->Anchor(), {5, 5.5}, "description as in format 1");
}

TEST(DrawingModule, DegenerateModules) {
    DrawingEnvironment env;
    {
        SCOPED_TRACE("no drawable rows: a collapsed frame, the symbol still defined");
        auto dlg = env.MakeDialog(1, 0, {{"1", "A", "向上", 0}, {"2", "B", "向左"}});
        cad::Database db;
        ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
        const auto frames = All<cad::LwPolyline>(db);
        ASSERT_EQ(frames.size(), 1u);
        ExpectPoints(Vertices(*frames[0]), {{0, -10}, {0, -10}, {0, 0}, {0, 0}}, "frame");
        EXPECT_NE(db.FindBlock("SYMB2_T"), cad::kNullHandle);
        EXPECT_TRUE(All<cad::BlockReference>(db).empty());
        EXPECT_FLOAT_EQ(dlg->termLength, 2.5f);
    }
    {
        SCOPED_TRACE("only lower terminals: the upper edge spans the lower count");
        auto dlg = env.MakeDialog(1, 0, {{"1", "A", "     向下"}, {"2", "B", "     向下"}});
        cad::Database db;
        ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
        ExpectPoints(Vertices(*All<cad::LwPolyline>(db)[0]), {{0, -10}, {20, -10}, {20, 0}, {0, 0}},
                     "frame");
        EXPECT_EQ(All<cad::BlockReference>(db).size(), 2u);
    }
    {
        SCOPED_TRACE("outline only: header and one cyan edge line, termLength untouched");
        auto dlg = env.MakeDialog(3, 0, {{"1", "A", "向上"}});
        cad::Database db;
        ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 1));
        const auto lines = All<cad::Line>(db);
        ASSERT_EQ(lines.size(), 1u);
        ExpectPoint(lines[0]->start, {0, -10}, "start");
        ExpectPoint(lines[0]->end, {0, 0}, "end");
        EXPECT_EQ(lines[0]->color, 4);
        EXPECT_EQ(All<cad::MText>(db).size(), 2u);
        EXPECT_TRUE(All<cad::BlockReference>(db).empty());
        EXPECT_EQ(db.FindBlock("SYMB2_T"), cad::kNullHandle) << "no symbol read";
        EXPECT_FLOAT_EQ(dlg->termLength, 2.5f);
        dlg->orientation = 1;
        cad::Database vertical;
        ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), vertical, 1));
        ExpectPoint(All<cad::Line>(vertical)[0]->end, {-10, 0}, "vertical end");
    }
    {
        SCOPED_TRACE("format out of range: header only");
        auto dlg = env.MakeDialog(0, 0, {{"1", "A", "向上"}});
        cad::Database db;
        ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
        EXPECT_EQ(db.Entities().size(), 2u);
    }
}

TEST(DrawingModule, HeaderLinesFollowTheLabelFlags) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, {});
    dlg->labelManufacturer = false;
    dlg->labelModuleCodePrefix = false;
    dlg->editFrameNo.clear();
    dlg->editModuleDesc.clear();
    cad::Database db;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    // No manufacturer: the text opens with a paragraph break. An empty description is still
    // written; an empty frame number is not.
    EXPECT_EQ(All<cad::MText>(db)[1]->contents, "\\PDI-16A\\P模块描述:\\P槽号:3");
}

TEST(DrawingModule, FailuresClearDrawActiveAndKeepWhatWasDrawn) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, {{"1", "A", "向上"}});
    dlg->termSymbolPath = (env.LocalDir() / "missing.dxf").string();
    dlg->drawActive = 1;
    cad::Database db;
    EXPECT_FALSE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    EXPECT_EQ(dlg->drawActive, 0);
    EXPECT_EQ(env.host.AllPrinted(), "文件<" + dlg->termSymbolPath + ">打开失败！\n");
    EXPECT_EQ(All<cad::MText>(db).size(), 2u);
    EXPECT_EQ(All<cad::LwPolyline>(db).size(), 1u);
    EXPECT_TRUE(All<cad::BlockReference>(db).empty());

    // A drawing file that is not a drawing fails the same way.
    testing_support::WriteFile(env.LocalDir() / "bad.dxf",
                               "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nx\n");
    dlg->termSymbolPath = (env.LocalDir() / "bad.dxf").string();
    dlg->drawActive = 1;
    cad::Database again;
    EXPECT_FALSE(DrawModule(*dlg, dlg->CurrentChoice(), again, 0));
    EXPECT_EQ(dlg->drawActive, 0);
}

TEST(DrawingAworkSettings, LabelHeightAndItsDefaults) {
    using draw::ParseAworkSettings;
    EXPECT_DOUBLE_EQ(ParseAworkSettings({"其它:1", "标号字高:5.25"}).labelHeight, 5.25);
    EXPECT_DOUBLE_EQ(ParseAworkSettings({"标号字高:2", "标号字高:9"}).labelHeight, 2.0);
    for (const char* bad : {"标号字高:", "标号字高:-1", "标号字高:0", "标号字高:abc",
                            "标号字高:nan", "标号字高:3x", "标号字高:1e7", "标号字高:inf"}) {
        EXPECT_DOUBLE_EQ(ParseAworkSettings({bad}).labelHeight, draw::kDefaultLabelHeight) << bad;
    }
    testing_support::TempDir dir;
    EXPECT_DOUBLE_EQ(draw::LoadAworkSettings((dir / "none.sys").string()).labelHeight,
                     draw::kDefaultLabelHeight);
    draw::AworkSettings written;
    written.labelHeight = 4.5;
    testing_support::WriteFile(dir / "awork.sys", draw::FormatAworkSettings(written));
    EXPECT_DOUBLE_EQ(draw::LoadAworkSettings((dir / "awork.sys").string()).labelHeight, 4.5);
}

TEST(DrawingAworkSettings, TextFontIsAnShxPairOrOneFontAndFallsBackOnAnythingElse) {
    using draw::ParseAworkSettings;
    const auto font = [](const std::vector<std::string>& lines) {
        const draw::AworkSettings s = ParseAworkSettings(lines);
        return s.textFont + "|" + s.bigFont;
    };
    EXPECT_EQ(font({}), "txt.shx|gbcbig.shx");
    EXPECT_EQ(font({"标号字高:3", "文字字体: simplex.shx , hztxt.shx "}), "simplex.shx|hztxt.shx");
    EXPECT_EQ(font({"文字字体:simsun.ttf", "文字字体:other.ttf"}), "simsun.ttf|");
    for (const char* bad : {"文字字体:", "文字字体:a.shx,", "文字字体:,b.shx", "文字字体:a,b,c",
                            "文字字体:../x.ttf", "文字字体:C:\\x.ttf"}) {
        EXPECT_EQ(font({bad}), "txt.shx|gbcbig.shx") << bad;
    }
    // What is written reads back, the label height beside it.
    draw::AworkSettings written;
    written.labelHeight = 2.5;
    written.textFont = "simsun.ttf";
    written.bigFont.clear();
    std::vector<std::string> lines;
    std::istringstream in(draw::FormatAworkSettings(written));
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    const draw::AworkSettings read = ParseAworkSettings(lines);
    EXPECT_EQ(read.textFont, "simsun.ttf");
    EXPECT_EQ(read.bigFont, "");
    EXPECT_DOUBLE_EQ(read.labelHeight, 2.5);
}

// The module's texts all use the style qvcjk; a drawing that already has it gets the
// configured fonts, and the drawing's current style is left as it was.
TEST(DrawingModule, TextsUseTheModuleStyleWithTheConfiguredFont) {
    DrawingEnvironment env;
    testing_support::WriteFile(env.LocalDir() / "LocalData/awork.sys",
                               "标号字高:4\n文字字体:simsun.ttf\n");
    auto dlg = env.MakeDialog(3, 0, {{"1", "输入", "向上"}});
    cad::Database db;
    const cad::Handle old = db.AddTextStyle("qvcjk", "romans.shx", "x.shx");
    const cad::Handle current = db.CurrentTextStyle();
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), db, 0));
    EXPECT_EQ(db.FindTextStyle("qvcjk"), old);
    EXPECT_EQ(db.TextStyle(old)->font, "simsun.ttf");
    EXPECT_EQ(db.TextStyle(old)->bigFont, "");
    EXPECT_EQ(db.CurrentTextStyle(), current);
    for (const cad::Text* t : All<cad::Text>(db)) {
        EXPECT_EQ(t->style, old) << t->text;
    }
    for (const cad::MText* t : All<cad::MText>(db)) {
        EXPECT_EQ(t->style, old) << t->contents;
    }
}

// Each drawing reads the symbol drawing as it is now: a file changed or removed since the
// last drawing is never served from what was read before.
TEST(DrawingModule, SymbolDrawingIsReadAsItIsNow) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, {{"1", "A", "向上"}});
    cad::Database first;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), first, 0));
    EXPECT_FLOAT_EQ(dlg->termLength, 5.0f);

    cad::Database longer;
    auto* lead = longer.AppendNew<cad::Line>();
    lead->start = {0, 0, 0};
    lead->end = {7.5, 0, 0};
    cad::WriteDxfFile(longer, env.SymbolPath().string(), cad::DxfVersion::R2000);
    cad::Database second;
    ASSERT_TRUE(DrawModule(*dlg, dlg->CurrentChoice(), second, 0));
    EXPECT_FLOAT_EQ(dlg->termLength, 7.5f);

    std::filesystem::remove(env.SymbolPath());
    cad::Database third;
    EXPECT_FALSE(DrawModule(*dlg, dlg->CurrentChoice(), third, 0));
    EXPECT_EQ(env.host.AllPrinted(), "文件<" + dlg->termSymbolPath + ">打开失败！\n");
}
