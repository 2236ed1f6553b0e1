#include "draw/SheetDrawing.h"

#include "draw/DlgPlcRendal.h"
#include "draw/ModuleDrawing.h"
#include "draw/ModuleParts.h"

namespace draw {

cad::Handle RecordModulePart(const CDlgPlcRendal& dlg, cad::Database& db) {
    std::string name, model;
    if (dlg.autoDetail) {
        name = dlg.editModuleDesc;
    }
    if (dlg.autoDetailModel) {
        model = dlg.detailModelType == 1 ? dlg.editShortName + " " + dlg.editModuleCode
                                         : dlg.editModuleCode;
    }
    const std::pair<const char*, std::string> fields[] = {
        {"$LABEL", dlg.editTag},
        {"$CODE", dlg.editModuleCode},
        {"$DESCRIBE", name},
        {"$TYPE", model},
        {"$NAME", name},
        {"$NOTE", ""},
        {"$LABELDIS", dlg.editTag},
        {"$Location", dlg.editLocation},
    };
    cad::TagList data;
    for (const auto& [key, value] : fields) {
        data.push_back({3, key});
        data.push_back({1, value});
    }
    const cad::Handle dict = db.GetOrAddDictionary(kPartsDictionary);
    return db.SetXRecord(dict, dlg.editTag, std::move(data));
}

}  // namespace draw

bool DrawFullSheet(CDlgPlcRendal& dlg, cad::Database& db) {
    draw::DrawingSession session(dlg);
    if (dlg.componentType < 1 || dlg.componentType > 3) {
        dlg.drawActive = 0;
        return false;
    }
    cad::Point3d at;
    if (!WriteModulePreview(dlg, 0) || !DragPlaceModule(dlg, at, 0)) {
        dlg.drawActive = 0;
        return false;
    }
    draw::DrawContext ctx(dlg, db);
    ctx.origin = at;
    const bool drawn = draw::DrawWholeModule(ctx, false, true);
    dlg.labelId = ctx.label;
    if (!drawn) {
        return false;
    }
    if (dlg.autoDetail || dlg.autoDetailModel) {
        draw::RecordModulePart(dlg, db);
    }
    dlg.drawFinished = 1;
    return true;
}
