// The structure of written files and the objects that ride along with others: paper space,
// old-style polylines with their vertices, attributes under transforms and explode, shared
// reading of a drawing another program holds.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "TestPaths.h"
#include "cad/Dxf.h"
#include "cad/NumberText.h"
#include "cad/Operations.h"

namespace cad {
namespace {

std::vector<std::string> Sections(const TagList& tags) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i + 1 < tags.size(); ++i) {
        if (tags[i].code == 0 && tags[i].value == "SECTION") {
            names.push_back(tags[i + 1].value);
        }
    }
    return names;
}

TEST(FileStructure, SectionsHandSeedAndVersionSpecificParts) {
    Database db;
    db.AppendNew<Line>();
    db.SetThumbnail({{90, "2"}, {310, "0000"}});
    for (DxfVersion v : {DxfVersion::R14, DxfVersion::R2010}) {
        TagCollector out;
        WriteDxf(db, v, out);
        std::vector<std::string> expected = {"HEADER", "CLASSES",  "TABLES",
                                             "BLOCKS", "ENTITIES", "OBJECTS"};
        if (v != DxfVersion::R14) {
            expected.push_back("THUMBNAILIMAGE");
        }
        EXPECT_EQ(Sections(out.tags), expected);
        EXPECT_EQ(out.tags.back().value, "EOF");
        Handle seed = 0, highest = 0;
        bool extnames = false;
        for (std::size_t i = 0; i + 1 < out.tags.size(); ++i) {
            const Tag& t = out.tags[i];
            if (t.code == 9 && t.value == "$HANDSEED") {
                ParseHandle(out.tags[++i].value, seed);
                continue;
            }
            extnames = extnames || (t.code == 9 && t.value == "$EXTNAMES");
            Handle h = 0;
            if ((t.code == 5 || t.code == 105) && ParseHandle(t.value, h)) {
                highest = std::max(highest, h);
            }
        }
        EXPECT_GT(seed, highest) << AcadVer(v);
        EXPECT_EQ(extnames, v != DxfVersion::R14);
    }
}

TEST(FileStructure, PaperSpaceEntitiesAreMarkedAndComeBackThere) {
    Database db;
    auto* note = db.AppendNew<Text>(db.PaperSpace());
    note->text = "sheet";
    const Handle h = note->handle;
    const std::string text = WriteDxfString(db, DxfVersion::R2000);
    EXPECT_NE(text.find("AcDbEntity\n 67\n1\n  8\n0\n100\nAcDbText"), std::string::npos);
    auto back = ReadDxfString(text, "paper.dxf");
    EXPECT_EQ(back->Get<Text>(h)->owner, back->PaperSpace());
    EXPECT_TRUE(back->Entities().empty());
    EXPECT_EQ(back->Entities(back->PaperSpace()).size(), 1u);
}

TEST(FileStructure, OldStylePolylinesKeepTheirVerticesThroughCopies) {
    const std::string text =
        "0\nSECTION\n2\nENTITIES\n"
        "0\nPOLYLINE\n5\n50\n100\nAcDbEntity\n8\nWIRES\n100\nAcDb2dPolyline\n66\n1\n10\n0\n20\n0\n3"
        "0\n0\n"
        "0\nVERTEX\n5\n51\n100\nAcDbEntity\n8\nWIRES\n100\nAcDbVertex\n100\nAcDb2dVertex\n10\n1\n20"
        "\n2\n30\n0\n"
        "0\nVERTEX\n5\n52\n100\nAcDbEntity\n8\nWIRES\n100\nAcDbVertex\n100\nAcDb2dVertex\n10\n3\n20"
        "\n4\n30\n0\n"
        "0\nSEQEND\n5\n53\n100\nAcDbEntity\n8\nWIRES\n0\nENDSEC\n0\nEOF\n";
    auto side = ReadDxfString(text, "wires.dxf");
    ASSERT_EQ(side->Entities().size(), 1u);
    const auto* poly = side->Get<UnknownEntity>(0x50);
    ASSERT_NE(poly, nullptr);
    EXPECT_EQ(poly->followers, (std::vector<Handle>{0x51, 0x52, 0x53}));
    EXPECT_NE(side->FindLayer("WIRES"), kNullHandle);
    const std::string again = WriteDxfString(*side, DxfVersion::R2010);
    EXPECT_LT(again.find("POLYLINE"), again.find("VERTEX"));
    EXPECT_LT(again.rfind("VERTEX"), again.find("SEQEND"));

    Database target;
    const Handle block = InsertAsBlock(target, *side, "WIRES_BLOCK");
    const auto members = target.Entities(block);
    ASSERT_EQ(members.size(), 1u);
    const auto& copy = static_cast<const UnknownEntity&>(*members[0]);
    ASSERT_EQ(copy.followers.size(), 3u);
    EXPECT_EQ(target.Get<Entity>(copy.followers[0])->owner, copy.handle);
    EXPECT_NE(target.FindLayer("WIRES"), kNullHandle);
    EXPECT_NO_THROW(WriteDxfString(target, DxfVersion::R2000));
}

TEST(FileStructure, AttributesFollowTheirReferenceAndExplodeAsTexts) {
    Database db;
    const Handle block = db.DefineBlock("TERM");
    auto def = std::make_unique<AttributeDefinition>();
    def->tag = "NO";
    def->text = "7";
    db.Append(std::move(def), block);
    auto hidden = std::make_unique<AttributeDefinition>();
    hidden->tag = "SECRET";
    hidden->flags = 1;
    db.Append(std::move(hidden), block);
    auto* ref = db.InsertBlock(block, {0, 0, 0});
    const Handle refHandle = ref->handle;
    const Handle att = ref->attributes[0];
    ASSERT_TRUE(TransformEntity(db, refHandle, Matrix3d::Translation({10, 5, 0})));
    EXPECT_EQ(db.Get<Attribute>(att)->position, (Point3d{10, 5, 0}));
    const auto pieces = ExplodeReference(db, refHandle);
    ASSERT_EQ(pieces.size(), 1u);  // the visible attribute; the invisible one is dropped
    const auto* text = db.Get<Text>(pieces[0]);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->Kind(), ObjectKind::Text);
    EXPECT_EQ(text->text, "7");
    EXPECT_EQ(text->position, (Point3d{10, 5, 0}));
    EXPECT_TRUE(db.Get<Attribute>(att)->erased);
}

TEST(FileStructure, ADrawingLockedByAnotherProgramCanStillBeRead) {
    testing_support::TempDir dir;
    const auto path = (dir / "Temp_PlcDraw.dxf").string();
    Database db;
    db.AppendNew<Circle>()->radius = 3;
    WriteDxfFile(db, path, DxfVersion::R2010);
    const int holder = ::open(path.c_str(), O_RDWR);
    ASSERT_GE(holder, 0);
    ASSERT_EQ(::flock(holder, LOCK_EX | LOCK_NB), 0);
    std::string error;
    auto side = TryReadDxfFile(path, error);
    ::close(holder);
    ASSERT_NE(side, nullptr) << error;
    EXPECT_EQ(side->Entities().size(), 1u);
}

}  // namespace
}  // namespace cad
