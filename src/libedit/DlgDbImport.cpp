#include "libedit/DlgDbImport.h"

#include <chrono>
#include <thread>

#include "host/Host.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"
#include "plclib/PlcLib.h"

namespace {

constexpr const char* kImportCaption = "Zandrix 消息";
std::string Lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

std::string FileName(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::unique_ptr<plcdb::ITableSource> OpenAccess(const std::string& path, std::string& error) {
    auto reader = std::make_unique<plcdb::AccessReader>();
    if (!reader->Open(path, error)) {
        return nullptr;
    }
    return reader;
}

}  // namespace

void CDlgImportProgress::Create() {
    visible_ = true;
    pos_ = lower_;
    text_.clear();
    Changed();
}

void CDlgImportProgress::SetRange(int lower, int upper) {
    lower_ = lower;
    upper_ = upper;
    Changed();
}

void CDlgImportProgress::SetPos(int pos) {
    pos_ = pos;
    Changed();
}

void CDlgImportProgress::SetText(const std::string& text) {
    text_ = text;
    Changed();
}

void CDlgImportProgress::Close() {
    visible_ = false;
    Changed();
}

void CDlgImportProgress::Changed() {
    if (onChange) {
        onChange(*this);
    }
}

namespace libedit {

std::string AttributeValue(const std::string& attributes, const std::string& key) {
    const size_t at = attributes.find(key);
    if (at == std::string::npos) {
        return {};
    }
    const size_t begin = at + key.size();
    const size_t end = attributes.find(';', begin);
    return attributes.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
}

std::string FormatReport(const ImportReport& report, bool dryRun) {
    const std::string verb = dryRun ? "would add" : "added";
    std::string text;
    auto list = [&](const char* what, const std::vector<std::string>& names) {
        text += verb + " " + std::to_string(names.size()) + " " + what + "\n";
        for (const std::string& name : names) {
            text += "  " + name + "\n";
        }
    };
    list("manufacturer short-name rows", report.manufacturers);
    list("type rows", report.types);
    list("module tables", report.tables);
    list("modules", report.modules);
    text += verb + " " + std::to_string(report.terminalRows) + " terminal rows\n";
    text += "already present: " + std::to_string(report.modulesPresent) + " modules, " +
            std::to_string(report.terminalRowsPresent) + " terminal rows\n";
    text += "skipped: " + std::to_string(report.skipped.size()) + "\n";
    for (const std::string& line : report.skipped) {
        text += "  " + line + "\n";
    }
    return text;
}

}  // namespace libedit

CDlgDbImport::CDlgDbImport(CPlcLib& plcLib) : plcLib_(plcLib) {
    openSource = OpenAccess;
    pauseAfterDone = [] { std::this_thread::sleep_for(std::chrono::seconds(1)); };
}

void CDlgDbImport::OnInitDialog() {
    sourcePath = libedit::kImportDefaultSource;
    targetPath = plcLib_.Path();
}

void CDlgDbImport::OnBrowse(const std::string& chosen) {
    if (!chosen.empty()) {
        sourcePath = chosen;
    }
}

bool CDlgDbImport::OnOK() {
    if (Lower(FileName(sourcePath)) != libedit::kImportSourceName) {
        // The message names the library file though it refuses the source; users know it so.
        host::ShowMessage("请正确选择源PLC元件数据库文件(QvPlc.mdb)！", kImportCaption,
                          host::MsgIcon::Exclamation);
        return false;
    }
    if (askConfirmation && host::ShowMessage("数据库导入需要一段时间，确定进行导入吗？",
                                             kImportCaption, host::MsgIcon::Question,
                                             host::MsgButtons::OkCancel) != host::MsgResult::Ok) {
        return false;
    }
    visible = false;
    report = {};
    failure.clear();
    const bool done = Import();
    visible = !done;
    return done;
}

namespace libedit {

void WireImport(CDlgPlcDataLibEdit& editor, dialog::ModalRunner<CDlgDbImport> runner) {
    editor.onImport = [&editor, runner = std::move(runner)] {
        if (!runner) {
            return false;
        }
        CDlgDbImport import(editor.plcLib);
        import.OnInitDialog();
        return runner(import);
    };
}

}  // namespace libedit
