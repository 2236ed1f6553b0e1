// What is written reads back the same: every field, handle and extended-data item, in every
// version; tags the database does not model stay in their subclass.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>

#include "cad/Database.h"
#include "cad/Dxf.h"

namespace cad {
namespace {

constexpr DxfVersion kVersions[] = {DxfVersion::R14, DxfVersion::R2000, DxfVersion::R2004,
                                    DxfVersion::R2007, DxfVersion::R2010};

struct Sample {
    Database db;
    Handle line, poly, arc, text, mtext, ref;

    Sample() {
        const Handle dim = db.AddLayer("DIM", 2);
        auto* l = db.AppendNew<Line>();
        l->start = {1, 2, 0};
        l->end = {3.25, -4, 0};
        l->color = 4;
        line = l->handle;
        auto* p = db.AppendNew<LwPolyline>();
        p->vertices = {{0, 0, 0.5, 1.0, 0}, {10, 0, -1, -1, 0.414}, {10, 5}};
        p->closed = true;
        poly = p->handle;
        auto* a = db.AppendNew<Arc>();
        a->center = {5, 5, 0};
        a->radius = 2;
        a->startAngle = 0.25;
        a->endAngle = 1.5707963;
        arc = a->handle;
        auto* t = db.AppendNew<Text>();
        t->text = "端子☃号";
        t->height = 2;
        t->rotation = 1.5707963;
        t->widthFactor = 0.8;
        t->horizontal = TextHorz::Middle;
        t->vertical = TextVert::Top;
        t->SetAnchor({7, -8, 0});
        t->layer = dim;
        t->visible = false;
        text = t->handle;
        auto* m = db.AppendNew<MText>();
        m->contents = "厂家:某某\\P模块代号:X1\\P" + std::string(300, 'a') + "中";
        m->attachment = 5;
        m->rotation = 1.5707963;
        m->height = 3.5;
        mtext = m->handle;
        const Handle block = db.DefineBlock("SYMB2_S_KTR5", {0.5, 0, 0});
        auto c = std::make_unique<Circle>();
        c->radius = 1.25;
        db.Append(std::move(c), block);
        auto def = std::make_unique<AttributeDefinition>();
        def->tag = "TERM";
        def->prompt = "端子";
        def->text = "1";
        db.Append(std::move(def), block);
        auto* r = db.InsertBlock(block, {20, 0, 0}, {1, 2, 1}, std::numbers::pi / 2);
        ref = r->handle;
        db.Get<Attribute>(r->attributes[0])->text = "X1:1";
        db.AppendXData(*r, "QV_SYMB2_TERM_TEXT_1", XDataItem::String("1"));
        db.AppendXData(*r, "QV_SYMB2_TERM_TEXT_1", XDataItem::HandleRef(text));
        db.AppendXData(*m, "QV_SYMB2_LABEL", XDataItem::HandleRef(ref));
        db.AppendXData(*p, "QV_ GROUPPARTXRECT_TEXT", XDataItem::HandleRef(mtext));
        db.AppendXData(*l, "QV_NUMBERS", XDataItem::Real(-0.125));
        db.AppendXData(*l, "QV_NUMBERS", XDataItem::Int16(-7));
        db.AppendXData(*l, "QV_NUMBERS", XDataItem::Int32(100000));
        db.SetXRecord(db.GetOrAddDictionary("QV_DICITIONARY_PART2DATABASE"), "PART1",
                      {{1, "$LABEL"}, {40, "2.5"}});
        db.SetThumbnail({{90, "4"}, {310, "00FF00FF"}});
        db.SetInsBase({1, 2, 0});
    }
};

void ExpectSameXData(const Database& a, const Entity& ea, const Database& b, const Entity& eb) {
    ASSERT_EQ(ea.xdata.size(), eb.xdata.size()) << ea.TypeName();
    for (std::size_t g = 0; g < ea.xdata.size(); ++g) {
        EXPECT_EQ(ea.xdata[g].items, eb.xdata[g].items) << a.AppName(ea.xdata[g].app);
    }
}

TEST(RoundTrip, EveryFieldHandleAndItemComesBackInEveryVersion) {
    Sample s;
    for (DxfVersion v : kVersions) {
        SCOPED_TRACE(AcadVer(v));
        auto back = ReadDxfString(WriteDxfString(s.db, v), "sample.dxf");
        EXPECT_TRUE(back->Repairs().empty()) << back->Repairs().front();
        EXPECT_EQ(back->HandleSeed(), s.db.HandleSeed());
        EXPECT_EQ(back->HeaderString("$ACADVER"), AcadVer(v));
        EXPECT_EQ(back->HeaderString("$DWGCODEPAGE"), "ANSI_936");
        for (const Entity* e : s.db.Entities()) {
            const Entity* f = back->Get<Entity>(e->handle);
            ASSERT_NE(f, nullptr) << e->TypeName() << " " << e->handle;
            EXPECT_EQ(f->TypeName(), e->TypeName());
            EXPECT_EQ(f->color, e->color);
            EXPECT_EQ(f->visible, e->visible);
            EXPECT_EQ(back->Layer(f->layer)->name, s.db.Layer(e->layer)->name);
            if (v != DxfVersion::R14) {
                ExpectSameXData(s.db, *e, *back, *f);
            }
        }
        const auto* l = back->Get<Line>(s.line);
        EXPECT_EQ(l->end, (Point3d{3.25, -4, 0}));
        const auto* p = back->Get<LwPolyline>(s.poly);
        ASSERT_EQ(p->vertices.size(), 3u);
        EXPECT_TRUE(p->closed);
        EXPECT_EQ(p->vertices[0].endWidth, 1.0);
        EXPECT_EQ(p->vertices[1].bulge, 0.414);
        EXPECT_EQ(p->vertices[1].startWidth, 0.0);  // not given: written as the constant width
        const auto* a = back->Get<Arc>(s.arc);
        EXPECT_NEAR(a->startAngle, 0.25, 1e-12);
        const auto* t = back->Get<Text>(s.text);
        EXPECT_EQ(t->text, "端子☃号");
        EXPECT_EQ(t->horizontal, TextHorz::Middle);
        EXPECT_EQ(t->vertical, TextVert::Top);
        EXPECT_EQ(t->Anchor(), (Point3d{7, -8, 0}));
        EXPECT_NEAR(t->rotation, 1.5707963, 1e-12);
        const auto* m = back->Get<MText>(s.mtext);
        EXPECT_EQ(m->contents, s.db.Get<MText>(s.mtext)->contents);
        EXPECT_EQ(m->attachment, 5);
        EXPECT_NEAR(m->rotation, 1.5707963, 1e-12);
        const auto* r = back->Get<BlockReference>(s.ref);
        EXPECT_EQ(back->Block(r->block)->name, "SYMB2_S_KTR5");
        EXPECT_EQ(back->Block(r->block)->basePoint, (Point3d{0.5, 0, 0}));
        EXPECT_EQ(r->scale.y, 2);
        ASSERT_EQ(r->attributes.size(), 1u);
        EXPECT_EQ(back->Get<Attribute>(r->attributes[0])->text, "X1:1");
        const Handle dict = back->FindDictionary("QV_DICITIONARY_PART2DATABASE");
        ASSERT_NE(back->FindXRecord(dict, "PART1"), nullptr);
        EXPECT_EQ(back->FindXRecord(dict, "PART1")->data, (TagList{{1, "$LABEL"}, {40, "2.5"}}));
        EXPECT_EQ(back->InsBase(), (Point3d{1, 2, 0}));
        EXPECT_EQ(back->Thumbnail().size(), v == DxfVersion::R14 ? 0u : 2u);
    }
}

TEST(RoundTrip, R14SavesApplicationNamesWithBlanksUnderValidNames) {
    Sample s;
    const std::string r14 = WriteDxfString(s.db, DxfVersion::R14);
    EXPECT_EQ(r14.find("QV_ GROUP"), std::string::npos);
    auto back = ReadDxfString(r14, "r14.dxf");
    const auto* items = back->GetXData(*back->Get<Entity>(s.poly), "QV__GROUPPARTXRECT_TEXT");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ((*items)[0].AsHandle(), s.mtext);  // the link survives
    // From R2000 on the name is kept as it is.
    auto r2000 = ReadDxfString(WriteDxfString(s.db, DxfVersion::R2000), "r2000.dxf");
    EXPECT_NE(r2000->GetXData(*r2000->Get<Entity>(s.poly), "QV_ GROUPPARTXRECT_TEXT"), nullptr);
}

TEST(RoundTrip, TextIsGbkBefore2007AndUtf8After) {
    Sample s;
    const std::string r2004 = WriteDxfString(s.db, DxfVersion::R2004);
    EXPECT_NE(r2004.find("\xB6\xCB\xD7\xD3\\U+2603"), std::string::npos);  // 端子 in GBK, then ☃
    EXPECT_NE(r2004.find("$DWGCODEPAGE\n  3\nANSI_936"), std::string::npos);
    const std::string r2007 = WriteDxfString(s.db, DxfVersion::R2007);
    EXPECT_NE(r2007.find("端子☃号"), std::string::npos);
}

// A control byte inside a value would break the file's line structure; it becomes a blank
// wherever it stands in a text of any length, while tabs and other characters stay.
TEST(RoundTrip, ControlBytesBecomeBlanksAnywhereInATextOfAnyLength) {
    for (DxfVersion v : {DxfVersion::R2004, DxfVersion::R2010}) {
        for (std::size_t length = 1; length <= 20; ++length) {
            for (std::size_t at = 0; at < length; ++at) {
                for (const char* odd : {"\n", "\r", "\x01", "\t", "端"}) {
                    Database db;
                    auto* t = db.AppendNew<Text>();
                    t->text = std::string(at, 'x') + odd + std::string(length - at - 1, 'y');
                    std::string expected = t->text;
                    if (odd[0] != '\t' && static_cast<unsigned char>(odd[0]) < 0x20) {
                        expected[at] = ' ';
                    }
                    auto back = ReadDxfString(WriteDxfString(db, v), "controls.dxf");
                    ASSERT_EQ(back->Get<Text>(t->handle)->text, expected)
                        << "length " << length << " at " << at;
                }
            }
        }
    }
}

// The writer tells when the text will not read back as the drawing holds it.
TEST(RoundTrip, WriterTellsWhenTheFileCannotHoldTheDrawingExactly) {
    const auto exactly = [](const Database& db, DxfVersion v) {
        bool exact = false;
        WriteDxfString(db, v, &exact);
        return exact;
    };
    Sample s;
    EXPECT_TRUE(exactly(s.db, DxfVersion::R2010));
    EXPECT_TRUE(exactly(s.db, DxfVersion::R2004));  // GBK, with escapes for the rest

    Database blankApp;
    auto* line = blankApp.AppendNew<Line>();
    blankApp.AppendXData(*line, "QV_ GROUPPARTXRECT_TEXT", XDataItem::String("x"));
    EXPECT_TRUE(exactly(blankApp, DxfVersion::R2000));
    EXPECT_FALSE(exactly(blankApp, DxfVersion::R14));

    for (const char* text : {"a\nb", "tab\tok but \x02", "\\U+0041", "端\\u+4E2D"}) {
        Database db;
        db.AppendNew<MText>()->contents = text;
        db.AppendNew<Text>()->text = "plain";
        EXPECT_FALSE(exactly(db, DxfVersion::R2010)) << text;
        Database db2;
        db2.AppendNew<Text>()->text = text;
        EXPECT_FALSE(exactly(db2, DxfVersion::R2004)) << text;
    }
    Database escapesOnly;
    escapesOnly.AppendNew<MText>()->contents = "{\\H2;A}\\P\\U";
    EXPECT_TRUE(exactly(escapesOnly, DxfVersion::R2010));

    // A number no file can hold is not written at all.
    Database nan;
    nan.AppendNew<Circle>()->radius = std::nan("");
    EXPECT_THROW(exactly(nan, DxfVersion::R2010), DxfError);
}

// A drawing larger than the file writer's buffer is the same text on disk as in memory.
TEST(RoundTrip, LargeDrawingWrittenToAFileEqualsItsText) {
    Database db;
    for (int i = 0; i < 20000; ++i) {
        auto* t = db.AppendNew<Text>();
        t->text = "端子 " + std::to_string(i);
        t->position = {i * 0.1, i * 1e-7, 0};
        db.AppendXData(*t, "QV_SYMB2_TERM_TEXT_1", XDataItem::String("1"));
    }
    const std::string text = WriteDxfString(db, DxfVersion::R2010);
    ASSERT_GT(text.size(), 2u << 20);
    const auto path = std::filesystem::temp_directory_path() /
                      ("qv_large_" + std::to_string(::getpid()) + ".dxf");
    WriteDxfFile(db, path.string(), DxfVersion::R2010);
    std::ifstream in(path, std::ios::binary);
    const std::string onDisk((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
    std::filesystem::remove(path);
    EXPECT_TRUE(onDisk == text);
}

TEST(RoundTrip, LongMTextIsSplitWithoutBreakingACharacter) {
    Database db;
    auto* m = db.AppendNew<MText>();
    for (int i = 0; i < 200; ++i) {
        m->contents += "端\\P";
    }
    for (DxfVersion v : {DxfVersion::R2000, DxfVersion::R2010}) {
        TagCollector tags;
        WriteDxf(db, v, tags);
        int pieces = 0;
        for (const auto& t : tags.tags) {
            if (t.code == 3) {
                ++pieces;
                EXPECT_LE(t.value.size(), 250u);
                EXPECT_NE(t.value.back(), '\\');  // an escape is never cut
            }
        }
        EXPECT_GE(pieces, 3);
        auto back = ReadDxfString(WriteDxfString(db, v), "long.dxf");
        EXPECT_EQ(back->Get<MText>(m->handle)->contents, m->contents);
    }
}

TEST(RoundTrip, UnmodelledTagsStayInTheirSubclass) {
    const std::string text =
        "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1024\n9\n$HANDSEED\n5\n100\n0\nENDSEC\n"
        "0\nSECTION\n2\nENTITIES\n"
        "0\nLINE\n5\n40\n102\n{ACAD_REACTORS\n330\n0\n102\n}"
        "\n330\n0\n100\nAcDbEntity\n8\n0\n370\n35\n"
        "100\nAcDbLine\n39\n2.5\n10\n0\n20\n0\n30\n0\n11\n1\n21\n1\n31\n0\n210\n0\n220\n0\n230\n1\n"
        "100\nAcDbFutureThing\n1\nkeep me\n"
        "1001\nACAD\n1010\n1\n1020\n2\n1030\n3\n1004\nDEADBEEF\n"
        "0\nENDSEC\n0\nEOF\n";
    auto db = ReadDxfString(text, "extra.dxf");
    TagCollector out;
    WriteDxf(*db, DxfVersion::R2010, out);
    // The LINE as written, from its type to the next group code 0.
    TagList line;
    bool in = false;
    for (const auto& t : out.tags) {
        if (t.code == 0) {
            in = t.value == "LINE";
        }
        if (in) {
            line.push_back(t);
        }
    }
    auto at = [&line](int code, const std::string& value) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i].code == code && line[i].value == value) {
                return static_cast<int>(i);
            }
        }
        return -1;
    };
    ASSERT_GE(at(102, "{ACAD_REACTORS"), 0);
    EXPECT_LT(at(102, "{ACAD_REACTORS"), at(100, "AcDbEntity"));
    EXPECT_GT(at(370, "35"), at(100, "AcDbEntity"));
    EXPECT_LT(at(370, "35"), at(100, "AcDbLine"));
    EXPECT_GT(at(39, "2.5"), at(100, "AcDbLine"));
    EXPECT_GT(at(230, "1"), at(100, "AcDbLine"));
    EXPECT_GT(at(1, "keep me"), at(100, "AcDbFutureThing"));
    EXPECT_GT(at(1001, "ACAD"), at(1, "keep me"));  // extended data stays last
    EXPECT_GT(at(1004, "DEADBEEF"), at(1030, "3"));
    EXPECT_EQ(line[1].value, "40");
}

}  // namespace
}  // namespace cad
