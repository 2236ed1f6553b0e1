#include <gtest/gtest.h>

#include <numbers>

#include "cad/Audit.h"
#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"

namespace cad {
namespace {

constexpr double kEps = 1e-9;

void ExpectBox(const std::optional<Extents3d>& e, double x0, double y0, double x1, double y1) {
    ASSERT_TRUE(e.has_value());
    EXPECT_NEAR(e->min.x, x0, 1e-6);
    EXPECT_NEAR(e->min.y, y0, 1e-6);
    EXPECT_NEAR(e->max.x, x1, 1e-6);
    EXPECT_NEAR(e->max.y, y1, 1e-6);
}

TEST(Extents, TextWidthCountsFullWidthCharactersWhole) {
    EXPECT_NEAR(TextWidth("AB", 2, 1), 2 * 0.6 * 2, kEps);
    EXPECT_NEAR(TextWidth("端子", 2, 0.8), 2 * 2 * 0.8, kEps);
    EXPECT_NEAR(TextWidth("X端", 1, 1), 1.6, kEps);
    EXPECT_NEAR(TextWidth("ＡＢ", 1, 1), 2.0, kEps);  // full-width forms
}

TEST(Extents, TextsHangOnTheirAlignmentPoint) {
    Database db;
    auto* t = db.AppendNew<Text>();
    t->text = "端子";  // 2 full-width characters: width 2 * h * wf = 3.2 at h=2, wf=0.8
    t->height = 2;
    t->widthFactor = 0.8;
    t->horizontal = TextHorz::Middle;
    t->SetAnchor({10, 0, 0});
    ExpectBox(EntityExtents(db, *t), 8.4, -1, 11.6, 1);
    t->horizontal = TextHorz::Center;
    t->vertical = TextVert::Top;
    t->rotation = std::numbers::pi / 2;  // the box turns about the anchor
    ExpectBox(EntityExtents(db, *t), 10, -1.6, 12, 1.6);
    t->text = "  ";
    EXPECT_FALSE(EntityExtents(db, *t).has_value());  // empty texts are left out
}

TEST(Extents, MTextUsesItsAttachmentAndParagraphs) {
    Database db;
    auto* m = db.AppendNew<MText>();
    m->contents = "{\\fSimSun;AB}\\PABCD";  // widest paragraph 4 x 0.6 x h
    m->height = 1;
    m->attachment = 5;  // middle centre
    const double h = 1 + 5.0 / 3.0;
    ExpectBox(EntityExtents(db, *m), -1.2, -h / 2, 1.2, h / 2);
    EXPECT_EQ(MTextLines("a\\Pb\\~c\\\\d\\S1^2;"), (std::vector<std::string>{"a", "b c\\d1/2"}));
}

TEST(Extents, ArcsAndBulgesIncludeTheirExtremePoints) {
    Database db;
    auto* a = db.AppendNew<Arc>();
    a->radius = 2;
    a->startAngle = std::numbers::pi / 4;
    a->endAngle = 3 * std::numbers::pi / 4;  // passes through the top
    ExpectBox(EntityExtents(db, *a), -std::sqrt(2.0), std::sqrt(2.0), std::sqrt(2.0), 2);
    auto* p = db.AppendNew<LwPolyline>();
    p->vertices = {{0, 0, -1, -1, 1}, {2, 0}};  // a half circle below the chord (counter-clockwise)
    ExpectBox(EntityExtents(db, *p), 0, -1, 2, 0);
}

TEST(Extents, BlockReferencesMeasureVisibleContentUnderTheirTransform) {
    Database db;
    const Handle block = db.DefineBlock("SYM", {1, 0, 0});
    auto line = std::make_unique<Line>();
    line->start = {1, 0, 0};
    line->end = {3, 1, 0};
    db.Append(std::move(line), block);
    auto hidden = std::make_unique<Circle>();
    hidden->radius = 100;
    hidden->visible = false;
    db.Append(std::move(hidden), block);
    auto empty = std::make_unique<Text>();
    empty->height = 50;
    db.Append(std::move(empty), block);
    auto* ref = db.InsertBlock(block, {10, 10, 0}, {2, 2, 2}, std::numbers::pi / 2);
    // The line runs from the base point (0,0) to (2,1) in block units: scaled x2, turned 90°.
    ExpectBox(EntityExtents(db, *ref), 8, 10, 10, 14);
    // A block that references itself (three times over) is measured without its references
    // to itself, and is not exploded at all: both say why.
    for (int i = 0; i < 3; ++i) {
        auto self = std::make_unique<BlockReference>();
        self->block = block;
        self->position = {static_cast<double>(i), 0, 0};
        db.Append(std::move(self), block);
    }
    std::string error;
    ExpectBox(EntityExtents(db, *ref, &error), 8, 10, 10, 14);
    EXPECT_NE(error.find("contains itself"), std::string::npos) << error;
    error.clear();
    EXPECT_TRUE(ExplodeReference(db, ref->handle, &error).empty());
    EXPECT_NE(error.find("contains itself"), std::string::npos) << error;
    EXPECT_FALSE(ref->erased);
}

TEST(Operations, TransformsKeepArcsAndTextsConsistent) {
    Database db;
    auto* a = db.AppendNew<Arc>();
    a->center = {1, 0, 0};
    a->radius = 1;
    a->startAngle = 0;
    a->endAngle = std::numbers::pi / 2;
    // A mirror about the Y axis swaps and reflects the angles.
    ASSERT_TRUE(TransformEntity(*a, Matrix3d::Scaling(-1, 1, 1)));
    EXPECT_EQ(a->center, (Point3d{-1, 0, 0}));
    ExpectBox(EntityExtents(db, *a), -2, 0, -1, 1);
    auto* t = db.AppendNew<Text>();
    t->height = 2;
    ASSERT_TRUE(TransformEntity(*t, Matrix3d::Translation({5, 5, 0}) *
                                        Matrix3d::Rotation(std::numbers::pi / 2) *
                                        Matrix3d::Scaling(1000)));
    EXPECT_NEAR(t->height, 2000, 1e-9);
    EXPECT_NEAR(t->rotation, std::numbers::pi / 2, 1e-12);
    EXPECT_EQ(t->position, (Point3d{5, 5, 0}));
    UnknownEntity u;
    EXPECT_FALSE(TransformEntity(u, Matrix3d::Scaling(2)));
}

TEST(Operations, ExplodeIsRecursiveAndInheritsLayerAndColour) {
    Database db;
    const Handle parts = db.AddLayer("PARTS", 3);
    const Handle inner = db.DefineBlock("INNER");
    auto c = std::make_unique<Circle>();
    c->radius = 1;
    c->color = kColorByBlock;
    db.Append(std::move(c), inner);  // on layer 0, colour by block: takes the reference's
    const Handle outer = db.DefineBlock("OUTER");
    auto* nested = db.InsertBlock(inner, {5, 0, 0}, {1, 1, 1}, 0, outer);
    nested->color = 1;
    auto l = std::make_unique<Line>();
    l->end = {1, 0, 0};
    db.Append(std::move(l), outer);
    auto* ref = db.InsertBlock(outer, {0, 10, 0}, {2, 2, 2}, 0);
    ref->layer = parts;
    const Handle refHandle = ref->handle;
    const auto created = ExplodeReference(db, refHandle);
    ASSERT_EQ(created.size(), 2u);
    EXPECT_TRUE(db.Get<BlockReference>(refHandle)->erased);
    const auto* circle = db.Get<Circle>(created[0]);
    ASSERT_NE(circle, nullptr);
    EXPECT_EQ(circle->center, (Point3d{10, 10, 0}));
    EXPECT_EQ(circle->radius, 2);
    EXPECT_EQ(circle->layer, parts);
    EXPECT_EQ(circle->color, 1);
    EXPECT_EQ(db.Get<Line>(created[1])->end, (Point3d{2, 10, 0}));
    for (const Entity* e : db.Entities()) {
        EXPECT_NE(e->Kind(), ObjectKind::BlockReference);
    }
    EXPECT_EQ(ExplodeAllReferences(db), 0);
}

TEST(Operations, InsertAsBlockCopiesContentNamesAndLinks) {
    Database symbol;
    const Handle points = symbol.AddLayer("QV_TERM_TEXT_POINT", -7);
    symbol.SetInsBase({2, 0, 0});
    auto* marker = symbol.AppendNew<PointEntity>();
    marker->layer = points;
    auto* t = symbol.AppendNew<Text>();
    t->text = "1";
    symbol.AppendXData(*t, "QV_LINK", XDataItem::HandleRef(marker->handle));
    symbol.AppendXData(*t, "QV_LINK", XDataItem::HandleRef(symbol.ModelSpace()));  // outside: cut
    const std::string file = WriteDxfString(symbol, DxfVersion::R2010);

    Database target;
    auto side = ReadDxfString(file, "SYMB2_S_KTR5.dxf");
    const Handle block = InsertAsBlock(target, *side, "SYMB2_S_KTR5");
    ASSERT_NE(block, kNullHandle);
    EXPECT_EQ(target.Block(block)->basePoint, (Point3d{2, 0, 0}));
    const auto members = target.Entities(block);
    ASSERT_EQ(members.size(), 2u);
    EXPECT_EQ(target.Layer(members[0]->layer)->name, "QV_TERM_TEXT_POINT");
    EXPECT_EQ(target.Layer(members[0]->layer)->color, -7);
    const auto* items = target.GetXData(*members[1], "QV_LINK");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ((*items)[0].AsHandle(), members[0]->handle);
    EXPECT_EQ((*items)[1].value, "0");
    // Inserting again redefines the block instead of doubling it.
    EXPECT_EQ(InsertAsBlock(target, *side, "SYMB2_S_KTR5"), block);
    EXPECT_EQ(target.Entities(block).size(), 2u);
    EXPECT_EQ(target.Block(block)->entities.size(), 2u);  // redefinitions do not pile up
    EXPECT_EQ(InsertAsBlock(target, *side, "*Model_Space"), kNullHandle);
    EXPECT_TRUE(Audit(target).empty()) << FormatIssues(Audit(target));
}

TEST(Operations, CopyEntityDuplicatesAReferenceWithItsAttributes) {
    Database db;
    const Handle block = db.DefineBlock("B");
    auto def = std::make_unique<AttributeDefinition>();
    def->tag = "T";
    db.Append(std::move(def), block);
    auto* ref = db.InsertBlock(block, {1, 1, 0});
    const Handle copy = CopyEntity(db, ref->handle);
    ASSERT_NE(copy, kNullHandle);
    const auto* c = db.Get<BlockReference>(copy);
    ASSERT_EQ(c->attributes.size(), 1u);
    EXPECT_NE(c->attributes[0], db.Get<BlockReference>(ref->handle)->attributes[0]);
    EXPECT_EQ(db.Get<Attribute>(c->attributes[0])->owner, copy);
    EXPECT_TRUE(Audit(db).empty()) << FormatIssues(Audit(db));
}

}  // namespace
}  // namespace cad
