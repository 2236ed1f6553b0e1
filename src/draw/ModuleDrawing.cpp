#include "draw/ModuleDrawing.h"

#include <filesystem>

#include "cad/Dxf.h"
#include "cad/Operations.h"
#include "cadutil/EntityHelpers.h"
#include "draw/DlgPlcRendal.h"
#include "draw/DrawingFileCache.h"
#include "draw/ModuleParts.h"
#include "files/TextFile.h"
#include "host/Host.h"
#include "host/SuiteServices.h"

namespace draw {

// How often a drag that ends neither normally nor by cancelling is offered again before it
// counts as cancelled, so that a host that keeps failing cannot hold the command forever.
inline constexpr int kMaxDragAttempts = 100;

namespace {

void DrawOutlineLine(DrawContext& ctx) {
    const double H = ctx.settings.typeWidth;
    auto line = std::make_unique<cad::Line>();
    if (ctx.choice.orientation != 0) {
        line->start = ctx.At(0, 0);
        line->end = ctx.At(-H, 0);
    } else {
        line->start = ctx.At(0, -H);
        line->end = ctx.At(0, 0);
    }
    line->color = 4;
    ctx.db.Append(std::move(line));
}

// The outline of the whole module. Frame styles: one closed frame n pitches long. Cell
// style: an opening and a closing bracket half a pitch beyond the first and last cells; on
// the vertical module they are the horizontal brackets turned down the -Y axis.
void DrawOutline(DrawContext& ctx, const TermLists& lists) {
    const int type = ctx.settings.componentType;
    const double H = ctx.settings.typeWidth, p = ctx.settings.termSpacing;
    const double u = static_cast<double>(lists.first.size());
    const double l = static_cast<double>(lists.second.size());
    const double n = std::max(u, l);
    const bool vertical = ctx.choice.orientation != 0;
    if (type == 1 || type == 2) {
        if (vertical) {
            AddOutline(ctx, {{-H, -n * p}, {0, -n * p}, {0, 0}, {-H, 0}}, true);
        } else {
            AddOutline(ctx, {{0, -H}, {n * p, -H}, {n * p, 0}, {0, 0}}, true);
        }
    } else if (type == 3) {
        const double W = n * p + p;
        if (vertical) {
            AddOutline(ctx, {{-H, -p / 2}, {-H, 0}, {0, 0}, {0, -p / 2}}, false);
            AddOutline(ctx, {{-H, -(l * p + p / 2)}, {-H, -W}, {0, -W}, {0, -(u * p + p / 2)}},
                       false);
        } else {
            AddOutline(ctx, {{p / 2, 0}, {0, 0}, {0, -H}, {p / 2, -H}}, false);
            AddOutline(ctx, {{u * p + p / 2, 0}, {W, 0}, {W, -H}, {l * p + p / 2, -H}}, false);
        }
    }
}

// Terminal k of a side: frame styles half a pitch in from the end, cells a whole pitch.
void DrawTerminals(DrawContext& ctx, const TermLists& lists) {
    const TermStyle style = TermStyleFor(ctx.settings.componentType);
    const double H = ctx.settings.typeWidth, p = ctx.settings.termSpacing;
    const double start = style == TermStyle::Cell ? p : p / 2;
    const bool vertical = ctx.choice.orientation != 0;
    for (std::size_t k = 0; k < lists.first.size(); ++k) {
        const double along = static_cast<double>(k) * p + start;
        const cad::Point3d at = vertical ? cad::Point3d{0, -along, 0} : cad::Point3d{along, 0, 0};
        DrawTerminal(ctx, lists.first[k], vertical ? Side::Right : Side::Upper, style, at);
    }
    for (std::size_t k = 0; k < lists.second.size(); ++k) {
        const double along = static_cast<double>(k) * p + start;
        const cad::Point3d at = vertical ? cad::Point3d{-H, -along, 0} : cad::Point3d{along, -H, 0};
        DrawTerminal(ctx, lists.second[k], vertical ? Side::Left : Side::Lower, style, at);
    }
}

// The preview is scratch, read back at once and rewritten by the next drawing: it is
// written whole (through an AtomicFile) in the user's save format, but not synced to disk, which
// would cost more than drawing the module. `text` is what was written; `exact` whether it reads
// back as `db` holds it.
bool WriteScratchDrawing(const cad::Database& db, const std::string& path, std::string& text,
                         bool& exact, std::string& error) {
    try {
        const auto format = host::Current().GetEnvironment("DefaultFormatForSave");
        text = cad::WriteDxfString(db, cad::VersionForSaveFormat(format), &exact);
    } catch (const cad::DxfError& e) {
        error = e.what();
        return false;
    }
    files::WriteOptions options;
    options.sync = false;
    options.createFolders = true;  // Temp is the suite's own folder
    return files::WriteWhole(path, text, &error, options);
}

std::string PreviewPath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), kPreviewFile);
}

// The preview drawing is placed right after it is written: the drawing in memory stands for
// the file while the file still holds what was written.
DrawingFileCache& PreviewCache() {
    static DrawingFileCache cache;
    return cache;
}

}  // namespace

bool DrawWholeModule(DrawContext& ctx, bool outlineOnly, bool detailLinks) {
    if (!OpenDrawContext(ctx)) {
        ctx.dlg.drawActive = 0;
        return false;
    }
    DrawHeader(ctx, detailLinks);
    const TermLists lists = CollectModuleTerminals(ctx.choice);
    if (outlineOnly) {
        DrawOutlineLine(ctx);
        return true;
    }
    const int type = ctx.settings.componentType;
    if (type < 1 || type > 3) {
        return true;
    }
    DrawOutline(ctx, lists);
    if (!LoadSymbolBlock(ctx)) {
        ctx.dlg.drawActive = 0;
        return false;
    }
    DrawTerminals(ctx, lists);
    return true;
}

}  // namespace draw

bool DrawModule(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, cad::Database& db,
                int outlineOnly) {
    draw::DrawContext ctx(dlg, choice, db);
    return draw::DrawWholeModule(ctx, outlineOnly != 0, false);
}

int WriteModulePreview(CDlgPlcRendal& dlg, const draw::ModuleChoice& choice, int outlineOnly) {
    auto side = std::make_unique<cad::Database>();
    // A drawing that fails has said why and cleared drawActive; what it drew is still the
    // preview the user places.
    DrawModule(dlg, choice, *side, outlineOnly);
    cad::ExplodeAllReferences(*side);
    const std::string path = draw::PreviewPath();
    std::string text, error;
    bool exact = false;
    if (!draw::WriteScratchDrawing(*side, path, text, exact, error)) {
        host::Print("文件<" + path + ">写入失败：" + error + "\n");
        return 0;
    }
    // A drawing that had to change to fit the file is placed as the file reads back.
    if (exact) {
        draw::PreviewCache().Remember(path, std::move(text), std::move(side));
    } else {
        draw::PreviewCache().Forget();
    }
    return 1;
}

int DragPlaceModule(CDlgPlcRendal& dlg, cad::Point3d& out, int keep) {
    const std::string path = draw::PreviewPath();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        return 0;
    }
    std::string error;
    const cad::Database* preview = draw::PreviewCache().Read(path, error);
    if (preview == nullptr) {
        host::Print("文件<" + path + ">打开失败！" + "\n");
        return 0;
    }
    host::IHost& host = host::Current();
    cad::Database* db = host.WorkingDatabase();
    if (db == nullptr) {
        return 0;
    }
    const cad::Handle block = cad::InsertAsBlock(*db, *preview, draw::kPreviewBlock);
    if (block == cad::kNullHandle) {
        return 0;
    }
    const cad::Point3d base{};
    cad::BlockReference* ref = db->InsertBlock(block, base, {0.001, 0.001, 0.001});
    const cad::Handle refHandle = ref ? ref->handle : cad::kNullHandle;
    // The reference is stored a thousand times too small at the origin; each frame shows it
    // at full size under the cursor.
    const host::DragTransform transform = [base](const cad::Point3d& cursor) {
        return cad::Matrix3d::Translation(cursor - base) * cad::Matrix3d::Scaling(1000.0);
    };
    host::InputStatus status = host::InputStatus::Cancel;
    cad::Point3d picked;
    for (int attempt = 0; refHandle != cad::kNullHandle && attempt < draw::kMaxDragAttempts;
         ++attempt) {
        status = host.Drag(refHandle, "\n请选择插入点:", transform, picked);
        if (status == host::InputStatus::Normal || status == host::InputStatus::Cancel) {
            break;
        }
    }
    if (refHandle == cad::kNullHandle || status != host::InputStatus::Normal) {
        host::Print("\n选择插入点错误!");
        cadutil::EraseObject(db, refHandle);
        return 0;
    }
    out = picked;
    if (keep) {
        ref->position = picked;
        ref->scale = {1, 1, 1};
        dlg.placedRefId = refHandle;
    } else {
        cadutil::EraseObject(db, refHandle);
    }
    return 1;
}
