#include <gtest/gtest.h>

#include "cad/Audit.h"
#include "cad/Database.h"

namespace cad {
namespace {

TEST(Database, NewDatabaseHoldsEverythingAValidDrawingNeeds) {
    Database db;
    EXPECT_TRUE(Audit(db).empty()) << FormatIssues(Audit(db));
    for (const char* lt : {"ByBlock", "ByLayer", "Continuous"}) {
        EXPECT_NE(db.FindLinetype(lt), kNullHandle) << lt;
    }
    EXPECT_EQ(db.CurrentLayer(), db.FindLayer("0"));
    EXPECT_EQ(db.CurrentTextStyle(), db.FindTextStyle("standard"));  // names match in any case
    EXPECT_NE(db.FindApp("ACAD"), kNullHandle);
    EXPECT_TRUE(db.Block(db.ModelSpace())->IsModelSpace());
    EXPECT_NE(db.Block(db.ModelSpace())->layout, kNullHandle);
    for (const char* d : {"ACAD_GROUP", "ACAD_LAYOUT"}) {
        EXPECT_NE(db.FindDictionary(d), kNullHandle) << d;
    }
    EXPECT_EQ(db.HeaderString("$DWGCODEPAGE"), "ANSI_936");
    EXPECT_EQ(db.HeaderString("$INSUNITS"), "4");
}

TEST(Database, AppendedEntitiesTakeCurrentLayerAndStyleAndKeepTheirHandles) {
    Database db;
    const Handle dim = db.AddLayer("DIM", 2);
    db.SetCurrentLayer(dim);
    const Handle style = db.AddTextStyle("HZ", "txt", "gbcbig");
    db.SetCurrentTextStyle(style);
    auto* text = db.AppendNew<Text>();
    auto* line = db.AppendNew<Line>();
    EXPECT_EQ(text->layer, dim);
    EXPECT_EQ(text->style, style);
    EXPECT_EQ(text->owner, db.ModelSpace());
    EXPECT_LT(text->handle, line->handle);
    EXPECT_EQ(db.Get<Text>(text->handle), text);
    EXPECT_EQ(db.Get<Line>(text->handle), nullptr);  // typed access refuses the wrong type
    EXPECT_EQ(db.HeaderString("$CLAYER"), "DIM");
    // Looking a name up again after a rename or an erase sees the change: an erase and the
    // old name at once, the new name once the records are indexed again.
    EXPECT_EQ(db.FindLayer("dim"), dim);
    db.Layer(dim)->name = "DIM2";
    db.ReindexRecords();
    EXPECT_EQ(db.FindLayer("DIM2"), dim);
    EXPECT_EQ(db.FindLayer("DIM"), kNullHandle);
    db.Layer(dim)->erased = true;
    EXPECT_EQ(db.FindLayer("DIM2"), kNullHandle);
    const Handle again = db.AddLayer("dim2");  // the erased one's name is free again
    EXPECT_NE(again, dim);
    EXPECT_EQ(db.FindLayer("DIM2"), again);
    db.Layer(again)->erased = true;
    db.Layer(dim)->erased = false;
    db.Layer(dim)->name = "DIM";
    db.ReindexRecords();
    // Records appended to a table's list directly are found too, however many.
    for (int i = 0; i < 1000; ++i) {
        db.AddLayer("L" + std::to_string(i));
    }
    EXPECT_NE(db.FindLayer("l999"), kNullHandle);
    EXPECT_EQ(db.FindLayer("L1000"), kNullHandle);
    ASSERT_EQ(db.Entities().size(), 2u);

    // Erasing marks: the object stays reachable by handle, iteration skips it.
    const Handle h = text->handle;
    EXPECT_TRUE(db.Erase(h));
    EXPECT_FALSE(db.Erase(h));
    EXPECT_FALSE(db.Erase(0xFFFFFF));
    EXPECT_TRUE(db.Get<Text>(h)->erased);
    EXPECT_EQ(db.Entities().size(), 1u);
    // New handles never reuse an erased one.
    EXPECT_GT(db.AppendNew<Circle>()->handle, line->handle);
}

// A file holds a name with its control characters as blanks, and a reader trims blanks at
// either end: names that would be written alike must be one record, or a drawing written and
// read again ends with two model spaces and its entities in the wrong one.
TEST(Database, NamesThatWriteAlikeAreOneRecord) {
    Database db;
    const Handle model = db.ModelSpace();
    EXPECT_EQ(db.DefineBlock("*Model_Space\x10"), model);
    EXPECT_EQ(db.FindBlock(" *model_space "), model);
    const Handle layer = db.AddLayer("WIRES", 1);
    EXPECT_EQ(db.FindLayer("wires\t"), layer);
    EXPECT_NE(db.FindLayer("WIRES 2"), layer);
}

// Look-ups alternate between tables and run while a table grows: each finds its own table's
// record, the first of a name, and sees a record erased since it was indexed.
TEST(Database, RecordIndexAnswersEachTableThroughGrowthAndErasure) {
    Database db;
    std::vector<Handle> layers, linetypes;
    for (int i = 0; i < 3000; ++i) {
        const std::string name = "N" + std::to_string(i);
        layers.push_back(db.AddLayer(name));
        linetypes.push_back(db.AddLinetype(name));
        ASSERT_EQ(db.FindLayer(name), layers.back()) << name;
        ASSERT_EQ(db.FindLinetype("n" + std::to_string(i / 2)), linetypes[i / 2]) << name;
    }
    // A second record of a name, appended to the list directly: the first still answers.
    auto twin = std::make_unique<LayerRecord>();
    twin->name = " n17 ";
    twin->owner = db.Table("LAYER");
    const Handle second = db.Add(std::move(twin));
    db.Get<SymbolTable>(db.Table("LAYER"))->records.push_back(second);
    EXPECT_EQ(db.FindLayer("N17"), layers[17]);
    db.Layer(layers[17])->erased = true;
    EXPECT_EQ(db.FindLayer("N17"), second);
    EXPECT_EQ(db.FindLinetype("N17"), linetypes[17]);
    EXPECT_EQ(db.FindLayer("N3000"), kNullHandle);
}

TEST(Database, ExtendedDataAppendsSetsAndRegistersApplications) {
    Database db;
    auto* label = db.AppendNew<MText>();
    auto* ref = db.AppendNew<Line>();
    EXPECT_EQ(db.GetXData(*label, "QV_SYMB2_LABEL"), nullptr);
    db.AppendXData(*label, "QV_SYMB2_LABEL", XDataItem::HandleRef(ref->handle));
    db.AppendXData(*label, "QV_SYMB2_LABEL", XDataItem::HandleRef(0x2A));
    db.SetXData(*ref, "QV_ GROUPPARTXRECT_TEXT", XDataItem::HandleRef(label->handle));
    db.SetXData(*ref, "QV_ GROUPPARTXRECT_TEXT", XDataItem::HandleRef(0x99));  // replaces
    db.SetXData(*ref, "QV_ GROUPPARTXRECT_TEXT", XDataItem::String("1"));      // adds: other code
    EXPECT_NE(db.FindApp("QV_ GROUPPARTXRECT_TEXT"), kNullHandle);

    const auto* items = db.GetXData(*label, "QV_SYMB2_LABEL");
    ASSERT_NE(items, nullptr);
    ASSERT_EQ(items->size(), 2u);
    EXPECT_EQ((*items)[0].AsHandle(), ref->handle);
    EXPECT_EQ((*items)[1].value, "2A");
    const auto* linkItems = db.GetXData(*ref, "QV_ GROUPPARTXRECT_TEXT");
    ASSERT_EQ(linkItems->size(), 2u);
    EXPECT_EQ((*linkItems)[0].AsHandle(), 0x99u);
    EXPECT_EQ((*linkItems)[1].code, 1000);
    EXPECT_EQ(XDataItem::Int16(70000).AsInt(), static_cast<std::int16_t>(70000));
    EXPECT_DOUBLE_EQ(XDataItem::Real(2.5).AsReal(), 2.5);
    EXPECT_TRUE(db.RemoveXData(*ref, "QV_ GROUPPARTXRECT_TEXT"));
    EXPECT_EQ(db.GetXData(*ref, "QV_ GROUPPARTXRECT_TEXT"), nullptr);
}

TEST(Database, DictionariesHoldXRecordsByKey) {
    Database db;
    const Handle dict = db.GetOrAddDictionary("QV_DWG_DICITIONARY");
    EXPECT_EQ(db.GetOrAddDictionary("QV_DWG_DICITIONARY"), dict);
    EXPECT_EQ(db.FindXRecord(dict, "QV_LOCATION_XRECORD"), nullptr);
    const Handle x = db.SetXRecord(dict, "QV_LOCATION_XRECORD", {{1, "A柜"}});
    EXPECT_EQ(db.SetXRecord(dict, "QV_LOCATION_XRECORD", {{1, "B柜"}}), x);  // replaced in place
    ASSERT_NE(db.FindXRecord(dict, "QV_LOCATION_XRECORD"), nullptr);
    EXPECT_EQ(db.FindXRecord(dict, "QV_LOCATION_XRECORD")->Value(1), "B柜");
    EXPECT_EQ(db.Get<XRecord>(x)->owner, dict);
    EXPECT_EQ(db.Get<Dictionary>(dict)->owner, db.NamedObjects());
}

TEST(Database, InsertingABlockAddsOneAttributePerDefinition) {
    Database db;
    const Handle block = db.DefineBlock("TERM", {1, 1, 0});
    EXPECT_EQ(db.DefineBlock("term"), block);
    auto def = std::make_unique<AttributeDefinition>();
    def->tag = "NO";
    def->text = "1";
    def->SetAnchor({1, 3, 0});
    db.Append(std::move(def), block);
    auto constant = std::make_unique<AttributeDefinition>();
    constant->tag = "FIXED";
    constant->flags = 2;  // constant: drawn from the block, no attribute
    db.Append(std::move(constant), block);
    BlockReference* ref = db.InsertBlock(block, {10, 10, 0}, {2, 2, 2}, 0);
    ASSERT_NE(ref, nullptr);
    ASSERT_EQ(ref->attributes.size(), 1u);
    const auto* att = db.Get<Attribute>(ref->attributes[0]);
    EXPECT_EQ(att->tag, "NO");
    EXPECT_EQ(att->text, "1");
    EXPECT_EQ(att->position, (Point3d{10, 14, 0}));  // (1,3) from base (1,1), scaled by 2
    EXPECT_NE(ref->seqend, kNullHandle);
    EXPECT_EQ(db.InsertBlock(0xDEAD, {}), nullptr);
    // Erasing the reference erases what it owns.
    db.Erase(ref->handle);
    EXPECT_TRUE(db.Get<Attribute>(att->handle)->erased);
}

}  // namespace
}  // namespace cad
