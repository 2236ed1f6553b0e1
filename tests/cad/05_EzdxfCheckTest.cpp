// Files the writer produces, checked by an independent reader (Debian's python3-ezdxf) and
// by the checks of tests/cad/check_dxf.py for what that reader lets through.
#include <gtest/gtest.h>

#include <numbers>

#include "TestPaths.h"
#include "cad/Database.h"
#include "cad/Dxf.h"

namespace cad {
namespace {

namespace ts = testing_support;

constexpr DxfVersion kVersions[] = {DxfVersion::R14, DxfVersion::R2000, DxfVersion::R2004,
                                    DxfVersion::R2007, DxfVersion::R2010};

std::string Json(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    return out + "\"";
}

std::string Script(const char* name) {
    return (ts::SourceDir() / "tests/cad" / name).string();
}

int RunPython(const std::string& args, std::string& output) {
    return ts::RunCommand(ts::Python() + " " + args, &output);
}

// A module drawing in miniature: linked texts, a label, an outline, a symbol reference.
struct Drawing {
    Database db;
    Drawing() {
        const Handle dim = db.AddLayer("DIM", 7);
        db.AddLayer("QV_TERM_TEXT_POINT", -7);
        auto* label = db.AppendNew<MText>();
        label->contents = "-A1";
        label->attachment = 5;
        label->layer = dim;
        auto* data = db.AppendNew<MText>();
        data->contents = "厂家:西门子\\P模块代号:6ES7 321\\P模块描述:数字量输入 ☃";
        data->color = 2;
        const Handle block = db.DefineBlock("SYMB2_S_KTR5");
        auto circle = std::make_unique<Circle>();
        circle->radius = 1;
        db.Append(std::move(circle), block);
        auto* ref = db.InsertBlock(block, {5, 0, 0}, {1, 1, 1}, std::numbers::pi);
        auto* number = db.AppendNew<Text>();
        number->text = "1";
        number->horizontal = TextHorz::Middle;
        number->SetAnchor({5, -3, 0});
        number->widthFactor = 0.8;
        auto* outline = db.AppendNew<LwPolyline>();
        outline->vertices = {{0, -10}, {10, -10}, {10, 0}, {0, 0}};
        outline->closed = true;
        db.AppendXData(*ref, "QV_SYMB2_TERM_TEXT_1", XDataItem::String("1"));
        db.AppendXData(*ref, "QV_SYMB2_TERM_TEXT_1", XDataItem::HandleRef(number->handle));
        db.AppendXData(*number, "QV_SYMB2_TERM_TEXT_1", XDataItem::HandleRef(ref->handle));
        db.AppendXData(*label, "QV_SYMB2_LABEL", XDataItem::HandleRef(ref->handle));
        db.SetXData(*ref, "QV_SYMB2_LABEL", XDataItem::HandleRef(label->handle));
        db.AppendXData(*outline, "QV_ GROUPPARTXRECT_TEXT", XDataItem::HandleRef(label->handle));
        db.AppendXData(*label, "QV_ GROUPPARTXRECT_XRECT", XDataItem::HandleRef(outline->handle));
        db.AppendXData(*outline, "QV_NUMBERS", XDataItem::Real(1.5));
        db.AppendXData(*outline, "QV_NUMBERS", XDataItem::Int16(3));
        db.AppendXData(*outline, "QV_NUMBERS", XDataItem::Int32(-70000));
        db.SetXRecord(db.GetOrAddDictionary("QV_DWG_DICITIONARY"), "QV_LOCATION_XRECORD",
                      {{1, "A柜"}});
    }

    // What ezdxf must find, as JSON for check_dxf.py.
    std::string Expectation(DxfVersion v) const {
        std::string out =
            "{\"count\": " + std::to_string(db.Entities().size()) + ", \"entities\": [";
        bool first = true;
        for (const Entity* e : db.Entities()) {
            out += first ? "" : ",";
            first = false;
            out += "{\"handle\": " + Json(FormatHandle(e->handle)) +
                   ", \"type\": " + Json(e->TypeName()) +
                   ", \"layer\": " + Json(db.Layer(e->layer)->name);
            if (const auto* t = dynamic_cast<const Text*>(e)) {
                out += ", \"text\": " + Json(t->text);
            }
            out += ", \"xdata\": {";
            for (std::size_t g = 0; g < e->xdata.size(); ++g) {
                std::string app = db.AppName(e->xdata[g].app);
                if (v == DxfVersion::R14) {
                    for (char& c : app) {
                        c = c == ' ' ? '_' : c;
                    }
                }
                out += (g ? ", " : "") + Json(app) + ": [";
                for (std::size_t i = 0; i < e->xdata[g].items.size(); ++i) {
                    const auto& item = e->xdata[g].items[i];
                    out += (i ? ", [" : "[") + std::to_string(item.code) + ", " + Json(item.value) +
                           "]";
                }
                out += "]";
            }
            out += "}}";
        }
        return out +
               "], \"xrecords\": [{\"dictionary\": \"QV_DWG_DICITIONARY\", \"key\": "
               "\"QV_LOCATION_XRECORD\", \"tags\": [[1, \"A柜\"]]}]}";
    }

    static std::string FormatHandle(Handle h) {
        char buf[20];
        std::snprintf(buf, sizeof buf, "%llX", static_cast<unsigned long long>(h));
        return buf;
    }
};

TEST(EzdxfCheck, WrittenFilesPassTheIndependentReaderInEveryVersion) {
    Drawing d;
    ts::TempDir dir;
    for (DxfVersion v : kVersions) {
        const std::string name = std::string("drawing_") + AcadVer(v);
        const auto path = dir / (name + ".dxf");
        const auto expect = dir / (name + ".json");
        WriteDxfFile(d.db, path.string(), v);
        ts::WriteFile(expect, d.Expectation(v));
        std::string output;
        EXPECT_EQ(
            RunPython(Script("check_dxf.py") + " " + path.string() + " " + expect.string(), output),
            0)
            << AcadVer(v) << "\n"
            << output;
    }
}

TEST(EzdxfCheck, TheCheckCatchesWhatEzdxfLetsThrough) {
    // A file with a duplicate handle, an unregistered application and a wrong vertex count:
    // ezdxf loads it, the script must not.
    Drawing d;
    ts::TempDir dir;
    std::string text = WriteDxfString(d.db, DxfVersion::R2010);
    auto replace = [&text](const std::string& from, const std::string& to) {
        const auto pos = text.find(from);
        ASSERT_NE(pos, std::string::npos) << from;
        text.replace(pos, from.size(), to);
    };
    replace("AcDbPolyline\n 90\n4", "AcDbPolyline\n 90\n5");
    replace("1001\nQV_NUMBERS", "1001\nQV_NOT_REG");
    ts::WriteFile(dir / "bad.dxf", text);
    std::string output;
    EXPECT_NE(RunPython(Script("check_dxf.py") + " " + (dir / "bad.dxf").string(), output), 0);
    EXPECT_NE(output.find("90 says 5"), std::string::npos) << output;
    EXPECT_NE(output.find("QV_NOT_REG not registered"), std::string::npos) << output;
}

TEST(EzdxfCheck, ForeignDrawingsLoseNothingInAnyVersion) {
    ts::TempDir dir;
    for (const char* source : {"R2000", "R2010", "R2018"}) {
        const auto original = dir / (std::string("foreign_") + source + ".dxf");
        std::string output;
        ASSERT_EQ(
            RunPython(Script("make_foreign.py") + " " + original.string() + " " + source, output),
            0)
            << output;
        auto db = ReadDxfFile(original.string());
        for (DxfVersion v : kVersions) {
            SCOPED_TRACE(std::string(source) + " -> " + AcadVer(v));
            const auto converted =
                dir / (std::string("conv_") + source + "_" + AcadVer(v) + ".dxf");
            WriteDxfFile(*db, converted.string(), v);
            EXPECT_EQ(RunPython(Script("check_dxf.py") + " " + converted.string(), output), 0)
                << output;
            EXPECT_EQ(RunPython(Script("compare_dxf.py") + " " + original.string() + " " +
                                    converted.string(),
                                output),
                      0)
                << output;
        }
    }
}

}  // namespace
}  // namespace cad
