// Tables and records that come twice, or after what uses them: one table of a name, one
// record of a block's name, and every entity kept through a write and a second reading.
#include <gtest/gtest.h>

#include <string>

#include "cad/Database.h"
#include "cad/Dxf.h"

namespace cad {
namespace {

std::string Tags(std::initializer_list<std::pair<int, std::string>> tags) {
    std::string out;
    for (const auto& [code, value] : tags) {
        out += std::to_string(code) + "\n" + value + "\n";
    }
    return out;
}

std::string Insert(const std::string& handle, const std::string& owner,
                   const std::string& before = "") {
    return Tags({{0, "INSERT"}, {5, handle}}) + before +
           Tags({{330, owner},
                 {100, "AcDbEntity"},
                 {8, "PARTS"},
                 {100, "AcDbBlockReference"},
                 {66, "1"},
                 {2, "FLAG"},
                 {10, "0"},
                 {20, "0"},
                 {30, "0"}});
}

std::string Attrib(const std::string& handle, const std::string& owner, const std::string& tag) {
    return Tags({{0, "ATTRIB"},
                 {5, handle},
                 {330, owner},
                 {100, "AcDbEntity"},
                 {8, "0"},
                 {100, "AcDbText"},
                 {10, "1"},
                 {20, "2"},
                 {30, "0"},
                 {40, "2.5"},
                 {1, "value"},
                 {100, "AcDbAttribute"},
                 {2, tag},
                 {70, "0"}});
}

std::string Seqend(const std::string& handle, const std::string& owner) {
    return Tags({{0, "SEQEND"}, {5, handle}, {330, owner}, {100, "AcDbEntity"}, {8, "0"}});
}

std::string BlockRecord(const std::string& handle, const std::string& name) {
    return Tags({{0, "BLOCK_RECORD"},
                 {5, handle},
                 {330, "9"},
                 {100, "AcDbSymbolTableRecord"},
                 {100, "AcDbBlockTableRecord"},
                 {2, name},
                 {70, "0"}});
}

std::string Block(const std::string& begin, const std::string& end, const std::string& owner,
                  const std::string& name, const std::string& entities = "") {
    return Tags({{0, "BLOCK"},
                 {5, begin},
                 {330, owner},
                 {100, "AcDbEntity"},
                 {8, "0"},
                 {100, "AcDbBlockBegin"},
                 {2, name},
                 {70, "0"},
                 {10, "0"},
                 {20, "0"},
                 {30, "0"},
                 {3, name}}) +
           entities +
           Tags({{0, "ENDBLK"},
                 {5, end},
                 {330, owner},
                 {100, "AcDbEntity"},
                 {8, "0"},
                 {100, "AcDbBlockEnd"}});
}

const std::string kLine = Tags({{0, "LINE"},
                                {5, "31"},
                                {330, "2E"},
                                {100, "AcDbEntity"},
                                {8, "0"},
                                {100, "AcDbLine"},
                                {10, "0"},
                                {20, "0"},
                                {30, "0"},
                                {11, "1"},
                                {21, "1"},
                                {31, "0"}});

// A drawing whose first ENTITIES section comes before its tables, as a fuzzed file had it:
// the model space, layer PARTS and the table heads are made before the file defines them.
// `insert2` is the second section's INSERT; `tables` may add a table of its own.
std::string EntitiesFirst(const std::string& insert2, const std::string& tables = "") {
    return Tags({{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1027"}, {0, "ENDSEC"}}) +
           Tags({{0, "SECTION"}, {2, "ENTITIES"}}) + Insert("3B", "17") +
           Attrib("3D", "3B", "NAME") + Attrib("3E", "3B", "XPOS") + Seqend("3C", "3B") +
           Tags({{0, "ENDSEC"}, {0, "SECTION"}, {2, "TABLES"}}) +
           Tags({{0, "TABLE"},
                 {2, "LAYER"},
                 {5, "2"},
                 {330, "0"},
                 {100, "AcDbSymbolTable"},
                 {70, "1"},
                 {0, "LAYER"},
                 {5, "40"},
                 {330, "2"},
                 {100, "AcDbSymbolTableRecord"},
                 {100, "AcDbLayerTableRecord"},
                 {2, "parts"},
                 {70, "0"},
                 {62, "3"},
                 {6, "Continuous"},
                 {0, "ENDTAB"}}) +
           Tags({{0, "TABLE"},
                 {2, "BLOCK_RECORD"},
                 {5, "9"},
                 {330, "0"},
                 {100, "AcDbSymbolTable"},
                 {70, "3"}}) +
           BlockRecord("17", "*Model_Space") + BlockRecord("1B", "*Paper_Space") +
           BlockRecord("2E", "FLAG") + Tags({{0, "ENDTAB"}}) + tables +
           Tags({{0, "ENDSEC"}, {0, "SECTION"}, {2, "BLOCKS"}}) +
           Block("18", "19", "17", "*Model_Space") + Block("1C", "1D", "1B", "*Paper_Space") +
           Block("2F", "30", "2E", "FLAG", kLine) +
           Tags({{0, "ENDSEC"}, {0, "SECTION"}, {2, "ENTITIES"}}) + insert2 +
           Tags({{0, "ENDSEC"}, {0, "EOF"}});
}

// The second INSERT repeats the first one's attribute handles.
std::string SecondInsert(const std::string& owner, const std::string& before = "") {
    return Insert("50", owner, before) + Attrib("3D", "50", "NAME") + Attrib("3E", "50", "XPOS") +
           Seqend("3C", "50");
}

bool HasRepair(const Database& db, const std::string& words) {
    for (const auto& r : db.Repairs()) {
        if (r.find(words) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Two INSERTs in model space, each with its two attributes, drawing block FLAG.
void ExpectBothInserts(const Database& db, const std::string& what) {
    const auto entities = db.Entities();
    ASSERT_EQ(entities.size(), 2u) << what;
    for (const Entity* e : entities) {
        const auto* ref = Database::Cast<BlockReference>(e);
        ASSERT_NE(ref, nullptr) << what;
        EXPECT_EQ(ref->owner, db.ModelSpace()) << what;
        EXPECT_EQ(ref->attributes.size(), 2u) << what;
        ASSERT_NE(db.Block(ref->block), nullptr) << what;
        EXPECT_EQ(db.Block(ref->block)->name, "FLAG") << what;
    }
    const auto* flag = db.Block(db.FindBlock("FLAG"));
    ASSERT_NE(flag, nullptr) << what;
    EXPECT_EQ(flag->entities.size(), 1u) << what;
}

// Read, written and read again: the copy holds what the first reading held.
void ExpectRoundTrip(const std::string& file, const std::string& what) {
    auto db = ReadDxfString(file, "first.dxf");
    ExpectBothInserts(*db, what);
    for (DxfVersion v : {DxfVersion::R2000, DxfVersion::R2010}) {
        auto again = ReadDxfString(WriteDxfString(*db, v), "copy.dxf");
        ExpectBothInserts(*again, what + ", its copy");
        EXPECT_TRUE(again->Repairs().empty()) << what << ": " << again->Repairs().front();
    }
}

TEST(RepeatedTables, TablesAfterTheEntitiesJoinWhatTheReaderMadeForThem) {
    const std::string file = EntitiesFirst(SecondInsert("17"));
    ExpectRoundTrip(file, "owned by the file's model space record");

    auto db = ReadDxfString(file, "first.dxf");
    int blockTables = 0;
    for (Handle h : db->Tables()) {
        blockTables += db->Get<SymbolTable>(h)->name == "BLOCK_RECORD" ? 1 : 0;
    }
    EXPECT_EQ(blockTables, 1);
    EXPECT_FALSE(HasRepair(*db, "had no block record"));
    EXPECT_FALSE(HasRepair(*db, "came a second time"));  // the reader's own table is no repeat
    // The layer the first INSERT made takes the file's values, under the file's spelling.
    const auto* parts = db->Layer(db->FindLayer("PARTS"));
    ASSERT_NE(parts, nullptr);
    EXPECT_EQ(parts->color, 3);
    EXPECT_EQ(parts->name, "parts");
    EXPECT_EQ(db->Layer(db->Entities()[0]->layer), parts);
    // The attributes that repeated handles got new ones.
    EXPECT_TRUE(HasRepair(*db, "ATTRIB repeated handle 3D"));
}

TEST(RepeatedTables, OwnerAfterAStrayGroupIsTheOwnerAndTheLastBlockNameIsDrawn) {
    // The fuzzed file's second INSERT: its handle's code became 2, a second block name.
    const std::string file = EntitiesFirst(SecondInsert("17", Tags({{2, "3B"}})));
    ExpectRoundTrip(file, "owner after a stray group");

    auto db = ReadDxfString(file, "first.dxf");
    EXPECT_TRUE(HasRepair(*db, "an INSERT named block 3B and then block FLAG; it draws FLAG"));
    EXPECT_EQ(db->FindBlock("3B"), kNullHandle);
    // The owner is not kept as an extra group, where the writer would put it before its own.
    const std::string written = WriteDxfString(*db, DxfVersion::R2010);
    EXPECT_EQ(written.find("330\n17\n"), std::string::npos);
}

TEST(RepeatedTables, ASecondTableAndASecondModelSpaceRecordAreJoinedAndReported) {
    const std::string second = Tags({{0, "TABLE"},
                                     {2, "BLOCK_RECORD"},
                                     {5, "5A"},
                                     {330, "0"},
                                     {100, "AcDbSymbolTable"},
                                     {70, "1"}}) +
                               BlockRecord("5B", "*MODEL_SPACE") + Tags({{0, "ENDTAB"}});
    // The second INSERT belongs to the second table's model space record.
    const std::string file = EntitiesFirst(SecondInsert("5B"), second);
    ExpectRoundTrip(file, "owned by a repeated model space record");

    auto db = ReadDxfString(file, "first.dxf");
    EXPECT_TRUE(HasRepair(*db, "table BLOCK_RECORD came a second time"));
    EXPECT_TRUE(HasRepair(*db, "block record *MODEL_SPACE repeats the name of block record"));
}

// Without a handle seed the file is looked through once for its highest handle before the
// reader makes one: what it makes lies above every handle of the file, and nothing the file
// gives later is taken.
TEST(RepeatedTables, HandlesMadeWithoutASeedLieAboveTheFilesOwn) {
    auto line = [](const std::string& handle, const std::string& layer) {
        return Tags({{0, "LINE"},
                     {5, handle},
                     {100, "AcDbEntity"},
                     {8, layer},
                     {100, "AcDbLine"},
                     {10, "0"},
                     {20, "0"},
                     {30, "0"},
                     {11, "1"},
                     {21, "1"},
                     {31, "0"}});
    };
    const std::string file =
        Tags({{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1015"}, {0, "ENDSEC"}}) +
        Tags({{0, "SECTION"}, {2, "ENTITIES"}}) + line("10", "NEW") + line("200", "OTHER") +
        Tags({{0, "ENDSEC"}, {0, "EOF"}});
    auto db = ReadDxfString(file, "unseeded.dxf");
    ASSERT_EQ(db->Entities().size(), 2u);
    EXPECT_EQ(db->Entities()[0]->handle, 0x10u);
    EXPECT_EQ(db->Entities()[1]->handle, 0x200u);
    for (Handle made : {db->ModelSpace(), db->FindLayer("NEW"), db->FindLayer("OTHER")}) {
        EXPECT_GT(made, 0x200u);
    }
    EXPECT_FALSE(HasRepair(*db, "repeated handle"));
}

}  // namespace
}  // namespace cad
