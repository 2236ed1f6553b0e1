// The preview file, the drag placement and the two drawing commands, driven through a
// recording host whose answers stand for the user's points.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "DrawingTestSupport.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "draw/ModuleDrawing.h"
#include "draw/SheetDrawing.h"

using namespace drawing_test;
using host::InputStatus;

namespace {

testing_support::PointAnswer At(double x, double y) {
    return {InputStatus::Normal, {x, y, 0}};
}

std::vector<Row> Rows(int upper, int lower) {
    std::vector<Row> rows;
    for (int i = 0; i < upper; ++i) {
        rows.push_back({"U" + std::to_string(i), "输入" + std::to_string(i), "向上"});
    }
    for (int i = 0; i < lower; ++i) {
        rows.push_back({"L" + std::to_string(i), "输出" + std::to_string(i), "     向下"});
    }
    return rows;
}

std::string Record(const cad::Database& db, const std::string& label) {
    const cad::Handle dict = db.FindDictionary("QV_DICITIONARY_PART2DATABASE");
    const cad::XRecord* record = dict ? db.FindXRecord(dict, label) : nullptr;
    std::string text;
    if (record) {
        for (const cad::Tag& tag : record->data) {
            text += std::to_string(tag.code) + "=" + tag.value + ";";
        }
    }
    return text;
}

}  // namespace

TEST(DrawingPlacement, PreviewHoldsPlainGeometryOnly) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, Rows(2, 1));
    ASSERT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);
    ASSERT_TRUE(std::filesystem::exists(env.PreviewPath()));
    const auto preview = cad::ReadDxfFile(env.PreviewPath().string());
    int lines = 0, circles = 0;
    for (const cad::Entity* e : preview->Entities()) {
        EXPECT_NE(e->Kind(), cad::ObjectKind::BlockReference) << "references are exploded";
        lines += e->Kind() == cad::ObjectKind::Line;
        circles += e->Kind() == cad::ObjectKind::Circle;
    }
    EXPECT_EQ(lines, 3);
    EXPECT_EQ(circles, 3);

    // A symbol that cannot be read is reported and ends the drawing; the preview of what
    // was drawn before it is still written.
    dlg->termSymbolPath = "/nonexistent/SYMB2_T.dxf";
    dlg->drawActive = 1;
    EXPECT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);
    EXPECT_EQ(dlg->drawActive, 0);
    EXPECT_NE(env.host.AllPrinted().find("文件</nonexistent/SYMB2_T.dxf>打开失败！\n"),
              std::string::npos);
}

TEST(DrawingPlacement, DragShowsTheModuleFullSizeUnderTheCursor) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, Rows(1, 0));
    cad::Point3d out;
    EXPECT_EQ(DragPlaceModule(*dlg, out, 1), 0) << "no preview file yet";
    ASSERT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);

    env.host.pointAnswers = {{InputStatus::None, {}}, At(100, 50)};
    ASSERT_EQ(DragPlaceModule(*dlg, out, 1), 1);
    ExpectPoint(out, {100, 50}, "picked");
    EXPECT_EQ(env.host.prompts, (std::vector<std::string>{"\n请选择插入点:", "\n请选择插入点:"}));
    // A point of the 1/1000 reference at the origin lands at full size under the cursor.
    ExpectPoint(env.host.lastDragTransform.Apply(cad::Point3d{0.001, 0.002, 0}), {101, 52},
                "drag transform");
    auto* ref = env.drawing.Get<cad::BlockReference>(dlg->placedRefId);
    ASSERT_NE(ref, nullptr);
    EXPECT_EQ(ref->block, env.drawing.FindBlock("Temp_PlcDraw_Block"));
    ExpectPoint(ref->position, {100, 50}, "kept reference");
    EXPECT_EQ(ref->scale, (cad::Vector3d{1, 1, 1}));

    // Without keep the reference goes; cancelled, it goes and the user is told.
    env.host.pointAnswers = {At(5, 5)};
    ASSERT_EQ(DragPlaceModule(*dlg, out, 0), 1);
    env.host.pointAnswers = {{InputStatus::Cancel, {}}};
    EXPECT_EQ(DragPlaceModule(*dlg, out, 1), 0);
    EXPECT_EQ(env.host.AllPrinted(), "\n选择插入点错误!");
    int live = 0;
    for (const cad::Entity* e : env.drawing.Entities()) {
        live += e->Kind() == cad::ObjectKind::BlockReference;
    }
    EXPECT_EQ(live, 1) << "only the kept reference stays";
    EXPECT_NE(env.drawing.FindBlock("Temp_PlcDraw_Block"), cad::kNullHandle);
}

// What the placement block holds, kind by kind, against what the preview file holds.
template <class EntityPointers>
std::map<cad::ObjectKind, int> KindCounts(const EntityPointers& entities) {
    std::map<cad::ObjectKind, int> counts;
    for (const auto* e : entities) {
        ++counts[e->Kind()];
    }
    return counts;
}

TEST(DrawingPlacement, PlacesWhatThePreviewFileHoldsEvenWhenChangedSinceWriting) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(3, 0, Rows(3, 2));
    const std::string path = env.PreviewPath().string();
    cad::Point3d out;
    const auto placedBlock = [&] {
        const cad::Handle block = env.drawing.FindBlock("Temp_PlcDraw_Block");
        return KindCounts(std::as_const(env.drawing).Entities(block));
    };

    ASSERT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);
    env.host.pointAnswers = {At(0, 0)};
    ASSERT_EQ(DragPlaceModule(*dlg, out, 0), 1);
    EXPECT_EQ(placedBlock(), KindCounts(cad::ReadDxfFile(path)->Entities()));

    // Another drawing put in its place after writing: that drawing is placed.
    cad::Database other;
    auto circle = std::make_unique<cad::Circle>();
    circle->radius = 7;
    other.Append(std::move(circle));
    cad::WriteDxfFile(other, path, cad::DxfVersion::R2010);
    env.host.pointAnswers = {At(0, 0)};
    ASSERT_EQ(DragPlaceModule(*dlg, out, 0), 1);
    EXPECT_EQ(placedBlock(), (std::map<cad::ObjectKind, int>{{cad::ObjectKind::Circle, 1}}));

    // Written again and then spoilt: reported, nothing placed.
    ASSERT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << "  0\nSECTION\n  2\nENTI";
    env.host.pointAnswers = {At(0, 0)};
    EXPECT_EQ(DragPlaceModule(*dlg, out, 0), 0);
    EXPECT_NE(env.host.AllPrinted().find("文件<" + path + ">打开失败！"), std::string::npos);
}

// The drawing kept from writing the preview and the one the file reads back as are placed
// alike, down to every tag, texts with escapes, quotes and CJK included.
TEST(DrawingPlacement, KeptPreviewPlacesExactlyAsTheFileReadsBack) {
    const std::pair<const char*, const char*> cases[] = {{"8", "输入 {A}\\P \"q\" 端子"},
                                                         {"24", "输入 {A}\\P \"q\" 端子"},
                                                         {"48", "输入 {A}\\P \"q\" 端子"},
                                                         {"48", "断\n行 \\U+0041"},
                                                         {"24", "断\x01行 \\u+4E2D"}};
    for (const auto& [format, desc] : cases) {
        DrawingEnvironment env;
        env.host.environment["DefaultFormatForSave"] = format;
        auto dlg = env.MakeDialog(2, 1, Rows(3, 2));
        dlg->editModuleDesc = desc;
        ASSERT_EQ(WriteModulePreview(*dlg, dlg->CurrentChoice(), 0), 1);
        cad::Point3d out;
        env.host.pointAnswers = {At(0, 0)};
        ASSERT_EQ(DragPlaceModule(*dlg, out, 0), 1);

        cad::Database parsed;
        const auto file = cad::ReadDxfFile(env.PreviewPath().string());
        const cad::Handle block = cad::InsertAsBlock(parsed, *file, "Temp_PlcDraw_Block");
        parsed.Erase(parsed.InsertBlock(block, {}, {0.001, 0.001, 0.001})->handle);
        EXPECT_TRUE(cad::WriteDxfString(env.drawing, cad::DxfVersion::R2010) ==
                    cad::WriteDxfString(parsed, cad::DxfVersion::R2010))
            << "save format " << format << ", description " << desc;
    }
}

TEST(DrawingFullSheet, DrawsAtThePickedPointWithDetailLinksAndPartRecord) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, Rows(2, 1));
    dlg->detailModelType = 1;
    env.host.pointAnswers = {At(200, 100)};
    ASSERT_TRUE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
    EXPECT_EQ(dlg->drawFinished, 1);
    EXPECT_TRUE(dlg->reshowPending);
    EXPECT_FALSE(dlg->drawBusy);
    EXPECT_EQ(env.host.sentCommands, std::vector<std::string>{"(Command)\nRendalFull\n"});

    // Everything of the module is offset by the picked point; the placement reference is gone.
    const auto refs = All<cad::BlockReference>(env.drawing);
    ASSERT_EQ(refs.size(), 3u);
    ExpectPoint(refs[0]->position, {205, 100}, "first upper symbol");
    ExpectPoint(refs[2]->position, {205, 90}, "lower symbol");
    ExpectPoints(Vertices(*All<cad::LwPolyline>(env.drawing)[0]),
                 {{200, 90}, {220, 90}, {220, 100}, {200, 100}}, "frame");
    const auto mtexts = All<cad::MText>(env.drawing);
    ASSERT_EQ(mtexts.size(), 2u);
    ExpectPoint(mtexts[0]->position, {196, 95}, "label");
    EXPECT_EQ(dlg->labelId, mtexts[0]->handle);
    EXPECT_EQ(Links(env.drawing, *mtexts[0], "QV_LABEL_DETAIL"),
              std::vector<cad::Handle>{mtexts[1]->handle});
    EXPECT_EQ(Links(env.drawing, *mtexts[1], "QV_DETAIL_LABEL"),
              std::vector<cad::Handle>{mtexts[0]->handle});
    EXPECT_EQ(Record(env.drawing, "-A1"),
              "3=$LABEL;1=-A1;3=$CODE;1=DI-16A;3=$DESCRIBE;1=16点数字量输入;3=$TYPE;1=ALP "
              "DI-16A;3=$NAME;1=16点数字量输入;3=$NOTE;1=;3=$LABELDIS;1=-A1;3=$Location;1=+CP1;");
}

TEST(DrawingFullSheet, CancelledPlacementDrawsNothing) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(3, 0, Rows(2, 2));
    env.host.pointAnswers = {{InputStatus::Cancel, {}}};
    EXPECT_FALSE(DrawFullSheet(*dlg, dlg->CurrentChoice(), env.drawing));
    EXPECT_EQ(dlg->drawActive, 0);
    EXPECT_EQ(dlg->drawFinished, 0);
    EXPECT_TRUE(env.drawing.Entities().empty());
    EXPECT_TRUE(dlg->reshowPending);
    EXPECT_EQ(Record(env.drawing, "-A1"), "");
}

TEST(DrawingDivided, HorizontalPiecesShareOneHeaderAndRunOutUnevenly) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(3, 0, Rows(3, 1));
    dlg->autoDetail = dlg->autoDetailModel = false;
    // Piece 1 from (0,0): 25 is refused (2p + 5), a point left of the start too, then 36:
    // k = (36 - 10) / 10 = 2. Piece 2 from (100, 0) to (150, 0): k = 4, one upper left.
    env.host.pointAnswers = {At(0, 0), At(25, 0), At(-30, 0), At(36, 0), At(100, 0), At(150, 0)};
    ASSERT_TRUE(DrawDivided(*dlg, dlg->CurrentChoice(), env.drawing));
    EXPECT_EQ(dlg->drawFinished, 1);
    EXPECT_EQ(dlg->drawActive, 0);
    EXPECT_EQ(env.host.prompts,
              (std::vector<std::string>{
                  "\n请选择插入点:", "\n请指定绘制结束点:", "\n结束点位置不对，请重新指定:",
                  "\n结束点位置不对，请重新指定:", "\n请选择插入点:", "\n请指定绘制结束点:"}));
    EXPECT_EQ(All<cad::MText>(env.drawing).size(), 2u) << "header on the first piece only";

    const auto refs = All<cad::BlockReference>(env.drawing);
    ASSERT_EQ(refs.size(), 4u) << "the kept previews are erased";
    ExpectPoint(refs[0]->position, {10, 2.5}, "U0");
    ExpectPoint(refs[1]->position, {20, 2.5}, "U1");
    ExpectPoint(refs[2]->position, {10, -12.5}, "L0");
    ExpectPoint(refs[3]->position, {110, 2.5}, "U2 in piece 2");

    // Cells, then the brackets of each piece; the second piece's lower edge is empty.
    std::vector<const cad::LwPolyline*> brackets;
    for (const cad::LwPolyline* p : All<cad::LwPolyline>(env.drawing)) {
        if (!p->closed) {
            brackets.push_back(p);
        }
    }
    ASSERT_EQ(brackets.size(), 4u);
    ExpectPoints(Vertices(*brackets[0]), {{5, 0}, {0, 0}, {0, -10}, {5, -10}}, "opening 1");
    ExpectPoints(Vertices(*brackets[1]), {{25, 0}, {30, 0}, {30, -10}, {15, -10}}, "closing 1");
    ExpectPoints(Vertices(*brackets[3]), {{115, 0}, {120, 0}, {120, -10}, {105, -10}}, "closing 2");
    // Every outline piece and every symbol of both pieces links to the one label.
    const cad::MText& label = *All<cad::MText>(env.drawing)[0];
    EXPECT_EQ(Links(env.drawing, label, "QV_SYMB2_LABEL").size(), 4u);
    EXPECT_EQ(Links(env.drawing, label, "QV_ GROUPPARTXRECT_XRECT").size(), 8u);
    // Here the description text links back to its symbol.
    const auto texts = All<cad::Text>(env.drawing);
    EXPECT_EQ(Links(env.drawing, *texts[1], "QV_SYMB2_TERMDESC_TEXT_1"),
              std::vector<cad::Handle>{refs[0]->handle});
    EXPECT_EQ(Record(env.drawing, "-A1"), "");
}

TEST(DrawingDivided, VerticalCellStylePrintsTheClosingCorners) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(
        3, 1, {{"1", "A", "     向右"}, {"2", "B", "     向右"}, {"3", "C", "向左"}});
    env.host.pointAnswers = {At(50, 200), At(50, 160)};  // 40 down: k = 3
    ASSERT_TRUE(DrawDivided(*dlg, dlg->CurrentChoice(), env.drawing));
    // First (right) run 20 from two terminals, second (left) run 10; yb = 200 - 5 - 20 - 5.
    // The left-upper corner follows the first run and the right-upper corner the second.
    EXPECT_EQ(
        env.host.AllPrinted(),
        "\nLU:(40.00,175.00)\n\nLD:(40.00,170.00)\n\nRD:(50.00,170.00)\n\nRU:(50.00,185.00)\n");
    const auto refs = All<cad::BlockReference>(env.drawing);
    ASSERT_EQ(refs.size(), 3u);
    ExpectPoint(refs[0]->position, {52.5, 190}, "right 1");
    ExpectPoint(refs[1]->position, {52.5, 180}, "right 2");
    ExpectPoint(refs[2]->position, {37.5, 190}, "left 1");
    EXPECT_NE(Record(env.drawing, "-A1"), "");

    // Frame styles print nothing.
    DrawingEnvironment quiet;
    auto frame = quiet.MakeDialog(1, 1, {{"1", "A", "     向右"}});
    quiet.host.pointAnswers = {At(0, 0), At(0, -30)};
    ASSERT_TRUE(DrawDivided(*frame, frame->CurrentChoice(), quiet.drawing));
    EXPECT_EQ(quiet.host.AllPrinted(), "");
    // Without cells a piece is closed by its two brackets alone.
    const auto outline = All<cad::LwPolyline>(quiet.drawing);
    ASSERT_EQ(outline.size(), 2u);
    ExpectPoints(Vertices(*outline[0]), {{-10, -5}, {-10, 0}, {0, 0}, {0, -5}}, "opening bracket");
    ExpectPoints(Vertices(*outline[1]), {{-10, -15}, {-10, -20}, {0, -20}, {0, -5}},
                 "closing bracket");
}

TEST(DrawingDivided, CancelAtAnyPromptEndsTheCommandKeepingDrawnPieces) {
    DrawingEnvironment env;
    auto dlg = env.MakeDialog(1, 0, Rows(4, 0));
    env.host.pointAnswers = {
        At(0, 0), At(30, 0), At(100, 0), At(110, 0), {InputStatus::Cancel, {}}};
    EXPECT_FALSE(DrawDivided(*dlg, dlg->CurrentChoice(), env.drawing));
    EXPECT_EQ(dlg->drawActive, 0);
    EXPECT_EQ(dlg->drawFinished, 0);
    EXPECT_EQ(All<cad::BlockReference>(env.drawing).size(), 2u) << "piece 1 stays, no preview";

    // A missing symbol stops before anything is drawn.
    DrawingEnvironment broken;
    auto bad = broken.MakeDialog(1, 0, Rows(1, 0));
    bad->termSymbolPath = "/nonexistent.dxf";
    EXPECT_FALSE(DrawDivided(*bad, bad->CurrentChoice(), broken.drawing));
    EXPECT_EQ(broken.host.AllPrinted(), "文件</nonexistent.dxf>打开失败！\n");
    EXPECT_TRUE(broken.drawing.Entities().empty());
}
