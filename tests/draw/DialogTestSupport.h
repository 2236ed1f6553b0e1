// A small real component library for the drawing dialog's tests, written through the
// library engine with the same statements the library editor issues, and the folders the
// dialog expects (local folder with PLC/QvPLC.db, common folder with a terminal symbol).
//
// Tree of the library, in load order:
//   Alpha (short name ALP)
//     S1: DI  -> DI-16A (7 terminals), DI-32B (3 terminals)
//         DO  -> DO-08X, DO-16
//     S2: AI  -> AI-04X, AI-08
//   Beta (no short name)
//     B1: MIX -> MX-01X
//     B2 (no type yet)
//   Gamma (no series yet)
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "RecordingHost.h"
#include "TestPaths.h"

class CDlgPlcRendal;

namespace dialog_test {

class DialogEnvironment {
public:
    DialogEnvironment();
    ~DialogEnvironment();

    std::filesystem::path LocalDir() const { return dir_.Path() / "local"; }
    std::filesystem::path CommonDir() const { return dir_.Path() / "common"; }
    std::filesystem::path LibraryPath() const { return LocalDir() / "PLC" / "QvPLC.db"; }
    std::filesystem::path LastSelectionFile() const {
        return LocalDir() / "LocalData" / "PlcLibEdit.dat";
    }
    std::filesystem::path SymbolPath() const {
        return CommonDir() / "SYMB2LIB" / "SYMB2_S_KTR5.dxf";
    }
    // Creates a dialog, its window and its tree, as the first PLCRENDAL does.
    std::unique_ptr<CDlgPlcRendal> OpenDialog();

    testing_support::RecordingHost host;
    bool realSymbol = false;  // SymbolPath() is the built terminal symbol, not a stand-in

private:
    testing_support::TempDir dir_;
    testing_support::ScopedEnv local_;
    testing_support::ScopedEnv common_;
    testing_support::ScopedEnv style_;
    std::unique_ptr<host::ScopedHost> scope_;
};

// Writes the library described above to `path`; fails the calling test on any error.
void WriteSampleLibrary(const std::filesystem::path& path);

}  // namespace dialog_test
