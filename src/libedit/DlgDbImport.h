// Import from the PLC database of another CAD's electrical add-on (ace_plc.mdb): adds the
// manufacturers, series, types, modules and terminal rows the library does not hold yet and
// never changes or deletes what is there. Rows added before a failure stay: there is no
// transaction, as a user expects after seeing the progress bar move.
//
// A type's TABLE_NAME is looked up in the library with every "-" read as "_", but the row is
// stored as the source spells it, so such a row is not recognised by a later import and is
// added again. The module tables themselves are created, and filled, under the "_" spelling:
// a "-" is not allowed in a bare table name of the engine, and the "_" name is the one the
// lookup already uses.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dialog/ModalRunner.h"
#include "plclib/AccessReader.h"

class CPlcLib;

// The small modeless window that shows the module walk. A view watches it through onChange.
class CDlgImportProgress {
public:
    void Create();
    void SetRange(int lower, int upper);
    void SetPos(int pos);
    void SetText(const std::string& text);  // control 239
    void Close();

    bool Visible() const { return visible_; }
    int Lower() const { return lower_; }
    int Upper() const { return upper_; }
    int Pos() const { return pos_; }
    const std::string& Text() const { return text_; }

    std::function<void(const CDlgImportProgress&)> onChange;

private:
    void Changed();
    bool visible_ = false;
    int lower_ = 0;
    int upper_ = 100;
    int pos_ = 0;
    std::string text_;
};

namespace libedit {

// What an import added, or would add, and what it passed over and why.
struct ImportReport {
    std::vector<std::string> manufacturers;  // short-name rows added
    std::vector<std::string> types;          // "manufacturer / series / type (table)"
    std::vector<std::string> tables;         // module tables created
    std::vector<std::string> modules;        // "table: code"
    long terminalRows = 0;
    long modulesPresent = 0;  // already in the library with the same values
    long terminalRowsPresent = 0;
    std::vector<std::string> skipped;  // one line each: what and why
};

// The text of the report, one line per fact, for the command line and the log.
std::string FormatReport(const ImportReport& report, bool dryRun);

// The value of `key` (e.g. "TERM_=") in an ATTRIBUTES text: what follows the key up to the
// next ";", or to the end; empty when the key is absent.
std::string AttributeValue(const std::string& attributes, const std::string& key);

inline constexpr const char* kImportSourceName = "ace_plc.mdb";
inline constexpr const char* kImportDefaultSource = "D:\\ZANDRIX_IEC\\PLC\\ace_plc.mdb";
inline constexpr const char* kImportBrowseExtension = "mdb";
inline constexpr const char* kImportBrowseFilter = "数据库文件(*.mdb)|*.mdb|All Files (*.*)|*.*||";

}  // namespace libedit

class CDlgDbImport {
public:
    using SourceOpener = std::function<std::unique_ptr<plcdb::ITableSource>(const std::string& path,
                                                                            std::string& error)>;

    explicit CDlgDbImport(CPlcLib& plcLib);

    // Presets the source (control 235) and shows the library's path (control 237).
    void OnInitDialog();
    // The browse button: `chosen` is the file the file-open dialog returned, empty on cancel.
    void OnBrowse(const std::string& chosen);
    // Runs the import; true when it succeeded and the dialog closes.
    bool OnOK();

    std::string sourcePath;  // control 235
    std::string targetPath;  // control 237
    bool visible = true;
    bool dryRun = false;  // walk and report, change nothing
    bool askConfirmation = true;

    // Opens the source; by default the Access reader.
    SourceOpener openSource;
    // The pause after "导入完成!" (one second by default).
    std::function<void()> pauseAfterDone;
    CDlgImportProgress progress;
    libedit::ImportReport report;
    std::string failure;  // the last message shown for a failed import, for callers to log

private:
    struct Run;
    bool Import();

    CPlcLib& plcLib_;
};

class CDlgPlcDataLibEdit;

namespace libedit {

// Makes the editor's import button run the import dialog over the editor's library through
// `runner` (a view, a script, a test); the editor reloads after an import that closed with OK.
void WireImport(CDlgPlcDataLibEdit& editor, dialog::ModalRunner<CDlgDbImport> runner);

}  // namespace libedit
