// Draws the preview drawings of the drawing settings and the drawing dialog from a sample
// eight-terminal module with the module drawing itself, so that the previews always show
// what the drawing produces:
//
//   PLCType_A.dxf  format 1 (closed frame), horizontal
//   PLCType_B.dxf  format 2 (numbers on the symbol's text point), horizontal
//   PLCType_C.dxf  format 3 (cells between brackets), horizontal
//   PlcHor.dxf     the default format, horizontal
//   PlcVer.dxf     the default format, vertical
//
// Usage: qv_make_previews SYMBOL_FOLDER OUTPUT_FOLDER
// The symbols are read from SYMBOL_FOLDER (SYMB2_S_KTR5.dxf, SYMB2_S_KTR17.dxf,
// SYMB2_S_KTR211.dxf). Block references are exploded, so a preview holds plain geometry.
#include <cstdio>
#include <filesystem>
#include <string>

#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "draw/DlgPlcRendal.h"
#include "draw/ModuleDrawing.h"

namespace {

struct Preview {
    const char* file;
    int format;
    int orientation;
    const char* symbol;
};

void FillSampleModule(CDlgPlcRendal& dlg, int orientation) {
    dlg.orientation = orientation;
    dlg.editTag = "-A1";
    dlg.editShortName = "QV";
    dlg.editModuleCode = "DI-08";
    dlg.editModuleDesc = "8点数字量输入";
    dlg.editFrameNo = "1";
    dlg.editSlotNo = "2";
    dlg.termList.Clear();
    const char* first = orientation == 0 ? "向上" : "     向右";
    const char* second = orientation == 0 ? "     向下" : "向左";
    for (int i = 0; i < 8; ++i) {
        dlg.termList.AddRow({std::to_string(i + 1), std::to_string(i + 1),
                             "I0." + std::to_string(i), "", i < 4 ? first : second},
                            1);
    }
}

bool WritePreview(const Preview& preview, const std::filesystem::path& symbols,
                  const std::filesystem::path& out) {
    CDlgPlcRendal dlg;
    dlg.componentType = preview.format;
    dlg.termSymbolName = preview.symbol;
    dlg.termSymbolPath = (symbols / (std::string(preview.symbol) + ".dxf")).string();
    dlg.termDirection = 2;
    dlg.termSpacing = 10.0f;
    dlg.typeWidth = 10.0f;
    FillSampleModule(dlg, preview.orientation);
    cad::Database db;
    if (!DrawModule(dlg, dlg.CurrentChoice(), db, 0)) {
        std::fprintf(stderr, "qv_make_previews: cannot draw %s\n", preview.file);
        return false;
    }
    cad::ExplodeAllReferences(db);
    try {
        cad::WriteDxfFile(db, (out / preview.file).string(), cad::DxfVersion::R2010);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qv_make_previews: %s: %s\n", preview.file, e.what());
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: qv_make_previews SYMBOL_FOLDER OUTPUT_FOLDER\n");
        return 2;
    }
    const std::filesystem::path symbols = argv[1], out = argv[2];
    std::error_code ec;
    std::filesystem::create_directories(out, ec);
    const Preview previews[] = {
        {"PLCType_A.dxf", 1, 0, "SYMB2_S_KTR5"},   {"PLCType_B.dxf", 2, 0, "SYMB2_S_KTR17"},
        {"PLCType_C.dxf", 3, 0, "SYMB2_S_KTR211"}, {"PlcHor.dxf", 1, 0, "SYMB2_S_KTR5"},
        {"PlcVer.dxf", 1, 1, "SYMB2_S_KTR5"},
    };
    int status = 0;
    for (const Preview& preview : previews) {
        if (!WritePreview(preview, symbols, out)) {
            status = 1;
        }
    }
    return status;
}
