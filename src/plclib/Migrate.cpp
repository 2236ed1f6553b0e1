#include "plclib/Migrate.h"

#include <filesystem>

#include "plclib/LibrarySql.h"
#include "plclib/PlcLib.h"

namespace plcdb {
namespace {

struct TableSpec {
    const char* create;  // the text after the table name
    std::vector<const char*> columns;
    std::vector<bool> numeric;  // spliced bare
};

const TableSpec& ModuleSpec() {
    static const TableSpec layout{
        "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),"
        "RATING CHAR(60),primary key(CODE))",
        {"CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"},
        {false, false, false, false, false}};
    return layout;
}

const TableSpec& TerminalSpec() {
    static const TableSpec layout{
        "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),TERMDESC "
        "CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))",
        {"CODE", "SEQUENCE", "TermValue", "TERMDESC", "DETAILTERMDESC"},
        {false, true, false, false, false}};
    return layout;
}

bool IsInteger(const std::string& text) {
    size_t i = (!text.empty() && text[0] == '-') ? 1 : 0;
    if (i >= text.size() || text.size() > 10) {
        return false;
    }
    for (; i < text.size(); ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    return true;
}

class Converter {
public:
    Converter(ITableSource& source, Connection& db, MigrationReport& report)
        : source_(source), db_(db), report_(report) {}

    // Copies the rows of `from` into `into` with the given columns; false only when the
    // source table cannot be read at all.
    bool CopyRows(const std::string& from, const std::string& into,
                  const std::vector<const char*>& columns, const std::vector<bool>& numeric,
                  int& counter) {
        QueryResult rows;
        std::string error;
        if (!source_.ReadTable(from, rows, error)) {
            report_.problems.push_back(error);
            return false;
        }
        for (const char* column : columns) {
            if (rows.Column(column) < 0) {
                report_.problems.push_back("table " + from + " has no column " + column +
                                           "; it is left empty");
            }
        }
        for (size_t r = 0; r < rows.RowCount(); ++r) {
            if (InsertRow(rows, r, into, columns, numeric)) {
                ++counter;
            }
        }
        return true;
    }

private:
    bool InsertRow(const QueryResult& rows, size_t r, const std::string& into,
                   const std::vector<const char*>& columns, const std::vector<bool>& numeric) {
        std::string values;
        for (size_t c = 0; c < columns.size(); ++c) {
            const std::string& value = rows.Get(r, columns[c]);
            std::string why;
            if (HasQuote(value)) {
                why = "the value \"" + value + "\" contains a single quote";
            } else if (numeric[c] && !IsInteger(value)) {
                why = std::string(columns[c]) + " \"" + value + "\" is not a whole number";
            }
            if (!why.empty()) {
                return Problem(into, r, why);
            }
            values += (c ? "," : "") + (numeric[c] ? value : "'" + value + "'");
        }
        std::string error;
        if (!db_.Execute("INSERT INTO " + into + " VALUES (" + values + ")", error)) {
            return Problem(into, r, error);
        }
        return true;
    }

    bool Problem(const std::string& table, size_t row, const std::string& why) {
        report_.problems.push_back("table " + table + ", row " + std::to_string(row + 1) + ": " +
                                   why);
        return false;
    }

    ITableSource& source_;
    Connection& db_;
    MigrationReport& report_;
};

std::string FindTable(const std::vector<std::string>& names, const std::string& wanted) {
    for (const auto& name : names) {
        if (EqualsIgnoreCase(name, wanted)) {
            return name;
        }
    }
    return {};
}

// The distinct module tables named by PLC_MANUFACTURER, in row order.
std::vector<std::string> ModuleTables(ITableSource& source, std::string& error) {
    QueryResult rows;
    std::vector<std::string> tables;
    if (!source.ReadTable("PLC_MANUFACTURER", rows, error)) {
        return tables;
    }
    for (size_t r = 0; r < rows.RowCount(); ++r) {
        std::string name = rows.Get(r, "TABLE_NAME");
        name.erase(0, name.find_first_not_of(' '));
        name.erase(name.find_last_not_of(' ') + 1);
        if (!name.empty() && FindTable(tables, name).empty()) {
            tables.push_back(name);
        }
    }
    return tables;
}

bool Convert(ITableSource& source, Connection& db, const MigrationOptions& options,
             MigrationReport& report, std::string& error) {
    const auto names = source.TableNames();
    const auto tables = ModuleTables(source, error);
    Converter converter(source, db, report);
    if (!db.Execute("BEGIN", error) ||
        !converter.CopyRows("PLC_MANUFACTURER", "PLC_MANUFACTURER",
                            {"MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"},
                            {false, false, false, false}, report.typeRows)) {
        return false;
    }
    if (FindTable(names, "MANUFACTURER_Simple").empty()) {
        report.problems.push_back("the file has no table MANUFACTURER_Simple: no short names");
    } else {
        converter.CopyRows("MANUFACTURER_Simple", "MANUFACTURER_Simple", {"MANUFACTURER", "MFG"},
                           {false, false}, report.manufacturers);
    }
    for (size_t i = 0; i < tables.size(); ++i) {
        const std::string& table = tables[i];
        if (HasQuote(table)) {
            report.problems.push_back("table " + table + ": a name with a single quote");
            continue;
        }
        if (!db.Execute("Create TABLE " + table + ModuleSpec().create, error) ||
            !db.Execute("Create TABLE " + table + TerminalSpec().create, error)) {
            report.problems.push_back("table " + table + " cannot be created: " + error);
            continue;
        }
        ++report.tables;
        for (const auto* layout : {&ModuleSpec(), &TerminalSpec()}) {
            const std::string name = table + (layout == &ModuleSpec() ? "" : "_data");
            if (FindTable(names, name).empty()) {
                report.problems.push_back("PLC_MANUFACTURER names table " + name +
                                          ", which the file does not hold; it is left empty");
            } else {
                converter.CopyRows(name, name, layout->columns, layout->numeric,
                                   layout == &ModuleSpec() ? report.modules : report.terminals);
            }
        }
        if (options.progress) {
            options.progress(i + 1, tables.size());
        }
    }
    return db.Execute("COMMIT", error);
}

}  // namespace

bool MigrateLibrary(ITableSource& source, const std::string& target,
                    const MigrationOptions& options, MigrationReport& report, std::string& error) {
    namespace fs = std::filesystem;
    report = MigrationReport{};
    std::error_code ec;
    if (fs::exists(target, ec) && !options.force) {
        error = target + " already exists; give --force to replace it";
        return false;
    }
    if (FindTable(source.TableNames(), "PLC_MANUFACTURER").empty()) {
        error = "the file is no component library: it has no table PLC_MANUFACTURER";
        return false;
    }
    const auto built = BuildLibraryFile(
        target, {},
        [&](Connection& db, std::string& failure) {
            return Convert(source, db, options, report, failure);
        },
        error);
    return built == CreateResult::Created;
}

}  // namespace plcdb
