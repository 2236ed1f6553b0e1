#include "DrawingTestSupport.h"

#include <gtest/gtest.h>

#include "cad/Dxf.h"
#include "draw/AworkSettings.h"

namespace drawing_test {

DrawingEnvironment::DrawingEnvironment()
    : local_("ZANDRIX_LOCAL_DIR", (dir_.Path() / "local").string()),
      common_("ZANDRIX_COMMON_DIR", (dir_.Path() / "common").string()) {
    std::filesystem::create_directories(LocalDir() / "LocalData");
    draw::AworkSettings awork;
    awork.labelHeight = kLabelHeight;
    testing_support::WriteFile(LocalDir() / "LocalData/awork.sys",
                               draw::FormatAworkSettings(awork));
    WriteTestSymbol(SymbolPath());
    host.database = &drawing;
    scope_ = std::make_unique<host::ScopedHost>(host);
}

DrawingEnvironment::~DrawingEnvironment() = default;

std::unique_ptr<CDlgPlcRendal> DrawingEnvironment::MakeDialog(int type, int orientation,
                                                              const std::vector<Row>& rows) {
    auto dlg = std::make_unique<CDlgPlcRendal>();
    dlg->componentType = type;
    dlg->orientation = orientation;
    dlg->termSymbolName = "SYMB2_T";
    dlg->termSymbolPath = SymbolPath().string();
    dlg->termDirection = 2;
    dlg->termSpacing = 10.0f;
    dlg->typeWidth = 10.0f;
    dlg->termLength = 2.5f;
    dlg->editTag = "-A1";
    dlg->editShortName = "ALP";
    dlg->editModuleCode = "DI-16A";
    dlg->editModuleDesc = "16点数字量输入";
    dlg->editFrameNo = "1";
    dlg->editSlotNo = "3";
    dlg->editLocation = "+CP1";
    dlg->termList.Clear();
    int sequence = 1;
    for (const Row& row : rows) {
        dlg->termList.AddRow({std::to_string(sequence++), row.number, row.desc, "", row.side},
                             row.image);
    }
    return dlg;
}

void WriteTestSymbol(const std::filesystem::path& path) {
    cad::Database db;
    auto* lead = db.AppendNew<cad::Line>();
    lead->start = {0, 0, 0};
    lead->end = {4, 0, 0};
    auto* circle = db.AppendNew<cad::Circle>();
    circle->center = {4.5, 0, 0};
    circle->radius = 0.5;
    auto* point = db.AppendNew<cad::PointEntity>();
    point->position = {2, 0.4, 0};
    point->layer = db.AddLayer("QV_TERM_TEXT_POINT");
    std::filesystem::create_directories(path.parent_path());
    cad::WriteDxfFile(db, path.string(), cad::DxfVersion::R2010);
}

std::vector<cad::Handle> Links(const cad::Database& db, const cad::Entity& e, const char* app) {
    std::vector<cad::Handle> handles;
    if (const auto* items = db.GetXData(e, app)) {
        for (const cad::XDataItem& item : *items) {
            if (item.code == 1005) {
                handles.push_back(item.AsHandle());
            }
        }
    }
    return handles;
}

std::vector<cad::Point3d> Vertices(const cad::LwPolyline& p) {
    std::vector<cad::Point3d> points;
    for (const auto& v : p.vertices) {
        points.push_back({v.x, v.y, 0});
    }
    return points;
}

void ExpectPoint(const cad::Point3d& actual, const cad::Point3d& expected,
                 const std::string& what) {
    EXPECT_NEAR(actual.x, expected.x, kTol) << what;
    EXPECT_NEAR(actual.y, expected.y, kTol) << what;
}

void ExpectPoints(const std::vector<cad::Point3d>& actual,
                  const std::vector<cad::Point3d>& expected, const std::string& what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        ExpectPoint(actual[i], expected[i], what + " vertex " + std::to_string(i));
    }
}

std::string RunPythonCheck(const std::string& script, const std::string& args) {
    const auto path = testing_support::SourceDir() / "tests/draw" / script;
    std::string output;
    const int status = testing_support::RunCommand(
        testing_support::Python() + " " + path.string() + " " + args, &output);
    EXPECT_EQ(status, 0) << output;
    return output;
}

}  // namespace drawing_test
