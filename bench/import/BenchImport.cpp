// Importing a generated ace_plc.mdb (1,000 types, 20,000 modules, 320,000 terminal rows; an
// argument scales the type count) into an empty library, against the baseline of mdb-export
// of the same tables with the same rows inserted through plain sqlite3 calls, one transaction
// per table as the import writes them. The source is written by the test Jet writer.
#include <sqlite3.h>
#include <sys/resource.h>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "libedit/DlgDbImport.h"
#include "plclib/Engine.h"
#include "plclib/PlcLib.h"

namespace {

namespace fs = std::filesystem;
constexpr int kModulesPerType = 20;
constexpr int kTermsPerModule = 16;

std::string Table(int type) {
    return "T" + std::to_string(type);
}

void WriteTables(const fs::path& path, int types) {
    std::ofstream out(path);
    out << R"({"tables":[{"name":"PLC_MANUFACTURER","columns":[{"name":"MANUFACTURER","type":"text"},)"
           R"({"name":"SERIES","type":"text"},{"name":"TYPE","type":"text"},{"name":"TABLE_NAME","type":"text"}],"rows":[)";
    for (int t = 0; t < types; ++t) {
        out << (t ? "," : "") << "[\"Maker " << t / 100 << "\",\"S" << t / 10 << "\",\"Type " << t
            << "\",\"" << Table(t) << "\"]";
    }
    out << "]}";
    for (int t = 0; t < types; ++t) {
        out << R"(,{"name":")" << Table(t)
            << R"(","columns":[{"name":"CODE","type":"text"},{"name":"POINTS","type":"text"},)"
               R"({"name":"TYPE","type":"text"},{"name":"DESCRIPTION","type":"text"},{"name":"RATING","type":"text"}],"rows":[)";
        for (int m = 0; m < kModulesPerType; ++m) {
            out << (m ? "," : "") << "[\"M" << t << "-" << m << "\",\"16\",\"DI\",\"模块 " << m
                << "\",\"24V\"]";
        }
        out << R"(]},{"name":")" << Table(t)
            << R"(_data","columns":[{"name":"Code","type":"text"},{"name":"SEQUENCE","type":"long"},)"
               R"({"name":"ATTRIBUTES","type":"memo"}],"rows":[)";
        for (int m = 0; m < kModulesPerType; ++m) {
            for (int s = 1; s <= kTermsPerModule; ++s) {
                out << (m || s > 1 ? "," : "") << "[\"M" << t << "-" << m << "\"," << s
                    << ",\"WIRE=1;TERM_=X" << s << ";TERMDESC_=输入 " << s << ";\"]";
            }
        }
        out << "]}";
    }
    out << "]}\n";
}

// One line of mdb-export's CSV.
std::vector<std::string> SplitCsv(const std::string& line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back() += '"';
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

std::vector<std::vector<std::string>> Export(const fs::path& mdb, const std::string& table) {
    const std::string command = "mdb-export '" + mdb.string() + "' '" + table + "'";
    FILE* pipe = popen(command.c_str(), "r");
    std::vector<std::vector<std::string>> rows;
    char* line = nullptr;
    size_t size = 0;
    bool header = true;
    while (getline(&line, &size, pipe) > 0) {
        std::string text(line);
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
            text.pop_back();
        }
        if (!header) {
            rows.push_back(SplitCsv(text));
        }
        header = false;
    }
    free(line);
    pclose(pipe);
    return rows;
}

std::string Attribute(const std::string& text, const std::string& key) {
    const size_t at = text.find(key);
    if (at == std::string::npos) {
        return {};
    }
    const size_t end = text.find(';', at + key.size());
    return text.substr(at + key.size(), end == std::string::npos ? end : end - at - key.size());
}

void Exec(sqlite3* db, const std::string& sql) {
    char* error = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
        std::fprintf(stderr, "bench_import: %s: %s\n", sql.c_str(), error);
        std::exit(1);
    }
}

void Insert(sqlite3* db, const std::string& sql, const std::vector<std::vector<std::string>>& rows,
            const std::function<std::vector<std::string>(const std::vector<std::string>&)>& map) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    Exec(db, "BEGIN");
    for (const auto& row : rows) {
        const std::vector<std::string> values = map(row);
        for (size_t i = 0; i < values.size(); ++i) {
            sqlite3_bind_text(statement, static_cast<int>(i + 1), values[i].c_str(), -1,
                              SQLITE_TRANSIENT);
        }
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }
    Exec(db, "COMMIT");
    sqlite3_finalize(statement);
}

double Baseline(const fs::path& mdb, const fs::path& target) {
    const auto start = std::chrono::steady_clock::now();
    sqlite3* db = nullptr;
    sqlite3_open(target.c_str(), &db);
    Exec(db,
         "CREATE TABLE PLC_MANUFACTURER(MANUFACTURER TEXT,SERIES TEXT,TYPE TEXT,TABLE_NAME TEXT)");
    Exec(db, "CREATE TABLE MANUFACTURER_Simple(MANUFACTURER TEXT,MFG TEXT)");
    const auto types = Export(mdb, "PLC_MANUFACTURER");
    Insert(db, "INSERT INTO PLC_MANUFACTURER VALUES (?,?,?,?)", types,
           [](const auto& row) { return row; });
    for (const auto& type : types) {
        const std::string table = type[3];
        Exec(db, "CREATE TABLE " + table +
                     "(CODE TEXT NOT NULL,POINTS TEXT,TYPE TEXT,DESCRIPTION TEXT,RATING TEXT,"
                     "PRIMARY KEY(CODE))");
        Exec(db, "CREATE TABLE " + table +
                     "_data(CODE TEXT NOT NULL,SEQUENCE INT NOT NULL,TermValue TEXT,TERMDESC "
                     "TEXT,DETAILTERMDESC TEXT,PRIMARY KEY(CODE,SEQUENCE))");
        Insert(db, "INSERT INTO " + table + " VALUES (?,?,?,?,?)", Export(mdb, table),
               [](const auto& row) { return row; });
        Insert(db,
               "INSERT INTO " + table + "_data (CODE,SEQUENCE,TermValue,TERMDESC) VALUES (?,?,?,?)",
               Export(mdb, table + "_data"), [](const auto& row) {
                   return std::vector<std::string>{row[0], row[1], Attribute(row[2], "TERM_="),
                                                   Attribute(row[2], "TERMDESC_=")};
               });
    }
    sqlite3_close(db);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
    const int types = argc > 1 ? std::atoi(argv[1]) : 1000;
    const fs::path dir = fs::temp_directory_path() / ("bench_import." + std::to_string(getpid()));
    fs::create_directories(dir / "x");
    const fs::path mdb = dir / "x" / "ace_plc.mdb";
    WriteTables(dir / "tables.json", types);
    const std::string write = std::string("'") + QV_JETWRITE + "' '" +
                              (dir / "tables.json").string() + "' '" + mdb.string() +
                              "' >/dev/null";
    if (std::system(write.c_str()) != 0) {
        std::fprintf(stderr, "bench_import: the Jet writer failed\n");
        return 1;
    }
    fs::remove(dir / "tables.json");

    std::string error;
    {
        plcdb::Connection created;
        if (!created.Create((dir / "lib.db").string(), error)) {
            std::fprintf(stderr, "bench_import: %s\n", error.c_str());
            return 1;
        }
    }
    const auto start = std::chrono::steady_clock::now();
    CPlcLib lib;
    lib.Open((dir / "lib.db").string());
    CDlgDbImport import(lib);
    import.OnBrowse(mdb.string());
    import.askConfirmation = false;
    import.pauseAfterDone = nullptr;
    const bool done = import.OnOK();
    lib.Close();
    const double ours =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const double baseline = Baseline(mdb, dir / "plain.db");
    std::printf("import of %d types, %zu modules, %ld terminal rows: %s\n", types,
                import.report.modules.size(), import.report.terminalRows, done ? "done" : "FAILED");
    std::printf("import %.2f s, mdb-export + plain sqlite3 %.2f s, ratio %.2f (goal <= 1.5)\n",
                ours, baseline, ours / baseline);
    std::printf("peak memory of the import: %.1f MiB\n", usage.ru_maxrss / 1024.0);
    fs::remove_all(dir);
    return done ? 0 : 1;
}
