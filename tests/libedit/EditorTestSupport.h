// The library editor over a real scratch library (the drawing dialog's sample library, see
// tests/draw/DialogTestSupport.h), with every statement it runs logged, and helpers that
// answer its sub-dialogs and questions the way a user would.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../draw/DialogTestSupport.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "plclib/Engine.h"

namespace libedit_test {

struct Logged {
    std::string statement;
    bool succeeded = false;
};

// "M/S/T/CODE" split at '/'.
std::vector<std::string> SplitPath(const std::string& path);

// The scratch folder's parent: the machine's memory file system when it has one, since every
// step of the editor syncs the library and its stamp to the disk.
std::string ScratchRoot();

class EditorTest : public ::testing::Test {
public:
    void SetUp() override;
    void TearDown() override;

    // Opens a new editor on the library (as the first PlcDataLibEdit does) and logs it.
    std::unique_ptr<CDlgPlcDataLibEdit> OpenEditor();

    // Every statement logged since the last ClearLog, and those that change the library
    // (everything but SELECT), in order.
    std::vector<std::string> Statements() const;
    std::vector<std::string> Changes() const;
    void ClearLog() { log.clear(); }

    void Select(const std::string& path);
    // Runs a command whose confirmation is answered with OK.
    bool Confirmed(int id);
    // Runs the rename of the node at `path` to `newName` through an in-place label edit.
    bool Rename(const std::string& path, const std::string& newName);

    // Sub-dialog answers.
    bool NewManufacturer(const std::string& name, const std::string& shortName = "");
    bool NewSeries(const std::string& manufacturer, const std::string& series);
    bool NewType(const std::string& manufacturerSeries, const std::string& type);
    bool NewModule(const std::string& typePath, const std::string& code,
                   const std::string& points = "8", const std::string& description = "desc");
    bool AppendTerm(const std::string& value, const std::string& desc = "d",
                    const std::string& detail = "x");
    bool InsertTermBefore(const std::string& sequence, const std::string& value);
    bool DeleteTerms(const std::vector<std::string>& sequences);

    // A fresh connection to the library file.
    plcdb::QueryResult Db(const std::string& sql);
    // The terminal rows of `code` in `table`_data as "sequence:value", by sequence.
    std::vector<std::string> DbTerms(const std::string& table, const std::string& code);
    // The terminal list as "sequence:value", in list order.
    std::vector<std::string> ListTerms() const;
    // PLC_MANUFACTURER as "M|S|T|TABLE" rows in row order.
    std::vector<std::string> DbTypeRows();

    testing_support::ScopedEnv scratch{"TMPDIR", ScratchRoot()};
    dialog_test::DialogEnvironment env;
    std::unique_ptr<CDlgPlcDataLibEdit> dlg;
    std::vector<Logged> log;
};

}  // namespace libedit_test
