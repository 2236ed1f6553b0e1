#include "plclib/PlcLib.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>

#include "files/FileError.h"
#include "host/Host.h"

namespace plcdb {
namespace {

std::string Format(std::string_view format, std::string_view value) {
    std::string out(format);
    const auto at = out.find("%s");
    if (at != std::string::npos) {
        out.replace(at, 2, value);
    }
    return out;
}

}  // namespace

void ReportDatabaseError(std::string_view engineMessage) {
    host::ShowMessage(Format(kDatabaseErrorFormat, engineMessage), kMessageCaption,
                      host::MsgIcon::None);
}

bool HasQuote(std::string_view value) {
    return value.find('\'') != std::string_view::npos;
}

bool CheckValues(std::initializer_list<std::string_view> values) {
    for (std::string_view value : values) {
        if (HasQuote(value)) {
            ReportDatabaseError("the value \"" + std::string(value) +
                                "\" contains a single quote ('), which a name or value "
                                "cannot hold");
            return false;
        }
    }
    return true;
}

}  // namespace plcdb

namespace {

std::string_view TrimView(std::string_view text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) {
        ++begin;
    }
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) {
        --end;
    }
    return text.substr(begin, end - begin);
}

std::string Trim(std::string_view text) {
    return std::string(TrimView(text));
}

}  // namespace

CPlcLib::CPlcLib() = default;

CPlcLib::~CPlcLib() {
    Close();
}

bool CPlcLib::Open(const std::string& path) {
    std::error_code ec;
    const bool exists = std::filesystem::exists(path, ec);
    if (ec) {  // a name too long, a link loop, a folder without permission
        plcdb::ReportDatabaseError(files::ErrnoError(path, ec.value()).what());
        return false;
    }
    if (!exists) {
        host::Print("\n" + plcdb::Format("错误：PLC元件数据库文件%s不存在！", path) + "\n");
        return false;
    }
    Close();
    auto connection = std::make_unique<plcdb::Connection>();
    std::string error;
    if (!connection->Open(path, error)) {
        plcdb::ReportDatabaseError(error);
        return false;
    }
    connection_ = std::move(connection);
    path_ = path;
    return true;
}

bool CPlcLib::Close() {
    ForgetTableNames();
    if (!connection_) {
        return true;
    }
    std::string error;
    const bool closed = connection_->Close(error);
    connection_.reset();
    if (!closed) {
        host::ShowMessage(plcdb::Format("关闭数据库连接出现错误,错误信息:%s", error),
                          plcdb::kMessageCaption, host::MsgIcon::None);
    }
    return closed;
}

bool CPlcLib::IsOpen() const {
    return connection_ && connection_->IsOpen();
}

bool CPlcLib::EnsureOpen() {
    if (IsOpen()) {
        return true;
    }
    plcdb::ReportDatabaseError("the library is not open");
    return false;
}

bool CPlcLib::LoadLibrary() {
    entries_.clear();
    ForgetTableNames();  // a load reads the file afresh, whoever changed it
    if (!EnsureOpen()) {
        return false;
    }
    // The type rows are walked while the module tables are read, as one pass: the open
    // query also keeps the file's read lock for the whole load instead of once per table.
    std::string error;
    auto cursor = connection_->Select("Select * from PLC_MANUFACTURER", error);
    if (!cursor) {
        plcdb::ReportDatabaseError(error);
        return false;
    }
    const int m = cursor->Column("MANUFACTURER");
    const int s = cursor->Column("SERIES");
    const int t = cursor->Column("TYPE");
    const int n = cursor->Column("TABLE_NAME");
    bool anyRow = false;
    while (cursor->Next()) {
        anyRow = true;
        std::string manufacturer = Trim(cursor->TextView(m));
        if (manufacturer.empty()) {
            continue;
        }
        std::string series = Trim(cursor->TextView(s));
        std::string type = Trim(cursor->TextView(t));
        const std::string table = Trim(cursor->TextView(n));
        if (table.empty()) {
            entries_.push_back(std::make_unique<CPlcPartData>(std::move(manufacturer),
                                                              std::move(series), std::move(type)));
        } else {
            // A table that cannot be read was reported; its type shows without modules.
            AppendModules(manufacturer, series, type, table);
        }
    }
    if (!cursor->Error().empty()) {
        plcdb::ReportDatabaseError(cursor->Error());
        return false;
    }
    return anyRow;
}

bool CPlcLib::AppendModules(const std::string& manufacturer, const std::string& series,
                            const std::string& type, const std::string& table) {
    std::string error;
    auto cursor = connection_->Select("Select * from " + table, error);
    const size_t before = entries_.size();
    bool ok = true;
    if (cursor) {
        const int code = cursor->Column("CODE");
        const int points = cursor->Column("POINTS");
        const int moduleType = cursor->Column("TYPE");
        const int description = cursor->Column("DESCRIPTION");
        const int rating = cursor->Column("RATING");
        while (cursor->Next()) {
            auto& entry =
                *entries_.emplace_back(std::make_unique<CPlcPartData>(manufacturer, series, type));
            entry.code = cursor->TextView(code);
            entry.points = cursor->TextView(points);
            entry.moduleType = cursor->TextView(moduleType);
            entry.description = cursor->TextView(description);
            entry.rating = cursor->TextView(rating);
        }
        error = cursor->Error();
    }
    if (!cursor || !error.empty()) {
        plcdb::ReportDatabaseError(error);
        ok = false;
    }
    if (entries_.size() == before) {
        entries_.push_back(std::make_unique<CPlcPartData>(manufacturer, series, type));
    }
    return ok;
}

bool CPlcLib::LoadTerminals(const std::string& manufacturer, const std::string& series,
                            const std::string& type, const std::string& code, CPlcPartData& entry) {
    if (!EnsureOpen() || !plcdb::CheckValues({code})) {
        return false;
    }
    const std::string table = GetTableName(manufacturer, series, type);
    if (table.empty()) {
        return false;
    }
    std::string error;
    auto cursor =
        connection_->Select("Select * from " + table + "_data where CODE='" + code + "'", error);
    if (!cursor) {
        plcdb::ReportDatabaseError(error);
        return false;
    }
    const int sequence = cursor->Column("SEQUENCE");
    const int value = cursor->Column("TERMVALUE");
    const int desc = cursor->Column("TERMDESC");
    const int detail = cursor->Column("DETAILTERMDESC");
    while (cursor->Next()) {
        entry.terminals.push_back(std::make_unique<CPlcPartTermData>(
            cursor->Text(sequence), cursor->Text(value), cursor->Text(desc), cursor->Text(detail)));
    }
    if (!cursor->Error().empty()) {
        plcdb::ReportDatabaseError(cursor->Error());
        return false;
    }
    return true;
}

bool CPlcLib::Execute(const std::string& statement) {
    if (!EnsureOpen()) {
        return false;
    }
    ForgetTableNames();  // any statement may change PLC_MANUFACTURER
    std::string error;
    const bool done = connection_->Execute(statement, error);
    if (observer_) {
        observer_(statement, done);
    }
    if (!done) {
        plcdb::ReportDatabaseError(error);
        return false;
    }
    return true;
}

std::optional<plcdb::QueryResult> CPlcLib::Query(const std::string& statement) {
    if (!EnsureOpen()) {
        return std::nullopt;
    }
    std::string error;
    auto result = connection_->Query(statement, error);
    if (observer_) {
        observer_(statement, result.has_value());
    }
    if (!result) {
        plcdb::ReportDatabaseError(error);
    }
    return result;
}

bool CPlcLib::HasSeriesOrType(const std::string& query, int selector) {
    if (selector != 2 && selector != 3) {
        return false;
    }
    auto result = Query(query);
    if (!result || result->Empty()) {
        return false;
    }
    return !Trim(result->Get(0, selector == 2 ? "SERIES" : "TYPE")).empty();
}

namespace {

std::string TypeKey(std::string_view manufacturer, std::string_view series, std::string_view type) {
    std::string key;
    key.reserve(manufacturer.size() + series.size() + type.size() + 2);
    key.append(manufacturer).append(1, '\x1f').append(series).append(1, '\x1f').append(type);
    return key;
}

}  // namespace

bool CPlcLib::ReadTableNames() {
    std::string error;
    auto cursor = connection_->Select("Select * from PLC_MANUFACTURER", error);
    if (!cursor) {
        plcdb::ReportDatabaseError(error);
        return false;
    }
    const int m = cursor->Column("MANUFACTURER");
    const int s = cursor->Column("SERIES");
    const int t = cursor->Column("TYPE");
    const int n = cursor->Column("TABLE_NAME");
    std::unordered_map<std::string, std::string> names;
    while (cursor->Next()) {
        names.emplace(TypeKey(TrimView(cursor->TextView(m)), TrimView(cursor->TextView(s)),
                              TrimView(cursor->TextView(t))),
                      std::string(TrimView(cursor->TextView(n))));
    }
    if (!cursor->Error().empty()) {
        plcdb::ReportDatabaseError(cursor->Error());
        return false;
    }
    tableNames_ = std::move(names);
    tableNamesRead_ = true;
    return true;
}

std::string CPlcLib::GetTableName(const std::string& manufacturer, const std::string& series,
                                  const std::string& type) {
    if (!EnsureOpen()) {
        return {};
    }
    if (!tableNamesRead_ && !ReadTableNames()) {
        return {};
    }
    if (tableNames_.empty()) {
        ForgetTableNames();  // asked again next time, and said again
        host::ShowMessage("厂家表数据为空", plcdb::kMessageCaption, host::MsgIcon::None);
        return {};
    }
    const auto found = tableNames_.find(TypeKey(manufacturer, series, type));
    return found == tableNames_.end() ? std::string() : found->second;
}

bool CPlcLib::GetTableNames(const std::string& manufacturer, const std::string& series,
                            std::vector<std::string>& names) {
    names.clear();
    if (!plcdb::CheckValues({manufacturer, series})) {
        return false;
    }
    const std::string statement =
        series.empty()
            ? "Select TABLE_NAME FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + manufacturer + "'"
            : "Select * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + manufacturer +
                  "' AND SERIES='" + series + "'";
    auto result = Query(statement);
    if (!result) {
        return false;
    }
    for (size_t i = 0; i < result->RowCount(); ++i) {
        std::string name = Trim(result->Get(i, "TABLE_NAME"));
        if (name.empty()) {
            continue;
        }
        bool known = false;
        for (const auto& existing : names) {
            known = known || plcdb::EqualsIgnoreCase(existing, name);
        }
        if (!known) {
            names.push_back(std::move(name));
        }
    }
    return true;
}

std::string CPlcLib::GetShortName(const std::string& manufacturer) {
    if (!plcdb::CheckValues({manufacturer})) {
        return {};
    }
    auto result =
        Query("SELECT * FROM MANUFACTURER_Simple WHERE MANUFACTURER='" + manufacturer + "'");
    if (!result || result->Empty()) {
        return {};
    }
    return result->Get(0, "MFG");
}

bool CPlcLib::RenameCode(const std::string& table, const std::string& oldCode,
                         const std::string& newCode) {
    if (!plcdb::CheckValues({oldCode, newCode})) {
        return false;
    }
    return Execute("UPDATE " + table + " SET CODE='" + newCode + "' WHERE CODE='" + oldCode +
                   "'") &&
           Execute("UPDATE " + table + "_data SET CODE='" + newCode + "' WHERE CODE='" + oldCode +
                   "'");
}

bool CPlcLib::ShiftSequences(const std::string& table, const std::string& code,
                             const std::string& fromSequence, int lastSequence, int direction) {
    if (direction != 1 && direction != -1) {
        return false;
    }
    if (!plcdb::CheckValues({code})) {
        return false;
    }
    // Read as the number it starts with; text that is no number counts as 0.
    const int from = static_cast<int>(std::strtol(fromSequence.c_str(), nullptr, 10));
    const auto move = [&](int now, int next) {
        return Execute("UPDATE " + table + "_data SET SEQUENCE=" + std::to_string(next) +
                       " WHERE CODE='" + code + "' AND SEQUENCE = " + std::to_string(now));
    };
    if (direction == 1) {
        // Highest first: (CODE, SEQUENCE) is a key, so no two rows may meet on the way.
        for (int n = lastSequence; n >= from; --n) {
            if (!move(n, n + 1)) {
                return false;
            }
        }
    } else {
        for (int n = from; n <= lastSequence - 1; ++n) {
            if (!move(n + 1, n)) {
                return false;
            }
        }
    }
    return true;
}

namespace plcdb {

const CPlcPartData* FindModule(const std::vector<std::unique_ptr<CPlcPartData>>& entries,
                               std::string_view manufacturer, std::string_view series,
                               std::string_view type, std::string_view code) {
    for (const auto& entry : entries) {
        if (entry->manufacturer == manufacturer && entry->series == series && entry->type == type &&
            entry->code == code && !code.empty()) {
            return entry.get();
        }
    }
    return nullptr;
}

}  // namespace plcdb
