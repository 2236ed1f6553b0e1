// What the module-drawing tests share: a scratch installation (local folder with awork.sys,
// a terminal symbol drawn for the tests), a recording host with a working drawing, a
// dialog whose terminal list is filled by hand, and readers of the drawn entities.
//
// The test symbol points right (+X) from its base point: a lead from (0, 0) to (4, 0) and a
// terminal circle of radius 0.5 at (4.5, 0), so it measures 5 x 1; its one terminal-text
// point is (2, 0.4).
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "RecordingHost.h"
#include "TestPaths.h"
#include "cad/Database.h"
#include "draw/DlgPlcRendal.h"

namespace drawing_test {

inline constexpr double kSymbolLength = 5.0;
inline constexpr double kSymbolWidth = 1.0;
inline constexpr double kLabelHeight = 4.0;  // written to the test's awork.sys
inline constexpr double kTol = 1e-5;

struct Row {
    std::string number;
    std::string desc;
    std::string side;
    int image = 1;
};

class DrawingEnvironment {
public:
    DrawingEnvironment();
    ~DrawingEnvironment();

    std::filesystem::path LocalDir() const { return dir_.Path() / "local"; }
    std::filesystem::path SymbolPath() const { return dir_.Path() / "common/SYMB2LIB/SYMB2_T.dxf"; }
    std::filesystem::path PreviewPath() const { return LocalDir() / "Temp/PlcDraw.dxf"; }

    // A dialog with the test symbol, spacing 10, width 10, format `type`, the given rows.
    std::unique_ptr<CDlgPlcRendal> MakeDialog(int type, int orientation,
                                              const std::vector<Row>& rows);

    testing_support::RecordingHost host;
    cad::Database drawing;  // the host's working drawing

private:
    testing_support::TempDir dir_;
    testing_support::ScopedEnv local_;
    testing_support::ScopedEnv common_;
    std::unique_ptr<host::ScopedHost> scope_;
};

// Writes the test symbol drawing (see above) to `path`.
void WriteTestSymbol(const std::filesystem::path& path);

// Live model-space entities of one kind, in drawing order.
template <class T>
std::vector<T*> All(cad::Database& db) {
    std::vector<T*> found;
    for (cad::Entity* e : db.Entities()) {
        if (e->Kind() == T::kKind) {
            found.push_back(static_cast<T*>(e));
        }
    }
    return found;
}

// Items of one application's extended data as 1005 handles (other codes left out).
std::vector<cad::Handle> Links(const cad::Database& db, const cad::Entity& e, const char* app);

// The vertices of a polyline as points.
std::vector<cad::Point3d> Vertices(const cad::LwPolyline& p);

// Expects two point lists to match within kTol; `what` names them in failures.
void ExpectPoints(const std::vector<cad::Point3d>& actual,
                  const std::vector<cad::Point3d>& expected, const std::string& what);
void ExpectPoint(const cad::Point3d& actual, const cad::Point3d& expected, const std::string& what);

// Runs a Python check script of tests/draw with the Debian interpreter; returns its output
// and fails the test on a non-zero exit.
std::string RunPythonCheck(const std::string& script, const std::string& args);

}  // namespace drawing_test
