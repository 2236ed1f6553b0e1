// The walk of an import: manufacturers and types, then the module tables, then modules and
// terminal rows. Each target table is read once into a set of its keys (compared without
// regard to case, as the engine compares), and every row added goes into that set, so a
// source that repeats a key adds it once.
#include <map>
#include <set>

#include "host/Host.h"
#include "libedit/DlgDbImport.h"
#include "libedit/LibEditCommon.h"
#include "plclib/PlcLib.h"
#include "plclib/TimeStamp.h"

namespace {

constexpr size_t kFieldLimit = 60;

std::string Lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

std::string Underscored(std::string name) {
    for (char& c : name) {
        if (c == '-') {
            c = '_';
        }
    }
    return name;
}

size_t CodePoints(const std::string& text) {
    size_t count = 0;
    for (unsigned char c : text) {
        count += (c & 0xC0) != 0x80 ? 1 : 0;
    }
    return count;
}

// Why the values cannot be written as read, or empty when they can.
std::string Unwritable(std::initializer_list<const std::string*> values) {
    for (const std::string* value : values) {
        if (plcdb::HasQuote(*value)) {
            return "\"" + *value + "\" holds a quote";
        }
        if (CodePoints(*value) > kFieldLimit) {
            return "\"" + *value + "\" is longer than 60 characters";
        }
    }
    return {};
}

bool HasColumns(const plcdb::QueryResult& table, std::initializer_list<const char*> names,
                std::string& missing) {
    for (const char* name : names) {
        if (table.Column(name) < 0) {
            missing = name;
            return false;
        }
    }
    return true;
}

}  // namespace

struct CDlgDbImport::Run {
    CDlgDbImport& dialog;
    CPlcLib& lib;
    std::unique_ptr<plcdb::ITableSource> source{};
    plcdb::QueryResult types{};
    std::vector<std::string> newTables{};   // source spelling
    std::set<std::string> createdTables{};  // lower-case target names made in this run
    std::set<std::string> walkedTables{};

    libedit::ImportReport& report() { return dialog.report; }
    bool dry() const { return dialog.dryRun; }

    bool Write(const std::string& statement) { return dry() || lib.Execute(statement); }

    void Tell(const std::string& text) {
        dialog.failure = text;
        libedit::Tell(text);
    }

    bool Connect() {
        if (!lib.IsOpen() && !lib.Open(dialog.targetPath)) {
            Tell("连接QvPlc.mdb数据库发生错误!");
            return false;
        }
        std::string error;
        source = dialog.openSource(dialog.sourcePath, error);
        if (!source) {
            host::Print(dialog.sourcePath + ": " + error + "\n");
            Tell("连接ace_plc.mdb数据库发生错误!");
            return false;
        }
        std::string missing;
        if (!source->ReadTable("PLC_MANUFACTURER", types, error)) {
            host::Print(dialog.sourcePath + ": " + error + "\n");
            Tell("连接ace_plc.mdb数据库发生错误!");
            return false;
        }
        if (!HasColumns(types, {"MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"}, missing)) {
            host::Print(dialog.sourcePath + ": PLC_MANUFACTURER has no column " + missing + "\n");
            Tell("连接ace_plc.mdb数据库发生错误!");
            return false;
        }
        return lib.Query("Select * from PLC_MANUFACTURER where 1=0").has_value() &&
               lib.Query("Select * from MANUFACTURER_Simple where 1=0").has_value();
    }

    bool Manufacturers() {
        if (types.Empty()) {
            Tell("数据库ace_plc.mdb中的PLC_MANUFACTURER表为空!");
            return false;
        }
        std::set<std::string> plannedTypes;  // lower-case "_" names added in a dry run
        std::set<std::string> plannedShort;
        for (size_t row = 0; row < types.RowCount(); ++row) {
            const std::string& m = types.Get(row, "MANUFACTURER");
            const std::string& s = types.Get(row, "SERIES");
            const std::string& t = types.Get(row, "TYPE");
            const std::string& name = types.Get(row, "TABLE_NAME");
            const std::string why = Unwritable({&m, &s, &t, &name});
            if (!why.empty()) {
                report().skipped.push_back("type row " + m + " / " + s + " / " + t + ": " + why);
                continue;
            }
            const std::string lookup = Underscored(name);
            auto found =
                lib.Query("Select * from PLC_MANUFACTURER where TABLE_NAME='" + lookup + "'");
            if (!found) {
                return false;
            }
            if (found->Empty() && plannedTypes.insert(Lower(lookup)).second) {
                if (!AddType(m, s, t, name)) {
                    return false;
                }
            } else if (!name.empty()) {
                report().skipped.push_back("type row " + m + " / " + s + " / " + t + " (" + name +
                                           "): present");
            }
            if (!ShortName(m, plannedShort)) {
                return false;
            }
        }
        return true;
    }

    bool AddType(const std::string& m, const std::string& s, const std::string& t,
                 const std::string& name) {
        bool tableKnown = false;
        if (name.find('-') != std::string::npos) {
            // A row stored by an earlier import keeps the "-"; its table is already there.
            auto earlier =
                lib.Query("Select * from PLC_MANUFACTURER where TABLE_NAME='" + name + "'");
            tableKnown = earlier && !earlier->Empty();
            if (tableKnown) {
                report().skipped.push_back(
                    "type row " + m + " / " + s + " / " + t + " (" + name +
                    "): added again, a table name with \"-\" is looked up as " + Underscored(name));
            }
        }
        if (!Write("INSERT INTO PLC_MANUFACTURER (MANUFACTURER,SERIES,TYPE,TABLE_NAME) VALUES ('" +
                   m + "','" + s + "','" + t + "','" + name + "')")) {
            return false;
        }
        report().types.push_back(m + " / " + s + " / " + t + " (" + name + ")");
        if (!name.empty() && !tableKnown) {
            newTables.push_back(name);
        }
        return true;
    }

    bool ShortName(const std::string& m, std::set<std::string>& planned) {
        auto found = lib.Query("Select * from MANUFACTURER_Simple where MANUFACTURER='" + m + "'");
        if (!found) {
            return false;
        }
        if (!found->Empty() || !planned.insert(Lower(m)).second) {
            return true;
        }
        if (!Write("INSERT INTO Manufacturer_Simple VALUES ('" + m + "','')")) {
            Tell("数据库错误：插入厂家简称表出错！");
            return false;
        }
        report().manufacturers.push_back(m);
        return true;
    }

    bool CreateTables() {
        for (const std::string& name : newTables) {
            const std::string table = Underscored(name);
            if (!createdTables.insert(Lower(table)).second) {
                continue;
            }
            if (!Write("Create TABLE " + table +
                       "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION "
                       "CHAR(60),RATING CHAR(60),primary key(CODE))") ||
                !Write("Create TABLE " + table +
                       "_data (CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue "
                       "CHAR(60),TERMDESC CHAR(60),DETAILTERMDESC MEMO,primary "
                       "key(CODE,SEQUENCE))")) {
                Tell("创建表对应的模块信息表或模块端口信息表出现错误!");
                return false;
            }
            report().tables.push_back(table);
        }
        return true;
    }

    // The target table's rows; empty for a table this dry run would create.
    bool Target(const std::string& statement, const std::string& table, plcdb::QueryResult& out,
                const std::string& failure) {
        if (dry() && createdTables.count(Lower(table)) != 0) {
            out = {};
            return true;
        }
        auto rows = lib.Query(statement);
        if (!rows) {
            Tell(failure);
            return false;
        }
        out = std::move(*rows);
        return true;
    }

    // 0 done, 1 a table could not be opened (reported), 2 a row could not be added.
    int Modules(const std::string& name) {
        const std::string table = Underscored(name);
        if (!walkedTables.insert(Lower(table)).second) {
            return 0;
        }
        plcdb::QueryResult sourceRows;
        plcdb::QueryResult targetRows;
        std::string error;
        if (!source->ReadTable(name, sourceRows, error)) {
            host::Print(dialog.sourcePath + ": " + error + "\n");
            Tell(libedit::Format2("打开ace_plc.mdb中的模块信息表%s出现错误!", name, ""));
            return 1;
        }
        if (!Target("Select * from " + table, table, targetRows,
                    libedit::Format2("1打开QvPlc.mdb中的模块信息表%s出现错误!", table, ""))) {
            return 1;
        }
        std::map<std::string, size_t> present;
        for (size_t row = 0; row < targetRows.RowCount(); ++row) {
            present.emplace(Lower(targetRows.Get(row, "CODE")), row);
        }
        static const char* const kFields[] = {"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"};
        Batch batch(*this);
        for (size_t row = 0; row < sourceRows.RowCount(); ++row) {
            std::string values[5];
            for (int i = 0; i < 5; ++i) {
                values[i] = sourceRows.Get(row, kFields[i]);
            }
            const std::string why =
                Unwritable({&values[0], &values[1], &values[2], &values[3], &values[4]});
            if (!why.empty()) {
                report().skipped.push_back("module " + table + ": " + values[0] + ": " + why);
                continue;
            }
            auto it = present.find(Lower(values[0]));
            if (it != present.end()) {
                NotePresent(table, values, targetRows, it->second);
                continue;
            }
            if (!Write("INSERT INTO " + table + " VALUES ('" + values[0] + "','" + values[1] +
                       "','" + values[2] + "','" + values[3] + "','" + values[4] + "')")) {
                return 2;
            }
            present.emplace(Lower(values[0]), std::string::npos);
            report().modules.push_back(table + ": " + values[0]);
        }
        return Terminals(name, table);
    }

    void NotePresent(const std::string& table, const std::string (&values)[5],
                     const plcdb::QueryResult& targetRows, size_t row) {
        static const char* const kFields[] = {"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"};
        if (row != std::string::npos) {
            for (int i = 1; i < 5; ++i) {
                if (!plcdb::EqualsIgnoreCase(targetRows.Get(row, kFields[i]), values[i])) {
                    report().skipped.push_back("module " + table + ": " + values[0] +
                                               ": present with other values, the library's kept");
                    return;
                }
            }
        }
        ++report().modulesPresent;
    }

    int Terminals(const std::string& name, const std::string& table) {
        plcdb::QueryResult sourceRows;
        plcdb::QueryResult targetRows;
        std::string error;
        if (!source->ReadTable(name + "_data", sourceRows, error)) {
            host::Print(dialog.sourcePath + ": " + error + "\n");
            Tell(libedit::Format2("打开数据库ace_plc.mdb中的表%s_data 出现错误!", name, ""));
            return 1;
        }
        if (!Target("Select CODE,SEQUENCE from " + table + "_data", table, targetRows,
                    libedit::Format2("打开数据库QvPlc.mdb中的表%s_data 出现错误!", table, ""))) {
            return 1;
        }
        std::set<std::string> present;
        for (size_t row = 0; row < targetRows.RowCount(); ++row) {
            present.insert(Lower(targetRows.Get(row, "CODE")) + '\n' +
                           targetRows.Get(row, "SEQUENCE"));
        }
        for (size_t row = 0; row < sourceRows.RowCount(); ++row) {
            const std::string& code = sourceRows.Get(row, "Code");
            const std::string& sequence = sourceRows.Get(row, "SEQUENCE");
            const std::string& attributes = sourceRows.Get(row, "ATTRIBUTES");
            const std::string value = libedit::AttributeValue(attributes, "TERM_=");
            const std::string desc = libedit::AttributeValue(attributes, "TERMDESC_=");
            std::string why = Unwritable({&code, &value, &desc});
            if (why.empty() && (sequence.empty() ||
                                sequence.find_first_not_of("-0123456789") != std::string::npos)) {
                why = "sequence \"" + sequence + "\" is not a number";
            }
            if (!why.empty()) {
                report().skipped.push_back("terminal row " + table + "_data: " + code + " " +
                                           sequence + ": " + why);
                continue;
            }
            if (!present.insert(Lower(code) + '\n' + sequence).second) {
                ++report().terminalRowsPresent;
                continue;
            }
            if (!Write("INSERT INTO " + table +
                       "_data (CODE,SEQUENCE,TERMVALUE,TERMDESC) VALUES ('" + code + "'," +
                       sequence + ",'" + value + "','" + desc + "')")) {
                return 2;
            }
            ++report().terminalRows;
        }
        return 0;
    }

    bool ModulesAndTerminals() {
        CDlgImportProgress& progress = dialog.progress;
        progress.Create();
        progress.SetRange(0, static_cast<int>(types.RowCount()));
        for (size_t row = 0; row < types.RowCount(); ++row) {
            const std::string& name = types.Get(row, "TABLE_NAME");
            if (!name.empty() && !plcdb::HasQuote(name) && CodePoints(name) <= kFieldLimit) {
                const int result = Modules(name);
                if (result != 0) {
                    progress.Close();
                    if (result == 2) {
                        Tell("导入模块信息和模块端口信息出现错误!");
                    }
                    return false;
                }
            }
            progress.SetPos(static_cast<int>(row + 1));
        }
        progress.SetText("导入完成!");
        if (dialog.pauseAfterDone) {
            dialog.pauseAfterDone();
        }
        progress.Close();
        return true;
    }

    // The rows of one table are written in one engine transaction for speed; it is committed
    // whatever happens, so rows added before a failure stay added.
    struct Batch {
        Run& run;
        explicit Batch(Run& owner) : run(owner) {
            if (!run.dry()) {
                run.lib.Execute("BEGIN");
            }
        }
        ~Batch() {
            if (!run.dry()) {
                run.lib.Execute("COMMIT");
            }
        }
    };
};

bool CDlgDbImport::Import() {
    Run run{*this, plcLib_};
    if (!run.Connect()) {
        run.Tell("导入数据库中数据库连接出现错误!");
        return false;
    }
    if (!run.Manufacturers() || !run.CreateTables() || !run.ModulesAndTerminals()) {
        return false;
    }
    if (!dryRun) {
        plcdb::StampLibraryChange();
    }
    return true;
}
