#include "EditorTestSupport.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "files/TextFile.h"

namespace libedit_test {

std::vector<std::string> SplitPath(const std::string& path) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (true) {
        const size_t slash = path.find('/', start);
        parts.push_back(path.substr(start, slash - start));
        if (slash == std::string::npos) {
            return parts;
        }
        start = slash + 1;
    }
}

std::string ScratchRoot() {
    std::error_code ec;
    if (std::filesystem::is_directory("/dev/shm", ec) && access("/dev/shm", W_OK) == 0) {
        return "/dev/shm";
    }
    return std::filesystem::temp_directory_path().string();
}

void EditorTest::SetUp() {
    dlg = OpenEditor();
    ASSERT_NE(dlg, nullptr);
}

void EditorTest::TearDown() {
    if (dlg) {
        dlg->plcLib.SetStatementObserver(nullptr);
    }
}

std::unique_ptr<CDlgPlcDataLibEdit> EditorTest::OpenEditor() {
    auto editor = std::make_unique<CDlgPlcDataLibEdit>();
    if (!editor->Create()) {
        ADD_FAILURE() << "the editor did not open " << editor->libPath;
        return nullptr;
    }
    editor->plcLib.SetStatementObserver([this](const std::string& statement, bool ok) {
        log.push_back({statement, ok});
    });
    editor->Refresh();
    log.clear();
    return editor;
}

std::vector<std::string> EditorTest::Statements() const {
    std::vector<std::string> all;
    for (const auto& entry : log) {
        all.push_back(entry.statement);
    }
    return all;
}

std::vector<std::string> EditorTest::Changes() const {
    std::vector<std::string> changes;
    for (const auto& entry : log) {
        if (files::UpperAscii(entry.statement.substr(0, 6)) != "SELECT") {
            changes.push_back(entry.statement);
        }
    }
    return changes;
}

void EditorTest::Select(const std::string& path) {
    ASSERT_TRUE(dlg->SelectPath(SplitPath(path))) << path;
}

bool EditorTest::Confirmed(int id) {
    env.host.messageAnswers.push_back(host::MsgResult::Ok);
    return dlg->OnMenuCommand(id);
}

bool EditorTest::Rename(const std::string& path, const std::string& newName) {
    dialog::TreeNode* node = dlg->FindPath(SplitPath(path));
    EXPECT_NE(node, nullptr) << path;
    if (node == nullptr) {
        return false;
    }
    dlg->SelectTreeNode(node);
    const int ids[] = {0, libedit::kCmdRenameManufacturer, libedit::kCmdRenameSeries,
                       libedit::kCmdRenameType, libedit::kCmdRenameModule};
    EXPECT_TRUE(dlg->OnMenuCommand(ids[node->Level()]));
    EXPECT_EQ(dlg->oldLabel, node->text);
    return dlg->EndLabelEdit(newName);
}

bool EditorTest::NewManufacturer(const std::string& name, const std::string& shortName) {
    dlg->SelectTreeNode(dlg->tree.Root());
    dlg->newManufacturerRunner = libedit::FillAndOk<CDlgNewManufacturer>([&](auto& d) {
        d.fullName = name;
        d.shortName = shortName;
    });
    return dlg->OnMenuCommand(libedit::kCmdNewManufacturer);
}

bool EditorTest::NewSeries(const std::string& manufacturer, const std::string& series) {
    Select(manufacturer);
    dlg->newSeriesRunner =
        libedit::FillAndOk<CDlgNewSeries>([&](auto& d) { d.seriesName = series; });
    return dlg->OnMenuCommand(libedit::kCmdNewSeries);
}

bool EditorTest::NewType(const std::string& manufacturerSeries, const std::string& type) {
    Select(manufacturerSeries);
    dlg->newSeriesStyleRunner =
        libedit::FillAndOk<CDlgNewSeriesStyle>([&](auto& d) { d.typeName = type; });
    return dlg->OnMenuCommand(libedit::kCmdNewType);
}

bool EditorTest::NewModule(const std::string& typePath, const std::string& code,
                           const std::string& points, const std::string& description) {
    Select(typePath);
    dlg->newModuleRunner = libedit::FillAndOk<CDlgNewModule>([&](auto& d) {
        d.code = code;
        d.points = points;
        d.moduleType = "DI";
        d.description = description;
        d.rating = "24V";
    });
    return dlg->OnMenuCommand(libedit::kCmdNewModule);
}

bool EditorTest::AppendTerm(const std::string& value, const std::string& desc,
                            const std::string& detail) {
    dlg->newTermInfoRunner = libedit::FillAndOk<CDlgNewTermInfo>([&](auto& d) {
        d.termValue = value;
        d.termDesc = desc;
        d.detailTermDesc = detail;
    });
    return dlg->OnMenuCommand(libedit::kCmdAppendTerm);
}

bool EditorTest::InsertTermBefore(const std::string& sequence, const std::string& value) {
    const int row = dlg->FindTermRow(sequence);
    EXPECT_GE(row, 0) << sequence;
    dlg->SelectTermRows({row});
    dlg->newTermInfoRunner = libedit::FillAndOk<CDlgNewTermInfo>([&](auto& d) {
        d.termValue = value;
        d.termDesc = "in";
        d.detailTermDesc = "inserted";
    });
    return dlg->OnMenuCommand(libedit::kCmdInsertTerm);
}

bool EditorTest::DeleteTerms(const std::vector<std::string>& sequences) {
    std::vector<int> rows;
    for (const auto& sequence : sequences) {
        rows.push_back(dlg->FindTermRow(sequence));
    }
    dlg->SelectTermRows(rows);
    return Confirmed(libedit::kCmdDeleteTerms);
}

plcdb::QueryResult EditorTest::Db(const std::string& sql) {
    plcdb::Connection connection;
    std::string error;
    EXPECT_TRUE(connection.Open(env.LibraryPath().string(), error)) << error;
    auto result = connection.Query(sql, error);
    EXPECT_TRUE(result.has_value()) << sql << ": " << error;
    connection.Close(error);
    return result ? *result : plcdb::QueryResult();
}

std::vector<std::string> EditorTest::DbTerms(const std::string& table, const std::string& code) {
    const auto rows = Db("SELECT SEQUENCE, TermValue FROM " + table + "_data WHERE CODE='" + code +
                         "' ORDER BY SEQUENCE");
    std::vector<std::string> terms;
    for (const auto& row : rows.rows) {
        terms.push_back(row[0] + ":" + row[1]);
    }
    return terms;
}

std::vector<std::string> EditorTest::ListTerms() const {
    std::vector<std::string> terms;
    for (int row = 0; row < dlg->termList.Count(); ++row) {
        terms.push_back(dlg->termList.Text(row, 0) + ":" + dlg->termList.Text(row, 1));
    }
    return terms;
}

std::vector<std::string> EditorTest::DbTypeRows() {
    const auto rows = Db("SELECT * FROM PLC_MANUFACTURER");
    std::vector<std::string> result;
    for (size_t i = 0; i < rows.RowCount(); ++i) {
        result.push_back(rows.Get(i, "MANUFACTURER") + "|" + rows.Get(i, "SERIES") + "|" +
                         rows.Get(i, "TYPE") + "|" + rows.Get(i, "TABLE_NAME"));
    }
    return result;
}

}  // namespace libedit_test
