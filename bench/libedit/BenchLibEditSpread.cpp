// bench_libedit_spread: the library editor on a library of 1,000 types and 20,000 modules,
// each figure against the same statements run through plain sqlite3 calls in the same run.
// bench_libedit selects one type and its 500-row module again and again; this one spreads the
// selections over types never listed before and says where their time goes.
//  a. Selecting a type node and a module row, which fills the module list (20 rows) and the
//     terminal list (16 rows); a different type each time, so no list is held from before.
//     Baseline: SELECT * of the type's module table, and of the module's terminal rows.
//  b. Inserting a terminal row before row 1 of a 500-row module: 500 UPDATEs moving the rows
//     down (highest first) and one INSERT. Baseline: those 501 statements.
//  c. Deleting that row again: one DELETE and 500 UPDATEs moving the rows up.
// Goal: at most 1.5 times the baseline. (a) counts this thread's CPU time; (b) and (c) wait
// for the disk on every statement, so they are given in wall time and, since the disk of a
// shared machine makes that noisy, in CPU time too. Runs are interleaved so that both sides
// see the same cache, and the best of each is kept.
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "QuietHost.h"
#include "host/Host.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "plclib/Engine.h"

namespace {

namespace fs = std::filesystem;

constexpr int kTypes = 1000, kModules = 20, kRows = 16, kBigRows = 500;
const char* kBigCode = "MX-BIG";

void Run(sqlite3* db, const std::string& sql) {
    char* message = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
        std::fprintf(stderr, "bench_libedit_spread: %s: %s\n", sql.c_str(), message ? message : "");
        std::exit(1);
    }
}

std::string TypeName(int t) {
    return "Type " + std::to_string(t);
}
std::string SeriesName(int t) {
    return "S" + std::to_string(t / 10);
}
std::string MakerName(int t) {
    return "Maker " + std::to_string(t / 100);
}
std::string TableName(int t) {
    return "Maker_" + SeriesName(t) + "_Type_" + std::to_string(t);
}

// The library, with the tables every library has; type 0 also holds the 500-row module.
std::string MakeLibrary(const fs::path& dir) {
    const std::string path = (dir / "QvPLC.db").string();
    plcdb::Connection made;
    std::string error;
    if (!made.Create(path, error)) {
        std::fprintf(stderr, "bench_libedit_spread: %s\n", error.c_str());
        std::exit(1);
    }
    made.Close(error);
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    Run(db, "BEGIN");
    for (int t = 0; t < kTypes; ++t) {
        const std::string table = TableName(t);
        Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('" + MakerName(t) + "','" + SeriesName(t) +
                    "','" + TypeName(t) + "','" + table + "')");
        Run(db, "CREATE TABLE " + table +
                    "(CODE CHAR(60) NOT NULL,POINTS CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),"
                    "RATING CHAR(60),primary key(CODE))");
        Run(db, "CREATE TABLE " + table +
                    "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),"
                    "TERMDESC CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))");
        for (int m = 0; m <= kModules; ++m) {
            const bool big = m == kModules;
            if (big && t != 0) {
                break;
            }
            const std::string code =
                big ? kBigCode : "MX-" + std::to_string(t) + "-" + std::to_string(m);
            Run(db, "INSERT INTO " + table + " VALUES ('" + code +
                        "','16','DI','16 digital inputs, 24VDC sink','24VDC 4mA')");
            for (int s = 1; s <= (big ? kBigRows : kRows); ++s) {
                Run(db, "INSERT INTO " + table + "_data VALUES ('" + code + "'," +
                            std::to_string(s) + ",'" + std::to_string(s) + "','I0." +
                            std::to_string(s) + "','digital input channel')");
            }
        }
    }
    Run(db, "COMMIT");
    sqlite3_close(db);
    return path;
}

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double WallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

template <typename Clock, typename F>
double Timed(Clock clock, F&& body) {
    const double start = clock();
    body();
    return clock() - start;
}

// Reads every row of a query into strings, as the lists would show them.
size_t ReadAll(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    std::vector<std::vector<std::string>> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        auto& row = rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            const auto* text = sqlite3_column_text(statement, i);
            row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
        }
    }
    sqlite3_finalize(statement);
    return rows.size();
}

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "bench_libedit_spread: %s failed\n", what);
        std::exit(1);
    }
}

void Report(const char* what, double ours, double baseline, const char* unit) {
    const double scale = std::string(unit) == "us" ? 1e6 : 1e3;
    std::printf("%s\n  editor %.1f %s, plain sqlite3 %.1f %s, ratio %.2f (goal <= 1.50)\n", what,
                ours * scale, unit, baseline * scale, unit, ours / baseline);
}

// Where a selection's time goes, on types not listed before: the type node (its module nodes
// and the module list come from a pass over every entry), the module row (the entry is found
// by a pass over every entry, then its rows read), and the table-name look-up inside the
// latter, which reads every type row.
void SelectBreakdown(CDlgPlcDataLibEdit& dlg) {
    constexpr int kCount = 200;
    double typeNode = 0, moduleRow = 0, tableName = 0;
    for (int i = 0; i < kCount; ++i) {
        const int type = 751 + i;  // types (a) did not select
        typeNode += Timed(CpuSeconds, [&] {
            dlg.SelectPath({MakerName(type), SeriesName(type), TypeName(type)});
        });
        moduleRow += Timed(CpuSeconds, [&] { dlg.SelectModuleRow(kModules / 2); });
        tableName += Timed(CpuSeconds, [&] {
            dlg.plcLib.GetTableName(MakerName(type), SeriesName(type), TypeName(type));
        });
    }
    std::printf(
        "  of which: type node %.1f us, module row %.1f us; one table-name look-up alone "
        "(all %d type rows read) %.1f us\n",
        typeNode / kCount * 1e6, moduleRow / kCount * 1e6, kTypes, tableName / kCount * 1e6);
}

void SelectFigure(CDlgPlcDataLibEdit& dlg, sqlite3* plain) {
    constexpr int kSelections = 150;
    double ours = 1e30, baseline = 1e30;
    for (int round = 0; round < 5; ++round) {
        // A different stretch of types each round: the editor never lists a module twice.
        const int first = round * kSelections;
        ours = std::min(
            ours, Timed(CpuSeconds, [&] {
                for (int t = first; t < first + kSelections; ++t) {
                    const int type = 1 + t;  // type 0 holds the big module
                    dlg.SelectPath({MakerName(type), SeriesName(type), TypeName(type)});
                    dlg.SelectModuleRow(kModules / 2);
                    Check(dlg.moduleList.Count() == kModules && dlg.termList.Count() == kRows,
                          "selecting a type and a module");
                }
            }));
        baseline = std::min(
            baseline, Timed(CpuSeconds, [&] {
                for (int t = first; t < first + kSelections; ++t) {
                    const int type = 1 + t;  // type 0 holds the big module
                    const std::string table = TableName(type);
                    const std::string code =
                        "MX-" + std::to_string(type) + "-" + std::to_string(kModules / 2);
                    Check(ReadAll(plain, "SELECT * FROM " + table) == kModules &&
                              ReadAll(plain, "SELECT * FROM " + table + "_data WHERE CODE='" +
                                                 code + "'") == kRows,
                          "plain selection");
                }
            }));
    }
    Report("a. select a type node and a module row (each, thread CPU time, best of 5 x 150):",
           ours / kSelections, baseline / kSelections, "us");
    SelectBreakdown(dlg);
}

void PlainInsert(sqlite3* db) {
    const std::string table = TableName(0) + "_data";
    for (int n = kBigRows; n >= 1; --n) {
        Run(db, "UPDATE " + table + " SET SEQUENCE=" + std::to_string(n + 1) + " WHERE CODE='" +
                    kBigCode + "' AND SEQUENCE = " + std::to_string(n));
    }
    Run(db, "INSERT INTO " + table + " VALUES ('" + kBigCode + "',1,'0V','M','')");
}

void PlainDelete(sqlite3* db) {
    const std::string table = TableName(0) + "_data";
    Run(db, "DELETE FROM " + table + " WHERE CODE='" + kBigCode + "' AND SEQUENCE=1");
    for (int n = 1; n <= kBigRows; ++n) {
        Run(db, "UPDATE " + table + " SET SEQUENCE=" + std::to_string(n) + " WHERE CODE='" +
                    kBigCode + "' AND SEQUENCE = " + std::to_string(n + 1));
    }
}

// Wall and CPU time of one run of `body`.
struct Times {
    double wall = 1e30, cpu = 1e30;
    template <typename F>
    void Keep(F&& body) {
        const double cpuStart = CpuSeconds(), wallStart = WallSeconds();
        body();
        wall = std::min(wall, WallSeconds() - wallStart);
        cpu = std::min(cpu, CpuSeconds() - cpuStart);
    }
};

void InsertDeleteFigures(CDlgPlcDataLibEdit& dlg, sqlite3* plain) {
    Check(dlg.SelectPath({MakerName(0), SeriesName(0), TypeName(0), kBigCode}) &&
              dlg.termList.Count() == kBigRows,
          "selecting the 500-row module");
    dlg.newTermInfoRunner = libedit::FillAndOk<CDlgNewTermInfo>([](CDlgNewTermInfo& d) {
        d.termValue = "0V";
        d.termDesc = "M";
    });
    Times oursInsert, oursDelete, plainInsert, plainDelete;
    for (int round = 0; round < 5; ++round) {
        oursInsert.Keep([&] {
            dlg.SelectTermRows({0});
            Check(dlg.OnMenuCommand(libedit::kCmdInsertTerm), "insert");
        });
        Check(dlg.termList.Count() == kBigRows + 1 && dlg.termList.Text(0, 1) == "0V",
              "the inserted row");
        oursDelete.Keep([&] {
            dlg.SelectTermRows({0});
            Check(dlg.OnMenuCommand(libedit::kCmdDeleteTerms), "delete");
        });
        Check(dlg.termList.Count() == kBigRows && dlg.termList.Text(0, 1) == "1", "the deletion");
        plainInsert.Keep([&] { PlainInsert(plain); });
        plainDelete.Keep([&] { PlainDelete(plain); });
    }
    Check(ReadAll(plain, "SELECT * FROM " + TableName(0) + "_data WHERE CODE='" + kBigCode +
                             "' AND SEQUENCE=" + std::to_string(kBigRows) + " AND TermValue='" +
                             std::to_string(kBigRows) + "'") == 1,
          "the rows after all rounds");
    Report("b. insert a terminal before row 1 of a 500-row module (wall time, best of 5):",
           oursInsert.wall, plainInsert.wall, "ms");
    Report("   the same in thread CPU time (the disk's waits left out):", oursInsert.cpu,
           plainInsert.cpu, "ms");
    Report("c. delete it again (wall time, best of 5):", oursDelete.wall, plainDelete.wall, "ms");
    Report("   the same in thread CPU time:", oursDelete.cpu, plainDelete.cpu, "ms");
}

}  // namespace

int main() {
    const fs::path dir =
        fs::temp_directory_path() / ("bench_libedit_spread_" + std::to_string(getpid()));
    fs::create_directories(dir);
    setenv("ZANDRIX_LOCAL_DIR", dir.c_str(), 1);  // the editor's last selection and stamp
    bench::QuietHost quiet("bench_libedit_spread");
    host::ScopedHost scope(quiet);
    const std::string path = MakeLibrary(dir);
    {
        CDlgPlcDataLibEdit dlg;
        dlg.libPath = path;
        Check(dlg.Create(), "opening the editor");
        dlg.Refresh();
        sqlite3* plain = nullptr;
        Check(sqlite3_open_v2(path.c_str(), &plain, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK,
              "opening the library with sqlite3");
        sqlite3_busy_timeout(plain, 5000);
        std::printf("library: %d types, %d modules (%d terminal rows each), one of %d rows\n",
                    kTypes, kTypes * kModules, kRows, kBigRows);
        SelectFigure(dlg, plain);
        InsertDeleteFigures(dlg, plain);
        sqlite3_close(plain);
        dlg.OnClose();
    }
    fs::remove_all(dir);
    return 0;
}
