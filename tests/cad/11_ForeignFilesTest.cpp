// Files other programs write: comments, binary DXF, R12 and older, and the slips of known
// writers, which are repaired and reported instead of refused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>

#include "TestPaths.h"
#include "cad/Database.h"
#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "cad/Tags.h"

namespace cad {
namespace {

namespace ts = testing_support;

const char* kDrawing =
    "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n9\n$HANDSEED\n5\n100\n0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n5\n20\n330\n1F\n100\nAcDbEntity\n8\n0\n62\n3\n100\nAcDbLine\n"
    "10\n1.5\n20\n2.0\n30\n0.0\n11\n3.0\n21\n-4.25\n31\n0.0\n1001\nQV_APP\n1000\nkept\n"
    "1070\n7\n1071\n70000\n1040\n0.1\n"
    "0\nTEXT\n5\n21\n100\nAcDbEntity\n8\nNOTES\n100\nAcDbText\n10\n0\n20\n0\n30\n0\n40\n2.5\n"
    "1\nhello\n50\n30\n100\nAcDbText\n73\n2\n"
    "0\nENDSEC\n0\nEOF\n";

std::string Replace(std::string s, const std::string& from, const std::string& to) {
    const auto at = s.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) {
        s.replace(at, from.size(), to);
    }
    return s;
}

bool HasRepair(const Database& db, const std::string& words) {
    for (const auto& r : db.Repairs()) {
        if (r.find(words) != std::string::npos) {
            return true;
        }
    }
    return false;
}

std::string AllRepairs(const Database& db) {
    std::string out;
    for (const auto& r : db.Repairs()) {
        out += r + "\n";
    }
    return out;
}

// An independent binary encoder for the tests: ASCII DXF text to binary DXF, two-byte group
// codes (R13 and later) or one byte with 255 as the escape (R12 and older).
std::string ToBinary(const std::string& ascii, bool twoByteCodes = true) {
    std::string out("AutoCAD Binary DXF\r\n\x1a\0", 22);
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < ascii.size()) {
        const auto nl = ascii.find('\n', start);
        lines.push_back(ascii.substr(start, nl - start));
        start = nl + 1;
    }
    auto put = [&out](const void* p, std::size_t n) {
        out.append(static_cast<const char*>(p), n);  // the test machines are little-endian
    };
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
        const int code = std::stoi(lines[i]);
        const std::string& v = lines[i + 1];
        if (twoByteCodes) {
            const auto c = static_cast<std::uint16_t>(code);
            put(&c, 2);
        } else if (code < 255) {
            out += static_cast<char>(code);
        } else {
            out += '\xff';
            const auto c = static_cast<std::uint16_t>(code);
            put(&c, 2);
        }
        switch (TypeOfCode(code)) {
            case TagType::Real: {
                const double d = std::stod(v);
                put(&d, 8);
                break;
            }
            case TagType::Int16: {
                const auto n = static_cast<std::int16_t>(std::stol(v));
                put(&n, 2);
                break;
            }
            case TagType::Int32: {
                const auto n = static_cast<std::int32_t>(std::stol(v));
                put(&n, 4);
                break;
            }
            case TagType::Int64: {
                const auto n = static_cast<std::int64_t>(std::stoll(v));
                put(&n, 8);
                break;
            }
            case TagType::Bool:
                out += static_cast<char>(std::stoi(v));
                break;
            default:
                if ((code >= 310 && code <= 319) || code == 1004) {
                    out += static_cast<char>(v.size() / 2);
                    for (std::size_t k = 0; k < v.size(); k += 2) {
                        out += static_cast<char>(std::stoi(v.substr(k, 2), nullptr, 16));
                    }
                } else {
                    out += v;
                    out += '\0';
                }
        }
    }
    return out;
}

TEST(ForeignFiles, CommentsAreSkippedWhereverTheyStand) {
    const auto plainDb = ReadDxfString(kDrawing);
    const std::string plain = WriteDxfString(*plainDb, DxfVersion::R2010);
    const std::vector<std::string> commented = {
        "999\nhello\n" + std::string(kDrawing),
        Replace(kDrawing, "9\n$HANDSEED", "999\nwritten by hand\n9\n$HANDSEED"),
        Replace(kDrawing, "1001\nQV_APP", "999\n\n1001\nQV_APP"),
        Replace(kDrawing, "0\nTEXT", "999\n0\n0\nTEXT"),  // a comment whose text is "0"
    };
    for (const auto& text : commented) {
        auto db = ReadDxfString(text, "c.dxf");
        EXPECT_EQ(AllRepairs(*db), AllRepairs(*plainDb));
        EXPECT_EQ(WriteDxfString(*db, DxfVersion::R2010), plain) << text.substr(0, 40);
    }
}

TEST(ForeignFiles, BinaryReadsAsItsAsciiTwin) {
    const std::string fromAscii = WriteDxfString(*ReadDxfString(kDrawing), DxfVersion::R2010);
    for (bool two : {true, false}) {
        auto db = ReadDxfString(ToBinary(kDrawing, two), "b.dxf");
        EXPECT_EQ(WriteDxfString(*db, DxfVersion::R2010), fromAscii) << two;
        const auto* line = db->Get<Line>(0x20);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->end.y, -4.25);
        const auto* items = db->GetXData(*line, "QV_APP");
        ASSERT_NE(items, nullptr);
        ASSERT_EQ(items->size(), 4u);
        EXPECT_EQ((*items)[2].value, "70000");
    }
    // Chunks of bytes come back as hex, the way ASCII files hold them.
    const std::string chunked = Replace(kDrawing, "1040\n0.1\n", "1040\n0.1\n1004\n00FF10\n");
    auto db = ReadDxfString(ToBinary(chunked), "b.dxf");
    const auto* items = db->GetXData(*db->Get<Line>(0x20), "QV_APP");
    ASSERT_NE(items, nullptr);
    EXPECT_EQ(items->back().value, "00FF10");
}

TEST(ForeignFiles, DamagedBinaryNamesTheByteOffset) {
    const std::string binary = ToBinary(kDrawing);
    // Cut at every byte: a typed error with an offset inside the file, never a crash; only a
    // cut right after a whole section reads, with the missing end reported.
    for (std::size_t n = 22; n < binary.size(); ++n) {
        try {
            auto db = ReadDxfString(std::string_view(binary).substr(0, n), "cut.dxf");
            EXPECT_TRUE(HasRepair(*db, "without EOF")) << n;
            EXPECT_EQ(binary.substr(n - 7, 7), std::string("ENDSEC\0", 7)) << n;
        } catch (const DxfError& e) {
            EXPECT_EQ(e.File(), "cut.dxf");
            EXPECT_GE(e.Offset(), 0) << e.what();
            EXPECT_LE(e.Offset(), static_cast<long>(n)) << e.what();
            EXPECT_NE(std::string(e.what()).find("byte offset"), std::string::npos) << e.what();
        }
    }
    // A number that is not one: the offset is that of the value.
    std::string bad = binary;
    const double nan = std::nan("");
    const auto at = bad.find(std::string("\x0a\x00", 2), bad.find("AcDbLine"));  // its 10
    ASSERT_NE(at, std::string::npos);
    std::memcpy(bad.data() + at + 2, &nan, 8);
    try {
        ReadDxfString(bad, "nan.dxf");
        ADD_FAILURE() << "a NaN coordinate was accepted";
    } catch (const DxfError& e) {
        EXPECT_EQ(e.Offset(), static_cast<long>(at + 2)) << e.what();
    }
}

// R12 as its writers leave it: no handles, no subclass markers, no block records, no
// OBJECTS; attributes and vertices in sequences; extended data under a registered name.
const char* kR12 =
    "999\nold writer\n0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1009\n9\n$HANDLING\n70\n0\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nTABLES\n"
    "0\nTABLE\n2\nLTYPE\n70\n1\n0\nLTYPE\n2\nCONTINUOUS\n70\n0\n3\nSolid line\n72\n65\n73\n0\n"
    "40\n0.0\n0\nENDTAB\n"
    "0\nTABLE\n2\nLAYER\n70\n2\n0\nLAYER\n2\n0\n70\n0\n62\n7\n6\nCONTINUOUS\n"
    "0\nLAYER\n2\nWIRES\n70\n0\n62\n-3\n6\nCONTINUOUS\n0\nENDTAB\n"
    "0\nTABLE\n2\nSTYLE\n70\n1\n0\nSTYLE\n2\nSTANDARD\n70\n0\n40\n0.0\n41\n1.0\n50\n0.0\n71\n0\n"
    "42\n2.5\n3\ntxt\n4\n\n0\nENDTAB\n"
    "0\nTABLE\n2\nAPPID\n70\n2\n0\nAPPID\n2\nACAD\n70\n0\n0\nAPPID\n2\nQV_OLD\n70\n0\n0\nENDTAB\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nBLOCKS\n"
    "0\nBLOCK\n8\n0\n2\nTERM\n70\n2\n10\n0.0\n20\n0.0\n30\n0.0\n3\nTERM\n"
    "0\nCIRCLE\n8\n0\n10\n0.0\n20\n0.0\n30\n0.0\n40\n1.0\n"
    "0\nATTDEF\n8\n0\n10\n0.0\n20\n2.0\n30\n0.0\n40\n1.0\n1\n?\n3\nNumber\n2\nNR\n70\n0\n"
    "0\nENDBLK\n8\n0\n"
    "0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n8\nWIRES\n62\n1\n10\n0.0\n20\n0.0\n30\n0.0\n11\n10.0\n21\n0.0\n31\n0.0\n"
    "1001\nQV_OLD\n1000\nwire 7\n1040\n2.5\n"
    "0\nARC\n8\nWIRES\n10\n5.0\n20\n5.0\n30\n0.0\n40\n2.0\n50\n0.0\n51\n90.0\n"
    "0\nINSERT\n8\n0\n66\n1\n2\nTERM\n10\n20.0\n20\n0.0\n30\n0.0\n"
    "0\nATTRIB\n8\n0\n10\n20.0\n20\n2.0\n30\n0.0\n40\n1.0\n1\n13\n2\nNR\n70\n0\n"
    "0\nSEQEND\n8\n0\n"
    "0\nPOLYLINE\n8\nWIRES\n66\n1\n10\n0.0\n20\n0.0\n30\n0.0\n70\n1\n"
    "0\nVERTEX\n8\nWIRES\n10\n0.0\n20\n0.0\n30\n0.0\n"
    "0\nVERTEX\n8\nWIRES\n10\n4.0\n20\n0.0\n30\n0.0\n42\n1.0\n"
    "0\nVERTEX\n8\nWIRES\n10\n4.0\n20\n4.0\n30\n0.0\n"
    "0\nSEQEND\n8\nWIRES\n"
    "0\nTEXT\n8\n0\n10\n1.0\n20\n-5.0\n30\n0.0\n40\n2.0\n1\nR12 text\n72\n1\n11\n3.0\n21\n-5.0\n"
    "31\n0.0\n73\n2\n"
    "0\nSOLID\n8\n0\n10\n0\n20\n0\n11\n1\n21\n0\n12\n0\n22\n1\n13\n1\n23\n1\n"
    "0\nLINE\n8\n0\n67\n1\n10\n0\n20\n0\n11\n1\n21\n1\n"
    "0\nENDSEC\n0\nEOF\n";

TEST(ForeignFiles, R12EntitiesLayersBlocksAndExtendedDataAreRead) {
    for (const std::string& text : {std::string(kR12), ToBinary(kR12, false)}) {
        auto db = ReadDxfString(text, "r12.dxf");
        EXPECT_TRUE(db->Repairs().empty()) << AllRepairs(*db);
        const auto wires = db->FindLayer("WIRES");
        ASSERT_NE(wires, kNullHandle);
        EXPECT_EQ(db->Layer(wires)->color, -3);
        const auto model = db->Entities();
        ASSERT_EQ(model.size(), 6u);  // LINE ARC INSERT POLYLINE TEXT SOLID
        const auto* line = Database::Cast<Line>(model[0]);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->layer, wires);
        EXPECT_EQ(line->end.x, 10.0);
        const auto* items = db->GetXData(*line, "QV_OLD");
        ASSERT_NE(items, nullptr);
        EXPECT_EQ((*items)[0].value, "wire 7");
        const auto* arc = Database::Cast<Arc>(model[1]);
        ASSERT_NE(arc, nullptr);
        EXPECT_NEAR(arc->endAngle, 1.5707963, 1e-6);
        const auto* ref = Database::Cast<BlockReference>(model[2]);
        ASSERT_NE(ref, nullptr);
        EXPECT_EQ(db->Block(ref->block)->name, "TERM");
        ASSERT_EQ(ref->attributes.size(), 1u);
        EXPECT_EQ(db->Get<Attribute>(ref->attributes[0])->tag, "NR");
        EXPECT_EQ(db->Get<Attribute>(ref->attributes[0])->text, "13");
        const auto* poly = Database::Cast<UnknownEntity>(model[3]);
        ASSERT_NE(poly, nullptr);
        EXPECT_EQ(poly->followers.size(), 4u);  // three vertices and the end
        const auto* text12 = Database::Cast<Text>(model[4]);
        ASSERT_NE(text12, nullptr);
        EXPECT_EQ(text12->vertical, TextVert::Middle);
        EXPECT_EQ(text12->alignment.x, 3.0);
        const auto block = db->Entities(db->FindBlock("TERM"));
        ASSERT_EQ(block.size(), 2u);
        EXPECT_EQ(Database::Cast<AttributeDefinition>(block[1])->tag, "NR");
        EXPECT_EQ(db->Entities(db->PaperSpace()).size(), 1u);
    }
}

TEST(ForeignFiles, R12AndOlderConvertToFilesEzdxfAccepts) {
    ts::TempDir dir;
    for (const char* version : {"AC1009", "AC1006", "AC1003"}) {
        auto db = ReadDxfString(Replace(kR12, "AC1009", version), "old.dxf");
        for (DxfVersion v : {DxfVersion::R14, DxfVersion::R2010}) {
            const auto path = dir / (std::string(version) + "-" + AcadVer(v) + ".dxf");
            WriteDxfFile(*db, path.string(), v);
            std::string output;
            const int rc = ts::RunCommand(
                ts::Python() + " " + (ts::SourceDir() / "tests/cad/check_dxf.py").string() + " " +
                    path.string(),
                &output);
            EXPECT_EQ(rc, 0) << version << " as " << AcadVer(v) << ":\n" << output;
        }
    }
}

TEST(ForeignFiles, WritersSlipsAreRepairedAndReported) {
    const std::string withStyle = Replace(
        kDrawing, "0\nENDSEC\n0\nSECTION\n2\nENTITIES",
        "0\nENDSEC\n0\nSECTION\n2\nTABLES\n0\nTABLE\n2\nSTYLE\n5\n3\n70\n1\n0\nSTYLE\n5\n11\n"
        "100\nAcDbSymbolTableRecord\n100\nAcDbTextStyleTableRecord\n2\nStandard\n70\n0\n3\ntxt\n"
        "0\nENDTAB\n0\nENDSEC\n0\nSECTION\n2\nENTITIES");
    struct Slip {
        const char* name;
        std::string text;
        const char* repair;
    };
    const std::vector<Slip> slips = {
        {"style name for a handle",
         Replace(withStyle, "100\nAcDbText\n73", "340\nstandard\n100\nAcDbText\n73"),
         "instead of a handle"},
        {"text in the handle of an unmodelled object",
         Replace(kDrawing, "0\nENDSEC\n0\nEOF",
                 "0\nHATCH\n5\nnot-hex\n100\nAcDbEntity\n8\n0\n100\nAcDbHatch\n0\nENDSEC\n0\nEOF"),
         "\"not-hex\", which is not a handle"},
        {"header value before any variable", Replace(kDrawing, "2\nHEADER\n", "2\nHEADER\n70\n1\n"),
         "before any variable name"},
        {"missing SECTION", Replace(kDrawing, "0\nSECTION\n2\nENTITIES", "2\nENTITIES"),
         "had no SECTION"},
        {"stray ENDSEC", Replace(kDrawing, "0\nEOF", "0\nENDSEC\n0\nEOF"), "ENDSEC outside"},
        {"no EOF", Replace(kDrawing, "0\nEOF\n", ""), "without EOF"},
    };
    for (const auto& s : slips) {
        std::unique_ptr<Database> db;
        try {
            db = ReadDxfString(s.text, "slip.dxf");
        } catch (const DxfError& e) {
            ADD_FAILURE() << s.name << ": " << e.what();
            continue;
        }
        EXPECT_TRUE(HasRepair(*db, s.repair)) << s.name << ":\n" << AllRepairs(*db);
        EXPECT_GE(db->Entities().size(), 2u) << s.name;  // nothing of the drawing lost
        EXPECT_NO_THROW(WriteDxfString(*db, DxfVersion::R2010)) << s.name;
    }
    // The style's own handle stands where its name stood.
    auto db =
        ReadDxfString(Replace(withStyle, "100\nAcDbText\n73", "340\nstandard\n100\nAcDbText\n73"));
    const std::string written = WriteDxfString(*db, DxfVersion::R2010);
    EXPECT_EQ(written.find("standard"), std::string::npos);
    EXPECT_NE(written.find("340\n11\n"), std::string::npos);
}

std::string CheckWithEzdxf(const Database& db, const std::filesystem::path& path) {
    WriteDxfFile(db, path.string(), DxfVersion::R2010);
    std::string output;
    const int rc =
        ts::RunCommand(ts::Python() + " " + (ts::SourceDir() / "tests/cad/check_dxf.py").string() +
                           " " + path.string(),
                       &output);
    return rc == 0 ? std::string() : output;
}

// Damage found in real files: each is repaired, reported, and the drawing written again is
// one ezdxf reads without repairing anything.
TEST(ForeignFiles, DamagedStructureOfRealFilesIsRepaired) {
    const struct {
        const char* file;
        const char* repair;
    } cases[] = {
        {"ezdxf-it-recover02.dxf", "record stood outside any table; its table head was made"},
        {"ezdxf-it-recover01.dxf", "ends without EOF"},
        {"ezdxf-it-layout_broken_links.dxf", "which does not exist; it was linked to *Model_Space"},
        {"ezdxf-it-cc_dxflib.dxf", "was owned by nothing; its owner is now"},
        {"ezdxf-it-r12_blocks_with_no_names.dxf", "a block without a name was named"},
        {"dxfparser-tables.dxf", "had no definition in section BLOCKS"},
        {"ezdxf-it-issue1106.dxf", ""},  // R12 records with half their markers
        {"ezdxf-ex-valid_lineweights.dxf", "lineweight 10 does not exist; it was read as 13"},
        {"dxfparser-blocks.dxf", "line type CENTER2 was used but not defined"},
        {"dxfparser-blocks.dxf", "had no layout; layout Paper_Space28 was made for it"},
        {"dxfparser-ellipse.dxf", "its axes were swapped"},
        {"ezdxf-it-duplicate_handles.dxf", "block *D1 was drawn by a dimension but not defined"},
        {"ezdxf-it-duplicate_handles.dxf", "dimension style DIMSTYLE1 is not defined"},
    };
    ts::TempDir dir;
    for (const auto& c : cases) {
        const auto path = ts::SourceDir() / "tests/data/dxf-corpus" / c.file;
        std::unique_ptr<Database> db;
        try {
            db = ReadDxfFile(path.string());
        } catch (const DxfError& e) {
            ADD_FAILURE() << e.what();
            continue;
        }
        if (*c.repair != '\0') {
            EXPECT_TRUE(HasRepair(*db, c.repair)) << c.file << ":\n" << AllRepairs(*db);
        }
        EXPECT_EQ(CheckWithEzdxf(*db, dir / c.file), "") << c.file;
    }
}

// An ellipse given with its minor axis first: every point stays where it was.
TEST(ForeignFiles, EllipseWithRatioAboveOneKeepsItsPoints) {
    const std::string text =
        Replace(kDrawing, "0\nENDSEC\n0\nEOF",
                "0\nELLIPSE\n5\n40\n100\nAcDbEntity\n8\n0\n100\nAcDbEllipse\n10\n1\n20\n2\n30\n0\n"
                "11\n3\n21\n4\n31\n0\n210\n0\n220\n0\n230\n1\n40\n2\n41\n0.5\n42\n2.5\n"
                "0\nENDSEC\n0\nEOF");
    auto db = ReadDxfString(text);
    const auto* e = db->Get<UnknownEntity>(0x40);
    ASSERT_NE(e, nullptr);
    auto value = [&](int code) {
        for (const auto& t : e->tags) {
            if (t.code == code) {
                return std::stod(t.value);
            }
        }
        return std::nan("");
    };
    auto point = [](double mx, double my, double ratio, double t) {
        // centre (1, 2), normal +z: minor axis = (-my, mx) * ratio
        return std::pair{1 + mx * std::cos(t) - my * ratio * std::sin(t),
                         2 + my * std::cos(t) + mx * ratio * std::sin(t)};
    };
    EXPECT_DOUBLE_EQ(value(40), 0.5);
    for (double f : {0.0, 0.3, 1.0}) {
        const auto before = point(3, 4, 2, 0.5 + f * 2.0);
        const double span = std::fmod(value(42) - value(41) + 4 * M_PI, 2 * M_PI);  // 0 to 2 pi
        const auto after = point(value(11), value(21), value(40), value(41) + f * span);
        EXPECT_NEAR(before.first, after.first, 1e-9) << f;
        EXPECT_NEAR(before.second, after.second, 1e-9) << f;
    }
    EXPECT_TRUE(HasRepair(*db, "axes were swapped"));
}

// Found by fuzzing: an arc angle of 3.4e13 degrees made measuring the arc walk its turns.
TEST(ForeignFiles, ArcAnglesOfManyTurnsAreReadAsOne) {
    const auto path = ts::SourceDir() / "fuzz/corpus/regression-arc-huge-angle.dxf";
    auto db = ReadDxfFile(path.string());
    ASSERT_EQ(db->Entities().size(), 1u);
    const auto* arc = Database::Cast<Arc>(db->Entities()[0]);
    ASSERT_NE(arc, nullptr);
    EXPECT_LE(std::abs(arc->startAngle), 2 * M_PI);
    EXPECT_LE(std::abs(arc->endAngle), 2 * M_PI);
    EXPECT_NEAR(arc->endAngle, std::fmod(375.0752244008874874, 360.0) * M_PI / 180, 1e-12);
    EXPECT_TRUE(EntityExtents(*db, *arc).has_value());
}

TEST(ForeignFiles, ManyObjectsWithoutHandlesAreCountedOnce) {
    std::string text =
        "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n0\nENDSEC\n"
        "0\nSECTION\n2\nENTITIES\n";
    for (int i = 0; i < 50; ++i) {
        text += "0\nLINE\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n10\n0\n20\n0\n11\n1\n21\n1\n";
    }
    text += "0\nLINE\n5\n7\n100\nAcDbEntity\n8\n0\n100\nAcDbLine\n10\n0\n20\n0\n11\n1\n21\n1\n";
    text += "0\nENDSEC\n0\nEOF\n";
    auto db = ReadDxfString(text);
    ASSERT_EQ(db->Entities().size(), 51u);
    EXPECT_TRUE(HasRepair(*db, "50 objects had no handle")) << AllRepairs(*db);
    // The file's own handle 7 may have been made for another object before it was seen: the
    // file is read again above its highest handle, and 7 keeps its object.
    EXPECT_NE(db->Get<Line>(7), nullptr);
}

}  // namespace
}  // namespace cad
