#include "draw/SheetDrawing.h"

#include "draw/DlgPlcRendal.h"
#include "draw/ModuleDrawing.h"
#include "draw/ModuleParts.h"

namespace draw {

cad::Handle RecordModulePart(const PlcDrawSettings& settings, const ModuleChoice& choice,
                             cad::Database& db) {
    std::string name, model;
    if (settings.autoDetail) {
        name = choice.description;
    }
    if (settings.autoDetailModel) {
        model = settings.detailModelType == 1 ? choice.shortName + " " + choice.code : choice.code;
    }
    const std::pair<const char*, std::string> fields[] = {
        {"$LABEL", choice.tag},    {"$CODE", choice.code},
        {"$DESCRIBE", name},       {"$TYPE", model},
        {"$NAME", name},           {"$NOTE", ""},
        {"$LABELDIS", choice.tag}, {"$Location", choice.location},
    };
    cad::TagList data;
    for (const auto& [key, value] : fields) {
        data.push_back({3, key});
        data.push_back({1, value});
    }
    const cad::Handle dict = db.GetOrAddDictionary(kPartsDictionary);
    return db.SetXRecord(dict, choice.tag, std::move(data));
}

}  // namespace draw

bool DrawFullSheet(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db) {
    draw::DrawingSession session(dlg);
    if (dlg.componentType < 1 || dlg.componentType > 3) {
        dlg.drawActive = 0;
        return false;
    }
    cad::Point3d at;
    if (!WriteModulePreview(dlg, choice, 0) || !DragPlaceModule(dlg, at, 0)) {
        dlg.drawActive = 0;
        return false;
    }
    return DrawFullSheetAt(dlg, choice, db, at);
}

bool DrawFullSheetAt(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db,
                     const cad::Point3d& at) {
    dlg.drawActive = 1;
    if (dlg.componentType < 1 || dlg.componentType > 3) {
        dlg.drawActive = 0;
        return false;
    }
    draw::DrawContext ctx(dlg, choice, db);
    ctx.origin = at;
    const bool drawn = draw::DrawWholeModule(ctx, false, true);
    dlg.labelId = ctx.label;
    if (!drawn) {
        return false;
    }
    if (dlg.autoDetail || dlg.autoDetailModel) {
        draw::RecordModulePart(dlg, choice, db);
    }
    dlg.drawFinished = 1;
    return true;
}
