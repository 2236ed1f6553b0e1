#include "batch/DrawingSet.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "batch/Report.h"
#include "cad/Dxf.h"
#include "draw/DlgPlcRendal.h"
#include "draw/SheetDrawing.h"
#include "files/FileIdentity.h"
#include "files/UpdateLock.h"

namespace batch {

namespace {

// Room left of the first column for the module's rotated header texts.
constexpr double kLeftMargin = 20.0;
// Room between modules of a row when the grid's pitch is found from the modules.
constexpr double kColumnGap = 40.0;

std::string Key(const std::string& m, const std::string& s, const std::string& t,
                const std::string& c) {
    return m + '\x1f' + s + '\x1f' + t + '\x1f' + c;
}

struct SheetGrid {
    double dx = 0, dy = 0;
    int columns = 1;
    double top = 0;
    cad::Point3d At(std::size_t cell) const {
        return {kLeftMargin + static_cast<double>(cell % columns) * dx,
                top - static_cast<double>(cell / columns) * dy, 0};
    }
};

SheetGrid GridFor(ModuleDrawer& drawer, const PlannedSheet& sheet, const Project& project) {
    SheetGrid grid;
    grid.columns = project.gridColumns;
    grid.dy = project.gridDy;
    grid.dx = project.gridDx;
    if (grid.dx <= 0) {
        for (const PlannedModule& module : sheet.modules) {
            grid.dx = std::max(grid.dx, drawer.Width(module));
        }
        grid.dx += kColumnGap;
    }
    return grid;
}

std::unique_ptr<cad::Database> NewSheet(const Project& project) {
    if (project.frame.empty()) {
        return std::make_unique<cad::Database>();
    }
    return cad::ReadDxfFile(project.frame);
}

void WriteSheet(const cad::Database& db, const std::string& path, const SetOptions& options,
                const std::optional<files::Identity>& before) {
    files::WriteOptions write;
    write.expected = before;
    cad::WriteDxfFile(db, path, cad::VersionForSaveFormat(options.saveFormat), write);
}

class SetDrawer {
public:
    SetDrawer(ModuleDrawer& drawer, const Plan& plan, const Project& project,
              const SetOptions& options)
        : drawer_(drawer), plan_(plan), project_(project), options_(options) {}

    SetResult Run();

private:
    void Tick() {
        ++done_;
        if (options_.progress) {
            options_.progress(done_, plan_.ModuleCount());
        }
    }
    DrawnEntry Entry(const PlannedSheet& sheet, const PlannedModule& module, const cad::Point3d& at,
                     Action action) const {
        return {sheet.name,  sheet.fileName, module.tag, module.module->Path(),
                module.rack, module.slot,    at,         module.channels.size(),
                action};
    }
    bool DrawOne(cad::Database& db, const PlannedSheet& sheet, const PlannedModule& module,
                 const cad::Point3d& at, Action action);
    void Fresh(const PlannedSheet& sheet, const std::string& path);
    void Update(const PlannedSheet& sheet, const std::string& path);

    ModuleDrawer& drawer_;
    const Plan& plan_;
    const Project& project_;
    const SetOptions& options_;
    SetResult result_;
    std::size_t done_ = 0;
    std::string stamp_ = ReadLibraryStamp();
};

bool SetDrawer::DrawOne(cad::Database& db, const PlannedSheet& sheet, const PlannedModule& module,
                        const cad::Point3d& at, Action action) {
    cad::Handle label = cad::kNullHandle;
    const bool drawn = drawer_.Draw(module, db, at, label);
    if (drawn) {
        WriteSource(db, label,
                    {module.tag, module.module->Path(), stamp_, module.libraryDigest,
                     module.listDigest, options_.listFile, sheet.name, at});
        WriteChannels(db, label, module);
    } else {
        result_.errors.push_back(sheet.fileName + ": module " + module.tag + " (" +
                                 module.module->Path() + ") could not be drawn");
    }
    result_.entries.push_back(Entry(sheet, module, at, drawn ? action : Action::Failed));
    Tick();
    return drawn;
}

void SetDrawer::Fresh(const PlannedSheet& sheet, const std::string& path) {
    auto db = NewSheet(project_);
    const SheetGrid grid = GridFor(drawer_, sheet, project_);
    for (std::size_t i = 0; i < sheet.modules.size(); ++i) {
        DrawOne(*db, sheet, sheet.modules[i], grid.At(i), Action::Drawn);
    }
    WriteSheet(*db, path, options_, std::nullopt);
    result_.written.push_back(path);
}

void SetDrawer::Update(const PlannedSheet& sheet, const std::string& path) {
    const files::UpdateLock lock(path);
    const files::Identity before = files::Identify(path);
    std::string error;
    auto db = cad::TryReadDxfFile(path, error);
    if (!db) {
        result_.errors.push_back(path + ": " + error);
        done_ += sheet.modules.size();
        return;
    }
    std::map<std::string, DrawnModule> drawn;
    double lowest = 0;
    for (DrawnModule& module : FindDrawnModules(*db)) {
        lowest = std::min(lowest, module.source.origin.y);
        drawn.emplace(module.source.tag, std::move(module));
    }
    SheetGrid grid = GridFor(drawer_, sheet, project_);
    grid.top = lowest - grid.dy;
    std::size_t added = 0;
    bool changed = false;
    for (const PlannedModule& module : sheet.modules) {
        const auto it = drawn.find(module.tag);
        if (it == drawn.end()) {
            changed = DrawOne(*db, sheet, module, grid.At(added++), Action::Drawn) || changed;
            continue;
        }
        const ModuleSource& source = it->second.source;
        if (source.libraryDigest == module.libraryDigest &&
            source.listDigest == module.listDigest && source.module == module.module->Path()) {
            result_.entries.push_back(Entry(sheet, module, source.origin, Action::Kept));
            Tick();
            continue;
        }
        for (const cad::Handle h : ModuleEntities(*db, it->second.label)) {
            db->Erase(h);
        }
        DrawOne(*db, sheet, module, source.origin, Action::Redrawn);
        changed = true;
    }
    if (changed) {
        WriteSheet(*db, path, options_, before);
        result_.written.push_back(path);
    }
}

SetResult SetDrawer::Run() {
    for (const PlannedSheet& sheet : plan_.sheets) {
        const std::string path = (std::filesystem::path(options_.outDir) / sheet.fileName).string();
        if (options_.update && files::Identify(path).exists) {
            Update(sheet, path);
        } else {
            Fresh(sheet, path);
        }
    }
    return std::move(result_);
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return quoted + "\"";
}

}  // namespace

ModuleDrawer::ModuleDrawer() = default;
ModuleDrawer::~ModuleDrawer() = default;

bool ModuleDrawer::Open() {
    dlg_ = std::make_unique<CDlgPlcRendal>();
    if (!dlg_->Create()) {
        return false;
    }
    dlg_->Refresh();
    return dlg_->libLoaded;
}

ModuleLookup ModuleDrawer::Lookup() {
    return [this](const std::string& m, const std::string& s, const std::string& t,
                  const std::string& c) -> const LibraryModule* {
        auto [it, added] = modules_.try_emplace(Key(m, s, t, c));
        if (!added) {
            return it->second.get();
        }
        for (const auto& entry : dlg_->plcLib.Entries()) {
            if (entry->manufacturer != m || entry->series != s || entry->type != t ||
                entry->code != c || c.empty()) {
                continue;
            }
            auto module = std::make_unique<LibraryModule>();
            *module = {m, s, t, c, "", entry->points, entry->moduleType, entry->description, {}};
            auto [name, first] = shortNames_.try_emplace(m);
            if (first) {
                name->second = dlg_->plcLib.GetShortName(m);
            }
            module->shortName = name->second;
            CPlcPartData rows(m, s, t);
            dlg_->plcLib.LoadTerminals(m, s, t, c, rows);
            for (const auto& row : rows.terminals) {
                module->terminals.push_back(
                    {row->sequence, row->termValue, row->termDesc, row->detailTermDesc});
            }
            it->second = std::move(module);
            break;
        }
        return it->second.get();
    };
}

bool ModuleDrawer::Draw(const PlannedModule& module, cad::Database& db, const cad::Point3d& at,
                        cad::Handle& label) {
    const LibraryModule& lib = *module.module;
    CDlgPlcRendal& dlg = *dlg_;
    if (!dlg.SelectModulePath(lib.manufacturer, lib.series, lib.type, lib.code)) {
        return false;
    }
    for (int row = 0; row < dlg.termList.Count(); ++row) {
        dlg.termList.SetStateImage(row, kMarkOn);
        const auto texts = module.texts.find(dlg.termList.Text(row, kColSequence));
        if (texts != module.texts.end()) {
            dlg.termList.SetText(row, kColTermDesc, texts->second.first);
            dlg.termList.SetText(row, kColDetailDesc, texts->second.second);
        }
    }
    dlg.editTag = module.tag;
    dlg.editFrameNo = module.rack;
    dlg.editSlotNo = module.slot;
    const bool drawn = DrawFullSheetAt(dlg, dlg.CurrentChoice(), db, at);
    label = dlg.labelId;
    return drawn;
}

double ModuleDrawer::Width(const PlannedModule& module) const {
    return static_cast<double>(module.module->terminals.size() + 1) * dlg_->termSpacing;
}

const char* ActionName(Action action) {
    static const char* const names[] = {"drawn", "redrawn", "kept", "failed"};
    return names[static_cast<int>(action)];
}

SetResult DrawSet(ModuleDrawer& drawer, const Plan& plan, const Project& project,
                  const SetOptions& options) {
    return SetDrawer(drawer, plan, project, options).Run();
}

std::string ReportCsv(const std::vector<DrawnEntry>& entries) {
    std::string csv = "sheet,file,tag,module,rack,slot,x,y,channels,action\n";
    char number[64];
    for (const DrawnEntry& e : entries) {
        csv += CsvField(e.sheet) + "," + CsvField(e.file) + "," + CsvField(e.tag) + "," +
               CsvField(e.module) + "," + CsvField(e.rack) + "," + CsvField(e.slot) + ",";
        std::snprintf(number, sizeof number, "%g,%g,%zu,", e.origin.x, e.origin.y, e.channels);
        csv += number;
        csv += ActionName(e.action);
        csv += "\n";
    }
    return csv;
}

}  // namespace batch
