// Batch drawing speed: a 1,000-module I/O list (8,000 channels) drawn to a set of 50 sheets,
// against the same 1,000 modules drawn one by one through the drawing dialog (selected in the
// tree, texts typed in, drawn whole) into the same 50 drawings, each written once: the ratio
// is what reading the list, planning, addressing and recording the sources add. For scale,
// also against each module drawn into a drawing of its own, as 1,000 runs of 'qvplc draw'. Then
// 'check' of the resulting set against the list. Each run is a child process, so that its processor
// time and its peak memory (getrusage) are its own; the best of five runs is reported.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "../libedit/QuietHost.h"
#include "batch/Check.h"
#include "batch/DrawingSet.h"
#include "cad/Dxf.h"
#include "draw/DlgPlcRendal.h"
#include "draw/SheetDrawing.h"
#include "files/TextFile.h"

namespace {

namespace fs = std::filesystem;

constexpr int kModules = 1000;
constexpr int kPerSheet = 20;

struct Figures {
    double cpu = 1e30;  // seconds, user + system
    long peakKb = 0;
};

// Runs `work` in a child process; its processor time and peak resident memory.
Figures InChild(const std::function<int()>& work) {
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        std::_Exit(work());
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "bench_batch: a run failed (status %d)\n", status);
        std::exit(1);
    }
    Figures f;
    f.cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
            static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    f.peakKb = usage.ru_maxrss;
    return f;
}

Figures Best(const std::function<int()>& work, int runs = 5) {
    Figures best;
    for (int i = 0; i < runs; ++i) {
        const Figures f = InChild(work);
        best.cpu = std::min(best.cpu, f.cpu);
        best.peakKb = std::max(best.peakKb, f.peakKb);
    }
    return best;
}

struct Sample {
    std::string manufacturer, series, type, code;
    std::vector<int> sequences;
    std::string Path() const { return manufacturer + "/" + series + "/" + type + "/" + code; }
};

const std::vector<Sample>& Samples() {
    static const std::vector<Sample> samples = {
        {"Norvik Controls", "NX 10", "Digital input", "NX1-DI16", {1, 2, 3, 4, 5, 6, 7, 8}},
        {"Norvik Controls", "NX 10", "Digital output", "NX1-DO16", {2, 3, 4, 5, 6, 7, 8, 9}},
        {"Norvik Controls", "NX 10", "Analog input", "NX1-AI8", {4, 7, 10, 13, 16, 19, 22, 25}},
        {"Haldane Automation", "HA 300", "DI module", "HA3-DI16", {1, 2, 3, 4, 5, 6, 7, 8}},
    };
    return samples;
}

std::string MakeList() {
    std::string csv = "tag,rack,slot,module,channel,signal\n";
    for (int m = 0; m < kModules; ++m) {
        const Sample& s = Samples()[m % Samples().size()];
        const std::string tag = "K" + std::to_string(m + 1);
        for (std::size_t i = 0; i < s.sequences.size(); ++i) {
            csv += tag + "," + std::to_string(m / 10) + "," + std::to_string(m % 10 + 1) + "," +
                   s.Path() + ",#" + std::to_string(s.sequences[i]) + "," + tag + " signal " +
                   std::to_string(i + 1) + "\n";
        }
    }
    return csv;
}

batch::Project BenchProject() {
    batch::Project project;
    project.modulesPerSheet = kPerSheet;
    return project;
}

int RunBatch(const std::string& list, const std::string& out) {
    bench::QuietHost quiet("bench_batch");
    host::ScopedHost scope(quiet);
    batch::ModuleDrawer drawer;
    if (!drawer.Open()) {
        return 1;
    }
    const batch::Project project = BenchProject();
    const batch::Plan plan = batch::MakePlan(batch::ReadIoList(list), project, drawer.Lookup());
    if (!plan.errors.empty() || plan.ModuleCount() != kModules) {
        return 2;
    }
    batch::SetOptions options;
    options.outDir = out;
    options.listFile = list;
    const auto result = batch::DrawSet(drawer, plan, project, options);
    files::WriteFile(out + "/batch-report.csv", batch::ReportCsv(result.entries));
    return result.errors.empty() ? 0 : 3;
}

// The same modules drawn one at a time through the dialog at the places the batch gives them,
// into the same 50 drawings; with `eachOwnFile` every module goes into a drawing of its own
// written at once, as a run of 'qvplc draw' per module leaves them.
int RunSingles(const std::string& out, bool eachOwnFile) {
    bench::QuietHost quiet("bench_batch");
    host::ScopedHost scope(quiet);
    CDlgPlcRendal dlg;
    if (!dlg.Create()) {
        return 1;
    }
    dlg.Refresh();
    std::unique_ptr<cad::Database> db;
    for (int m = 0; m < kModules; ++m) {
        if (eachOwnFile || m % kPerSheet == 0) {
            db = std::make_unique<cad::Database>();
        }
        const Sample& s = Samples()[m % Samples().size()];
        if (!dlg.SelectModulePath(s.manufacturer, s.series, s.type, s.code)) {
            return 2;
        }
        const std::string tag = "K" + std::to_string(m + 1);
        for (int row = 0; row < dlg.termList.Count(); ++row) {
            dlg.termList.SetStateImage(row, kMarkOn);
            const int sequence = std::atoi(dlg.termList.Text(row, kColSequence).c_str());
            const auto it = std::find(s.sequences.begin(), s.sequences.end(), sequence);
            if (it != s.sequences.end()) {
                const std::string n = std::to_string(it - s.sequences.begin() + 1);
                dlg.termList.SetText(row, kColTermDesc, "I" + n);
                dlg.termList.SetText(row, kColDetailDesc, tag + " signal " + n);
            }
        }
        dlg.editTag = tag;
        dlg.editFrameNo = std::to_string(m / 10);
        dlg.editSlotNo = std::to_string(m % 10 + 1);
        const int cell = m % kPerSheet;
        if (!DrawFullSheetAt(dlg, dlg.CurrentChoice(), *db,
                             {20.0 + (cell % 4) * 310.0, -(cell / 4) * 100.0, 0})) {
            return 3;
        }
        if (eachOwnFile) {
            cad::WriteDxfFile(*db, out + "/module-" + std::to_string(m) + ".dxf",
                              cad::DxfVersion::R2010);
        } else if (m % kPerSheet == kPerSheet - 1) {
            cad::WriteDxfFile(*db, out + "/single-" + std::to_string(m / kPerSheet) + ".dxf",
                              cad::DxfVersion::R2010);
        }
    }
    return 0;
}

int RunCheck(const std::string& list, const std::string& out) {
    bench::QuietHost quiet("bench_batch");
    host::ScopedHost scope(quiet);
    batch::ModuleDrawer drawer;
    if (!drawer.Open()) {
        return 1;
    }
    const batch::Plan plan =
        batch::MakePlan(batch::ReadIoList(list), BenchProject(), drawer.Lookup());
    std::size_t modules = 0;
    for (const auto& entry : fs::directory_iterator(out)) {
        if (entry.path().extension() == ".dxf" &&
            entry.path().filename().string().rfind("sheet-", 0) == 0) {
            const auto db = cad::ReadDxfFile(entry.path().string());
            for (const auto& c :
                 batch::CheckDrawing(entry.path().string(), *db, drawer.Lookup(), &plan)) {
                if (c.OutOfStep()) {
                    return 2;
                }
                ++modules;
            }
        }
    }
    return modules == kModules ? 0 : 3;
}

}  // namespace

int main() {
    const fs::path dir = fs::temp_directory_path() / ("qv_bench_batch." + std::to_string(getpid()));
    fs::create_directories(dir / "local/PLC");
    fs::create_directories(dir / "out");
    fs::copy_file(QV_BENCH_LIBRARY, dir / "local/PLC/QvPLC.db");
    setenv("ZANDRIX_LOCAL_DIR", (dir / "local").c_str(), 1);
    setenv("ZANDRIX_COMMON_DIR", QV_BENCH_COMMON, 1);
    setenv("ZANDRIX_INSTALL_STYLE", "0", 1);
    const std::string list = (dir / "iolist.csv").string();
    const std::string out = (dir / "out").string();
    files::WriteFile(list, MakeList());

    // Each run writes into a folder of its own: a folder's other files cost every write a look.
    fs::create_directories(dir / "singles");
    fs::create_directories(dir / "own");
    const Figures singles = Best([&] { return RunSingles((dir / "singles").string(), false); });
    const Figures ownFiles = Best([&] { return RunSingles((dir / "own").string(), true); }, 3);
    const Figures set = Best([&] { return RunBatch(list, out); });
    const Figures check = Best([&] { return RunCheck(list, out); });
    std::printf("1,000 modules (8,000 channels) on %d sheets, processor time, best of 5\n",
                kModules / kPerSheet);
    std::printf("  single draws through the dialog:  %7.3f s  peak %6ld KiB\n", singles.cpu,
                singles.peakKb);
    std::printf("  the same, a drawing per module:   %7.3f s  peak %6ld KiB  (best of 3)\n",
                ownFiles.cpu, ownFiles.peakKb);
    std::printf(
        "  qvplc batch of the I/O list:      %7.3f s  peak %6ld KiB  ratio %.2fx "
        "(goal <= 1.20x)\n",
        set.cpu, set.peakKb, set.cpu / singles.cpu);
    std::printf("  batch against a drawing per module: ratio %.2fx\n", set.cpu / ownFiles.cpu);
    std::printf("  check of the set against the list: %5.3f s  peak %6ld KiB\n", check.cpu,
                check.peakKb);
    fs::remove_all(dir);
    return 0;
}
