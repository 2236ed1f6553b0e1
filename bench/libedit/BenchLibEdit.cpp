// bench_libedit: the library editor on a library of 1,000 module tables and 20,000 modules,
// each figure against the same statements run through plain sqlite3 calls in the same run.
//  1. Selecting a type node and a module row of 500 terminal rows (filling both lists).
//  2. Inserting a terminal row before row 1 of that module, and deleting it again.
// Goal: at most 1.5 times the baseline. Times are the thread's CPU time, best of several
// rounds, interleaved so that both sides see the same cache.
#include <sqlite3.h>

#include <algorithm>
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

const char* kModuleTable =
    "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),RATING "
    "CHAR(60),primary key(CODE))";
const char* kTermTable =
    "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
    "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))";
constexpr int kRows = 500;

void Run(plcdb::Connection& db, const std::string& sql) {
    std::string error;
    if (!db.Execute(sql, error)) {
        std::fprintf(stderr, "bench_libedit: %s: %s\n", sql.c_str(), error.c_str());
        std::exit(1);
    }
}

// 1,000 type rows of 20 modules; module MX-500-0 has kRows terminal rows.
void MakeLibrary(const std::string& path) {
    plcdb::Connection db;
    std::string error;
    if (!db.Create(path, error)) {
        std::fprintf(stderr, "bench_libedit: %s\n", error.c_str());
        std::exit(1);
    }
    Run(db, "BEGIN");
    for (int t = 0; t < 1000; ++t) {
        const std::string series = "S" + std::to_string(t / 10);
        const std::string table = "Maker_" + series + "_Type_" + std::to_string(t);
        Run(db, "INSERT INTO PLC_MANUFACTURER VALUES ('Maker " + std::to_string(t / 100) + "','" +
                    series + "','Type " + std::to_string(t) + "','" + table + "')");
        Run(db, "Create TABLE " + table + kModuleTable);
        Run(db, "Create TABLE " + table + kTermTable);
        for (int m = 0; m < 20; ++m) {
            const std::string code = "MX-" + std::to_string(t) + "-" + std::to_string(m);
            Run(db, "INSERT INTO " + table + " VALUES ('" + code +
                        "','16','DI','16 digital inputs, 24VDC sink','24VDC 4mA')");
        }
    }
    for (int s = 1; s <= kRows; ++s) {
        Run(db, "INSERT INTO Maker_S50_Type_500_data VALUES ('MX-500-0'," + std::to_string(s) +
                    ",'" + std::to_string(s) + "','I0." + std::to_string(s) +
                    "','digital input channel')");
    }
    Run(db, "COMMIT");
    db.Close(error);
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename F>
double Seconds(F&& body) {
    const double start = ThreadSeconds();
    body();
    return ThreadSeconds() - start;
}

// Runs statements through plain sqlite3 calls, as the baseline; every row is read into
// text records, as any caller keeping the rows would.
class Plain {
public:
    explicit Plain(const std::string& path) {
        if (sqlite3_open(path.c_str(), &db_) != SQLITE_OK) {
            std::exit(1);
        }
    }
    ~Plain() { sqlite3_close(db_); }
    size_t Run(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            std::fprintf(stderr, "bench_libedit: %s: %s\n", sql.c_str(), sqlite3_errmsg(db_));
            std::exit(1);
        }
        rows_.clear();
        int rc;
        while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
            auto& row = rows_.emplace_back();
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                const auto* text = sqlite3_column_text(statement, i);
                row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
            }
        }
        sqlite3_finalize(statement);
        if (rc != SQLITE_DONE) {
            std::fprintf(stderr, "bench_libedit: %s: %s\n", sql.c_str(), sqlite3_errmsg(db_));
            std::exit(1);
        }
        return rows_.size();
    }

private:
    sqlite3* db_ = nullptr;
    std::vector<std::vector<std::string>> rows_;
};

void Report(const char* what, double ours, double baseline) {
    std::printf("%s: %.2f ms, plain sqlite3 %.2f ms, ratio %.2f (goal <= 1.5)\n", what, ours * 1e3,
                baseline * 1e3, ours / baseline);
}

}  // namespace

int main() {
    const auto dir =
        std::filesystem::temp_directory_path() / ("qv_bench_libedit_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir / "PLC");
    setenv("ZANDRIX_LOCAL_DIR", dir.c_str(), 1);
    const std::string path = (dir / "PLC" / "QvPLC.db").string();
    MakeLibrary(path);
    bench::QuietHost quiet("bench_libedit");
    host::ScopedHost scoped(quiet);

    CDlgPlcDataLibEdit dlg;
    dlg.libPath = path;
    if (!dlg.Create()) {
        return 1;
    }
    dlg.Refresh();
    const std::vector<std::string> typePath = {"Maker 5", "S50", "Type 500"};
    const std::string table = "Maker_S50_Type_500";
    Plain plain(path);

    // 1. Select the type, then the module row: the module list from memory, the terminal
    // rows read from the file (the editor keeps them afterwards, so each round forgets them).
    double selectOurs = 1e30, selectPlain = 1e30;
    for (int round = 0; round < 50; ++round) {
        for (const auto& entry : dlg.plcLib.Entries()) {
            entry->marker = 0;
        }
        selectOurs = std::min(selectOurs, Seconds([&] {
                                  dlg.SelectPath(typePath);
                                  dlg.SelectModuleRow(0);
                              }));
        selectPlain =
            std::min(selectPlain, Seconds([&] {
                         plain.Run("Select * from PLC_MANUFACTURER");
                         plain.Run("Select * from " + table + "_data where CODE='MX-500-0'");
                     }));
    }
    if (dlg.termList.Count() != kRows) {
        std::fprintf(stderr, "bench_libedit: %d terminal rows shown\n", dlg.termList.Count());
        return 1;
    }
    Report("select type and module (500 rows)", selectOurs, selectPlain);

    // 2. Insert before row 1 and delete it again.
    dlg.newTermInfoRunner = libedit::FillAndOk<CDlgNewTermInfo>([](CDlgNewTermInfo& d) {
        d.termValue = "N";
        d.termDesc = "new";
        d.detailTermDesc = "inserted";
    });
    const auto shiftUp = [&] {
        for (int n = kRows; n >= 1; --n) {
            plain.Run("UPDATE " + table + "_data SET SEQUENCE=" + std::to_string(n + 1) +
                      " WHERE CODE='MX-500-0' AND SEQUENCE = " + std::to_string(n));
        }
        plain.Run("INSERT INTO " + table + "_data VALUES ('MX-500-0',1,'N','new','inserted')");
    };
    const auto shiftDown = [&] {
        plain.Run("DELETE FROM " + table + "_data WHERE CODE='MX-500-0' AND SEQUENCE=1");
        for (int n = 1; n <= kRows; ++n) {
            plain.Run("UPDATE " + table + "_data SET SEQUENCE=" + std::to_string(n) +
                      " WHERE CODE='MX-500-0' AND SEQUENCE = " + std::to_string(n + 1));
        }
    };
    double insertOurs = 1e30, insertPlain = 1e30, deleteOurs = 1e30, deletePlain = 1e30;
    for (int round = 0; round < 3; ++round) {
        dlg.SelectTermRows({dlg.FindTermRow("1")});
        insertOurs = std::min(insertOurs, Seconds([&] {
                                  if (!dlg.OnMenuCommand(libedit::kCmdInsertTerm)) {
                                      std::exit(1);
                                  }
                              }));
        dlg.SelectTermRows({dlg.FindTermRow("1")});
        deleteOurs = std::min(deleteOurs, Seconds([&] {
                                  if (!dlg.OnMenuCommand(libedit::kCmdDeleteTerms)) {
                                      std::exit(1);
                                  }
                              }));
        insertPlain = std::min(insertPlain, Seconds(shiftUp));
        deletePlain = std::min(deletePlain, Seconds(shiftDown));
    }
    Report("insert before row 1 of 500", insertOurs, insertPlain);
    Report("delete row 1 of 501", deleteOurs, deletePlain);
    dlg.OnClose();
    std::filesystem::remove_all(dir);
    return 0;
}
