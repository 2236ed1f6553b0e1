// A list of a few hundred channels over several racks drawn as a set of sheets from the
// bundled sample library: each module equals the drawing dialog's own whole-module drawing
// of the same choices, ezdxf reads every sheet, and a changed list row and a changed library
// row are found by the check and drawn again by an update that leaves the rest untouched.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include "BatchTestSupport.h"
#include "RecordingHost.h"
#include "TestPaths.h"
#include "app/PlcRendalApp.h"
#include "app/PlcRendalMain.h"
#include "batch/Check.h"
#include "batch/DrawingSet.h"
#include "cad/Dxf.h"
#include "cad/Entity.h"
#include "draw/DlgPlcRendal.h"
#include "plclib/PlcLib.h"

namespace {

namespace fs = std::filesystem;
using testing_support::TempDir;

const char* kN10 = "Norvik Controls/NX 10/";
const char* kHa = "Haldane Automation/HA 300/";

// The sample library in a scratch local folder, the built symbols, a recording host.
class BatchEnvironment {
public:
    BatchEnvironment()
        : local_("ZANDRIX_LOCAL_DIR", (dir_.Path() / "local").string()),
          common_("ZANDRIX_COMMON_DIR", testing_support::CommonResDir().string()),
          style_("ZANDRIX_INSTALL_STYLE", "0"),
          scope_(host) {
        fs::create_directories(dir_.Path() / "local/PLC");
        fs::copy_file(testing_support::BinaryDir() / "local/PLC/QvPLC.db",
                      dir_.Path() / "local/PLC/QvPLC.db");
        fs::create_directories(dir_.Path() / "out");
    }
    fs::path Dir() const { return dir_.Path(); }
    fs::path Out() const { return dir_.Path() / "out"; }
    fs::path Library() const { return dir_.Path() / "local/PLC/QvPLC.db"; }

    testing_support::RecordingHost host;

private:
    TempDir dir_;
    testing_support::ScopedEnv local_, common_, style_;
    host::ScopedHost scope_;
};

// Four racks of six modules; the channels named by sequence, one spare per DI module.
std::string BigList(const std::string& spareSignal = "备用") {
    struct Kind {
        std::string module;
        std::vector<int> sequences;
    };
    const std::vector<Kind> kinds = {
        {std::string(kN10) + "Digital input/NX1-DI16",
         {1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 16, 17}},
        {std::string(kN10) + "Digital output/NX1-DO16", {2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 14, 15}},
        {std::string(kN10) + "Analog input/NX1-AI8", {4, 7, 10, 13, 16, 19, 22, 25}},
        {std::string(kHa) + "DI module/HA3-DI16", {1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13}},
    };
    std::string csv = "位号,机架,槽号,模块,通道,信号\n";
    int module = 0;
    for (int rack = 0; rack < 4; ++rack) {
        for (int slot = 1; slot <= 6; ++slot, ++module) {
            // HA3-DI16 once only, so that a change of its rows touches one module.
            const Kind& kind = kinds[module == 5 ? 3 : module % 3];
            const std::string tag = "K" + std::to_string(module + 1);
            for (std::size_t i = 0; i < kind.sequences.size(); ++i) {
                const std::string signal =
                    i == 3 ? spareSignal : tag + " signal " + std::to_string(i + 1);
                csv += tag + "," + std::to_string(rack) + "," + std::to_string(slot) + "," +
                       kind.module + ",#" + std::to_string(kind.sequences[i]) + "," + signal + "\n";
            }
        }
    }
    return csv;
}

batch::Plan PlanFor(batch::ModuleDrawer& drawer, const fs::path& list,
                    const batch::Project& project) {
    batch::Plan plan = batch::MakePlan(batch::ReadIoList(list.string()), project, drawer.Lookup());
    for (const auto& e : plan.errors) {
        ADD_FAILURE() << e.Text();
    }
    return plan;
}

const batch::PlannedModule* Planned(const batch::Plan& plan, const std::string& tag) {
    for (const auto& sheet : plan.sheets) {
        for (const auto& module : sheet.modules) {
            if (module.tag == tag) {
                return &module;
            }
        }
    }
    return nullptr;
}

// The module drawn alone the way 'qvplc draw' draws it: the plug-in loaded, PLCRENDAL run,
// the module selected in the tree, its texts typed in, the full-drawing button pressed and
// RENDALFULL run with the drag answered at `at`.
std::vector<std::string> DrawnAlone(BatchEnvironment& env, const batch::PlannedModule& module,
                                    const cad::Point3d& at) {
    cad::Database db;
    env.host.database = &db;
    app::CPlcRendalApp plugin;
    plugin.EntryPoint(app::AppMessage::InitApplication);
    app::CPlcRendalMain().RunRendal();
    CDlgPlcRendal* dlg = g_pDlgPlcRendal;
    std::vector<std::string> lines;
    const batch::LibraryModule& lib = *module.module;
    if (dlg != nullptr && dlg->SelectModulePath(lib.manufacturer, lib.series, lib.type, lib.code)) {
        for (int row = 0; row < dlg->termList.Count(); ++row) {
            const auto texts = module.texts.find(dlg->termList.Text(row, kColSequence));
            if (texts != module.texts.end()) {
                dlg->termList.SetText(row, kColTermDesc, texts->second.first);
                dlg->termList.SetText(row, kColDetailDesc, texts->second.second);
            }
        }
        dlg->editTag = module.tag;
        dlg->editFrameNo = module.rack;
        dlg->editSlotNo = module.slot;
        env.host.pointAnswers.push_back({host::InputStatus::Normal, at});
        dlg->OnDrawFull();
        env.host.RunSentCommands();
        EXPECT_EQ(dlg->drawFinished, 1) << module.tag;
        lines = batch_test::Canonical(db, batch::ModuleEntities(db, dlg->labelId), at, "");
    } else {
        ADD_FAILURE() << "the dialog cannot select " << lib.Path();
    }
    plugin.EntryPoint(app::AppMessage::UnloadApplication);
    env.host.database = nullptr;
    return lines;
}

struct DrawnSet {
    std::unique_ptr<batch::ModuleDrawer> drawer;  // owns the modules the plan points to
    batch::Plan plan;
    batch::SetResult result;
};

DrawnSet DrawList(BatchEnvironment& env, const std::string& csv, bool update,
                  const batch::Project& project) {
    testing_support::WriteFile(env.Dir() / "io.csv", csv);
    DrawnSet set{std::make_unique<batch::ModuleDrawer>(), {}, {}};
    EXPECT_TRUE(set.drawer->Open());
    set.plan = PlanFor(*set.drawer, env.Dir() / "io.csv", project);
    batch::SetOptions options;
    options.outDir = env.Out().string();
    options.listFile = "io.csv";
    options.update = update;
    set.result = batch::DrawSet(*set.drawer, set.plan, project, options);
    EXPECT_TRUE(set.result.errors.empty());
    return set;
}

std::unique_ptr<cad::Database> ReadSheet(const fs::path& path) {
    return cad::ReadDxfFile(path.string());
}

batch::Project EightPerSheet() {
    batch::Project project;
    project.modulesPerSheet = 8;
    project.start[static_cast<int>(batch::Kind::AI)] = 64;
    return project;
}

TEST(BatchDrawingSet, EveryModuleEqualsTheDialogsOwnDrawingOfTheSameChoices) {
    BatchEnvironment env;
    const DrawnSet set = DrawList(env, BigList(), false, EightPerSheet());
    std::size_t channels = 0;
    for (const auto& sheet : set.plan.sheets) {
        for (const auto& module : sheet.modules) {
            channels += module.channels.size();
        }
    }
    ASSERT_GE(channels, 250u);
    ASSERT_EQ(set.plan.sheets.size(), 3u);
    ASSERT_EQ(set.result.written.size(), 3u);
    std::size_t compared = 0;
    for (const auto& sheet : set.plan.sheets) {
        const auto db = ReadSheet(env.Out() / sheet.fileName);
        const auto drawn = batch::FindDrawnModules(*db);
        ASSERT_EQ(drawn.size(), sheet.modules.size()) << sheet.fileName;
        for (const auto& module : drawn) {
            const auto* planned = Planned(set.plan, module.source.tag);
            ASSERT_NE(planned, nullptr);
            EXPECT_EQ(module.source.sheet, sheet.name);
            EXPECT_EQ(module.source.listFile, "io.csv");
            const auto lines = batch_test::Canonical(*db, batch::ModuleEntities(*db, module.label),
                                                     module.source.origin, "QV_BATCH_");
            // Header, outline and three entities per terminal at the least.
            EXPECT_GT(lines.size(), 3 * planned->module->terminals.size());
            EXPECT_EQ(lines, DrawnAlone(env, *planned, module.source.origin)) << module.source.tag;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 24u);
}

TEST(BatchDrawingSet, TheListsTextsAndAddressesStandInTheDrawing) {
    BatchEnvironment env;
    const DrawnSet set = DrawList(env, BigList(), false, EightPerSheet());
    const auto db = ReadSheet(env.Out() / "sheet-01.dxf");
    std::set<std::string> texts;
    for (const cad::Entity* e : db->Entities()) {
        if (const auto* t = cad::Database::Cast<cad::Text>(e)) {
            texts.insert(t->text);
        }
    }
    // K1 is an NX1-DI16 in rack 0, slot 1: its first channel is I0.0, its fourth a spare.
    EXPECT_TRUE(texts.count("I0.0"));
    EXPECT_TRUE(texts.count("I1.7"));  // the 16th channel: sequence 17
    EXPECT_FALSE(texts.count("备用"));
    // K3 is an NX1-AI8: analog words from 64.
    EXPECT_TRUE(texts.count("IW64"));
    EXPECT_TRUE(texts.count("IW78"));
}

TEST(BatchDrawingSet, EzdxfReadsEverySheet) {
    BatchEnvironment env;
    const DrawnSet set = DrawList(env, BigList(), false, EightPerSheet());
    for (const auto& path : set.result.written) {
        std::string output;
        const int status = testing_support::RunCommand(
            testing_support::Python() + " " +
                (testing_support::SourceDir() / "tests/cad/check_dxf.py").string() + " '" + path +
                "'",
            &output);
        EXPECT_EQ(status, 0) << path << "\n" << output;
    }
}

// Each entity of the drawing as a line, by handle, leaving out `skip`.
std::map<cad::Handle, std::string> Snapshot(const cad::Database& db,
                                            const std::set<cad::Handle>& skip) {
    std::map<cad::Handle, std::string> lines;
    for (const cad::Entity* e : db.Entities()) {
        if (!skip.count(e->handle)) {
            lines[e->handle] = batch_test::Canonical(db, {e->handle}, {0, 0, 0}, "").at(0);
        }
    }
    return lines;
}

TEST(BatchDrawingSet, ChangedListAndLibraryRowsAreFoundAndRedrawnInPlaceWithTheRestUntouched) {
    BatchEnvironment env;
    batch::Project project = EightPerSheet();
    project.addressInDetail = true;  // the signal texts are drawn
    const DrawnSet first = DrawList(env, BigList(), false, project);

    // K2's list row changes; K6 (the only HA3-DI16) gets a new terminal number in the library.
    std::string csv = BigList();
    const std::string row = "K2 signal 1\n";
    csv.replace(csv.find(row), row.size(), "K2 pump changed\n");
    testing_support::WriteFile(env.Dir() / "io.csv", csv);
    {
        CPlcLib lib;
        ASSERT_TRUE(lib.Open(env.Library().string()));
        ASSERT_TRUE(
            lib.Execute("UPDATE Haldane_Automation_HA_300_DI_module_data SET TermValue="
                        "'COM' WHERE CODE='HA3-DI16' AND SEQUENCE=9"));
    }
    batch::ModuleDrawer drawer;
    ASSERT_TRUE(drawer.Open());
    const batch::Plan plan = PlanFor(drawer, env.Dir() / "io.csv", project);
    const fs::path sheet = env.Out() / "sheet-01.dxf";
    const auto before = ReadSheet(sheet);
    std::map<std::string, std::string> reasons;
    for (const auto& c : batch::CheckDrawing("s", *before, drawer.Lookup(), &plan)) {
        reasons[c.source.tag] = c.Reasons();
    }
    EXPECT_EQ(reasons.size(), 8u);
    EXPECT_EQ(reasons["K1"], "in step");
    EXPECT_EQ(reasons["K2"], "list rows changed");
    EXPECT_EQ(reasons["K6"], "library rows changed");
    // Without the list only the library is checked.
    for (const auto& c : batch::CheckDrawing("s", *before, drawer.Lookup(), nullptr)) {
        EXPECT_EQ(c.OutOfStep(), c.source.tag == "K6") << c.source.tag;
    }

    std::set<cad::Handle> redrawn;
    std::map<std::string, cad::Point3d> origins;
    for (const auto& m : batch::FindDrawnModules(*before)) {
        origins[m.source.tag] = m.source.origin;
        if (m.source.tag == "K2" || m.source.tag == "K6") {
            for (const cad::Handle h : batch::ModuleEntities(*before, m.label)) {
                redrawn.insert(h);
            }
        }
    }
    const auto kept = Snapshot(*before, redrawn);
    const std::size_t layers = before->Tables().size();

    const DrawnSet update = DrawList(env, csv, true, project);
    std::map<std::string, int> actions;
    for (const auto& e : update.result.entries) {
        ++actions[batch::ActionName(e.action)];
    }
    EXPECT_EQ(actions["redrawn"], 2);
    EXPECT_EQ(actions["kept"], 22);
    // Only the sheet holding K2 and K6 is written again.
    EXPECT_EQ(update.result.written, std::vector<std::string>{sheet.string()});

    const auto after = ReadSheet(sheet);
    const auto afterLines = Snapshot(*after, {});
    for (const auto& [handle, line] : kept) {
        const auto it = afterLines.find(handle);
        ASSERT_NE(it, afterLines.end()) << "entity " << handle << " went: " << line;
        EXPECT_EQ(it->second, line);
    }
    EXPECT_EQ(after->Tables().size(), layers);
    for (const auto& m : batch::FindDrawnModules(*after)) {
        EXPECT_EQ(m.source.origin.x, origins[m.source.tag].x) << m.source.tag;
        EXPECT_EQ(m.source.origin.y, origins[m.source.tag].y) << m.source.tag;
    }
    std::set<std::string> texts;
    for (const cad::Entity* e : after->Entities()) {
        if (const auto* t = cad::Database::Cast<cad::Text>(e)) {
            texts.insert(t->text);
        }
    }
    EXPECT_TRUE(texts.count("COM"));
    EXPECT_TRUE(texts.count("K2 pump changed"));
    EXPECT_FALSE(texts.count("K2 signal 1"));
    for (const auto& c : batch::CheckDrawing("s", *after, drawer.Lookup(), &plan)) {
        EXPECT_FALSE(c.OutOfStep()) << c.source.tag << ": " << c.Reasons();
    }
}

TEST(BatchDrawingSet, AnUpdateAddsModulesNewToTheListBelowTheOthers) {
    BatchEnvironment env;
    batch::Project project;
    project.modulesPerSheet = 100;
    const std::string head = "tag,rack,slot,module,channel,signal\n";
    const std::string a1 = "A1,0,1," + std::string(kN10) + "Digital input/NX1-DI16,1,x\n";
    const std::string a2 = "A2,0,2," + std::string(kN10) + "Digital input/NX1-DI16,1,y\n";
    DrawList(env, head + a1, false, project);
    const DrawnSet update = DrawList(env, head + a1 + a2, true, project);
    ASSERT_EQ(update.result.entries.size(), 2u);
    EXPECT_EQ(update.result.entries[0].action, batch::Action::Kept);
    EXPECT_EQ(update.result.entries[1].action, batch::Action::Drawn);
    EXPECT_LT(update.result.entries[1].origin.y, update.result.entries[0].origin.y);
    EXPECT_EQ(batch::FindDrawnModules(*ReadSheet(env.Out() / "sheet-01.dxf")).size(), 2u);
}

TEST(BatchDrawingSet, EverySheetStartsAsACopyOfTheFrameDrawing) {
    BatchEnvironment env;
    {
        cad::Database frame;
        auto* line = frame.AppendNew<cad::Line>();
        line->layer = frame.AddLayer("FRAME", 3);
        line->end = {420, -297, 0};
        cad::WriteDxfFile(frame, (env.Dir() / "frame.dxf").string(), cad::DxfVersion::R2010);
    }
    batch::Project project;
    project.modulesPerSheet = 1;
    project.frame = (env.Dir() / "frame.dxf").string();
    const std::string di = std::string(kN10) + "Digital input/NX1-DI16";
    DrawList(env,
             "tag,rack,slot,module,channel,signal\nA1,0,1," + di + ",1,x\nA2,0,2," + di + ",1,y\n",
             false, project);
    for (const char* sheet : {"sheet-01.dxf", "sheet-02.dxf"}) {
        const auto db = ReadSheet(env.Out() / sheet);
        int frameLines = 0;
        for (const cad::Entity* e : db->Entities()) {
            const auto* line = cad::Database::Cast<cad::Line>(e);
            frameLines +=
                line != nullptr && db->Layer(e->layer)->name == "FRAME" && line->end.x == 420;
        }
        EXPECT_EQ(frameLines, 1) << sheet;
        EXPECT_EQ(batch::FindDrawnModules(*db).size(), 1u) << sheet;
    }
}

TEST(BatchDrawingSet, TheReportSaysWhatWasDrawnWhere) {
    batch::DrawnEntry entry{
        "P,1", "P_1.dxf", "A1", "M/S/T/C", "0", "2", {20, -100, 0}, 3, batch::Action::Redrawn};
    EXPECT_EQ(batch::ReportCsv({entry}),
              "sheet,file,tag,module,rack,slot,x,y,channels,action\n"
              "\"P,1\",P_1.dxf,A1,M/S/T/C,0,2,20,-100,3,redrawn\n");
}

}  // namespace
