// bench_plclib: the speed of loading the component library.
//  1. CPlcLib::LoadLibrary on a library of 1,000 module tables and 20,000 modules, against a
//     baseline that reads the same rows with plain sqlite3 calls in one pass into plain
//     records. Goal: at most 1.5 times the baseline.
//  2. CPlcLib::LoadTerminals of one module in tables of 10, 100 and 1,000 modules: the time
//     should not grow with the table, since the look-up uses the (CODE, SEQUENCE) key.
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "plclib/Engine.h"
#include "plclib/PlcLib.h"

namespace {

const char* kModuleTable =
    "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),RATING "
    "CHAR(60),primary key(CODE))";
const char* kTermTable =
    "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
    "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))";

void Run(plcdb::Connection& db, const std::string& sql) {
    std::string error;
    if (!db.Execute(sql, error)) {
        std::fprintf(stderr, "bench_plclib: %s: %s\n", sql.c_str(), error.c_str());
        std::exit(1);
    }
}

// `tables` type rows, each table with `modules` modules of `terminals` terminal rows.
std::string MakeLibrary(const std::filesystem::path& dir, const std::string& name, int tables,
                        int modules, int terminals) {
    const std::string path = (dir / name).string();
    plcdb::Connection db;
    std::string error;
    if (!db.Create(path, error)) {
        std::fprintf(stderr, "bench_plclib: %s\n", error.c_str());
        std::exit(1);
    }
    Run(db, "BEGIN");
    for (int t = 0; t < tables; ++t) {
        const std::string series = "S" + std::to_string(t / 10);
        const std::string type = "Type " + std::to_string(t);
        const std::string table = "Maker_" + series + "_Type_" + std::to_string(t);
        Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('Maker " + std::to_string(t / 100) + "','" +
                    series + "','" + type + "','" + table + "')");
        Run(db, "Create TABLE " + table + kModuleTable);
        Run(db, "Create TABLE " + table + kTermTable);
        for (int m = 0; m < modules; ++m) {
            const std::string code = "MX-" + std::to_string(t) + "-" + std::to_string(m);
            Run(db, "INSERT INTO " + table + " VALUES ('" + code +
                        "','16','DI','16 digital inputs, 24VDC sink','24VDC 4mA')");
            for (int s = 1; s <= terminals; ++s) {
                Run(db, "INSERT INTO " + table + "_data VALUES ('" + code + "'," +
                            std::to_string(s) + ",'" + std::to_string(s) + "','I0." +
                            std::to_string(s) + "','digital input channel')");
            }
        }
    }
    Run(db, "COMMIT");
    return path;
}

struct PlainEntry {
    std::string manufacturer, series, type, code, points, moduleType, description, rating;
};

std::string Trim(const unsigned char* text) {
    std::string s = text ? reinterpret_cast<const char*>(text) : "";
    s.erase(0, s.find_first_not_of(' '));
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
}

std::string Column(sqlite3_stmt* statement, int i) {
    const auto* text = sqlite3_column_text(statement, i);
    return text ? reinterpret_cast<const char*>(text) : "";
}

// The baseline: the same rows, read in one pass with plain sqlite3 calls.
size_t PlainLoad(sqlite3* db, std::vector<PlainEntry>& entries) {
    entries.clear();
    sqlite3_stmt* types = nullptr;
    sqlite3_prepare_v2(db, "SELECT * FROM PLC_MANUFACTURER", -1, &types, nullptr);
    while (sqlite3_step(types) == SQLITE_ROW) {
        PlainEntry base{Trim(sqlite3_column_text(types, 0)),
                        Trim(sqlite3_column_text(types, 1)),
                        Trim(sqlite3_column_text(types, 2)),
                        "",
                        "",
                        "",
                        "",
                        ""};
        const std::string table = Trim(sqlite3_column_text(types, 3));
        sqlite3_stmt* modules = nullptr;
        sqlite3_prepare_v2(db, ("SELECT * FROM " + table).c_str(), -1, &modules, nullptr);
        while (sqlite3_step(modules) == SQLITE_ROW) {
            PlainEntry& e = entries.emplace_back(base);
            e.code = Column(modules, 0);
            e.points = Column(modules, 1);
            e.moduleType = Column(modules, 2);
            e.description = Column(modules, 3);
            e.rating = Column(modules, 4);
        }
        sqlite3_finalize(modules);
    }
    sqlite3_finalize(types);
    return entries.size();
}

// CPU time of this thread: the machine is shared, and wall time would count the time other
// processes held the processor.
double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename F>
double BestSeconds(int runs, F&& body) {
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        const double start = ThreadSeconds();
        body();
        best = std::min(best, ThreadSeconds() - start);
    }
    return best;
}

void LoadLibraryFigure(const std::filesystem::path& dir) {
    const std::string path = MakeLibrary(dir, "load.db", 1000, 20, 0);
    CPlcLib lib;
    sqlite3* plain = nullptr;
    if (!lib.Open(path) ||
        sqlite3_open_v2(path.c_str(), &plain, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        std::exit(1);
    }
    std::vector<PlainEntry> entries;
    double ours = 1e30, baseline = 1e30;
    for (int round = 0; round < 10; ++round) {  // interleaved, so both see the same cache
        ours = std::min(ours, BestSeconds(1, [&] { lib.LoadLibrary(); }));
        baseline = std::min(baseline, BestSeconds(1, [&] { PlainLoad(plain, entries); }));
    }
    sqlite3_close(plain);
    if (lib.Entries().size() != 20000 || entries.size() != 20000) {
        std::fprintf(stderr, "bench_plclib: loaded %zu and %zu entries, expected 20000\n",
                     lib.Entries().size(), entries.size());
        std::exit(1);
    }
    std::printf("LoadLibrary, 1000 tables / 20000 modules: %.1f ms (thread CPU time, best of 10)\n",
                ours * 1e3);
    std::printf("baseline (plain sqlite3, one pass):       %.1f ms\n", baseline * 1e3);
    std::printf("ratio LoadLibrary / baseline: %.2f (goal <= 1.50)\n\n", ours / baseline);
}

void LoadTerminalsFigure(const std::filesystem::path& dir) {
    std::printf("LoadTerminals of one module (16 rows), by module-table size (CPU time):\n");
    double smallest = 0;
    for (int modules : {10, 100, 1000}) {
        const std::string path =
            MakeLibrary(dir, "terms" + std::to_string(modules) + ".db", 1, modules, 16);
        CPlcLib lib;
        lib.Open(path);
        const std::string code = "MX-0-" + std::to_string(modules / 2);
        const int runs = 200;
        const double seconds = BestSeconds(5, [&] {
            for (int i = 0; i < runs; ++i) {
                CPlcPartData entry;
                lib.LoadTerminals("Maker 0", "S0", "Type 0", code, entry);
                if (entry.terminals.size() != 16) {
                    std::exit(1);
                }
            }
        });
        const double each = seconds / runs * 1e6;
        if (modules == 10) {
            smallest = each;
        }
        std::printf("  %5d modules (%6d terminal rows): %7.1f us   ratio vs 10 modules: %.2f\n",
                    modules, modules * 16, each, each / smallest);
    }
    plcdb::Connection db;
    std::string error;
    db.Open((dir / "terms1000.db").string(), error);
    std::printf("  plan: %s", db.QueryPlan("Select * from Maker_S0_Type_0_data where "
                                           "CODE='MX-0-500'",
                                           error)
                                  .c_str());
}

}  // namespace

int main() {
    const auto dir = std::filesystem::temp_directory_path() / "bench_plclib";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    LoadLibraryFigure(dir);
    LoadTerminalsFigure(dir);
    std::filesystem::remove_all(dir);
    return 0;
}
