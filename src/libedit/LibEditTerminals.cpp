// Terminal rows of the current module: append, insert, delete, change, reorder. The list
// and the module's rows in memory follow each statement; sequences stay 1..n.
#include <algorithm>

#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

namespace {

int LastSequence(const CPlcPartData& module) {
    int last = 0;
    for (const auto& row : module.terminals) {
        last = std::max(last, SequenceNumber(row->sequence));
    }
    return last;
}

// Adds `delta` to every sequence above (or from, with `from`) `sequence`, in memory.
void Renumber(CPlcPartData& module, int sequence, bool from, int delta) {
    for (const auto& row : module.terminals) {
        const int now = SequenceNumber(row->sequence);
        if (now > sequence || (from && now == sequence)) {
            row->sequence = std::to_string(now + delta);
        }
    }
}

void RenumberList(dialog::ListModel& list, int sequence, bool from, int delta) {
    for (int row = 0; row < list.Count(); ++row) {
        const int now = SequenceNumber(list.Text(row, kTermSequence));
        if (now > sequence || (from && now == sequence)) {
            list.SetText(row, kTermSequence, std::to_string(now + delta));
        }
    }
}

std::string InsertStatement(const std::string& table, const std::string& code, int sequence,
                            const CDlgNewTermInfo& dlg) {
    return "INSERT INTO " + table + "_data VALUES ('" + code + "'," + std::to_string(sequence) +
           ",'" + dlg.termValue + "','" + dlg.termDesc + "','" + dlg.detailTermDesc + "')";
}

}  // namespace

bool CDlgPlcDataLibEdit::AppendTerminal() {
    CPlcPartData* module = CurrentModule();
    if (module == nullptr) {
        return false;
    }
    const int sequence = termList.Count() + 1;
    CDlgNewTermInfo dlg;
    dlg.caption = "添加端点信息";
    dlg.sequence = std::to_string(sequence);
    if (!RunModal(newTermInfoRunner, dlg)) {
        return false;
    }
    const std::string code = module->code;
    if (!plcdb::CheckValues({code, dlg.termValue, dlg.termDesc, dlg.detailTermDesc})) {
        return false;
    }
    if (!plcLib.Execute(InsertStatement(TableOfCurrentType(), code, sequence, dlg))) {
        return false;
    }
    Stamp();
    module->terminals.push_back(std::make_unique<CPlcPartTermData>(
        dlg.sequence, dlg.termValue, dlg.termDesc, dlg.detailTermDesc));
    AddTermRow(*module->terminals.back());
    return true;
}

bool CDlgPlcDataLibEdit::InsertTerminal() {
    CPlcPartData* module = CurrentModule();
    const int selected = termList.FirstSelected();
    if (module == nullptr || selected < 0 || termList.SelectedCount() > 1) {
        return false;
    }
    const std::string sequenceText = termList.Text(selected, kTermSequence);
    const int sequence = SequenceNumber(sequenceText);
    CDlgNewTermInfo dlg;
    dlg.caption = "插入端点信息";
    dlg.sequence = sequenceText;
    if (!RunModal(newTermInfoRunner, dlg)) {
        return false;
    }
    const std::string code = module->code;
    if (!plcdb::CheckValues({code, dlg.termValue, dlg.termDesc, dlg.detailTermDesc})) {
        return false;
    }
    const std::string table = TableOfCurrentType();
    if (!plcLib.ShiftSequences(table, code, sequenceText, LastSequence(*module), 1)) {
        return false;
    }
    Stamp();
    if (!plcLib.Execute(InsertStatement(table, code, sequence, dlg))) {
        return false;
    }
    Renumber(*module, sequence, true, 1);
    auto& rows = module->terminals;
    const auto at = std::find_if(rows.begin(), rows.end(), [&](const auto& row) {
        return SequenceNumber(row->sequence) == sequence + 1;
    });
    rows.insert(at, std::make_unique<CPlcPartTermData>(std::to_string(sequence), dlg.termValue,
                                                       dlg.termDesc, dlg.detailTermDesc));
    RenumberList(termList, sequence, true, 1);
    termList.InsertRow(selected,
                       {std::to_string(sequence), dlg.termValue, dlg.termDesc, dlg.detailTermDesc});
    termList.SelectOnly(selected);
    return true;
}

bool CDlgPlcDataLibEdit::DeleteTerminals() {
    CPlcPartData* module = CurrentModule();
    const int count = termList.SelectedCount();
    if (count == 0) {
        Tell("请选择要删除的端点信息！");
        return false;
    }
    if (module == nullptr) {
        return false;
    }
    if (!Confirm("确定要删除所选的" + std::to_string(count) + "条端点信息吗？")) {
        return false;
    }
    const std::string code = module->code;
    if (!plcdb::CheckValues({code})) {
        return false;
    }
    const std::string table = TableOfCurrentType();
    bool deletedAny = false;
    bool failed = false;
    // The rows deleted before a failure stay deleted.
    for (int row = termList.FirstSelected(); row >= 0; row = termList.FirstSelected()) {
        const std::string sequenceText = termList.Text(row, kTermSequence);
        const int sequence = SequenceNumber(sequenceText);
        const int last = LastSequence(*module);
        if (!plcLib.Execute("DELETE * FROM " + table + "_data WHERE CODE='" + code +
                            "' AND SEQUENCE=" + sequenceText)) {
            failed = true;
            break;
        }
        deletedAny = true;
        std::erase_if(module->terminals,
                      [&](const auto& held) { return SequenceNumber(held->sequence) == sequence; });
        termList.RemoveRow(row);
        if (!plcLib.ShiftSequences(table, code, sequenceText, last, -1)) {
            failed = true;
            break;
        }
        Renumber(*module, sequence, false, -1);
        RenumberList(termList, sequence, false, -1);
    }
    if (deletedAny) {
        Stamp();
    }
    return !failed;
}

bool CDlgPlcDataLibEdit::ChangeTerminal() {
    const int count = termList.SelectedCount();
    if (count == 0) {
        Tell("请选择端点进行修改！");
        return false;
    }
    if (count > 1) {
        Tell("只能选择一个端点进行修改！");
        return false;
    }
    CPlcPartData* module = CurrentModule();
    if (module == nullptr) {
        return false;
    }
    const int row = termList.FirstSelected();
    CDlgChangeTermData dlg;
    dlg.sequence = termList.Text(row, kTermSequence);
    dlg.termValue = termList.Text(row, kTermValue);
    dlg.termDesc = termList.Text(row, kTermDesc);
    dlg.detailTermDesc = termList.Text(row, kTermDetail);
    if (!RunModal(changeTermDataRunner, dlg)) {
        return false;
    }
    const std::string code = module->code;
    if (!plcdb::CheckValues({dlg.termValue, dlg.termDesc, dlg.detailTermDesc, code})) {
        return false;
    }
    if (!plcLib.Execute("UPDATE " + TableOfCurrentType() + "_data SET TERMVALUE='" + dlg.termValue +
                        "', TERMDESC='" + dlg.termDesc + "', DETAILTERMDESC='" +
                        dlg.detailTermDesc + "' WHERE CODE ='" + code +
                        "' AND SEQUENCE =" + dlg.sequence)) {
        return false;
    }
    Stamp();
    for (const auto& held : module->terminals) {
        if (held->sequence == dlg.sequence) {
            held->termValue = dlg.termValue;
            held->termDesc = dlg.termDesc;
            held->detailTermDesc = dlg.detailTermDesc;
        }
    }
    termList.SetText(row, kTermValue, dlg.termValue);
    termList.SetText(row, kTermDesc, dlg.termDesc);
    termList.SetText(row, kTermDetail, dlg.detailTermDesc);
    return true;
}

bool CDlgPlcDataLibEdit::ReorderTerminals() {
    CPlcPartData* module = CurrentModule();
    if (module == nullptr || termList.SelectedCount() == 0) {
        return false;
    }
    CDlgTermOrder dlg;
    for (const auto& row : termList.Rows()) {
        std::vector<std::string> cells = row.cells;
        cells.resize(4);
        dlg.rows.push_back(std::move(cells));
    }
    dlg.selected = termList.FirstSelected();
    if (!RunModal(termOrderRunner, dlg)) {
        return false;
    }
    const std::string code = module->code;
    if (!plcdb::CheckValues({code})) {
        return false;
    }
    for (const auto& cells : dlg.rows) {
        if (!plcdb::CheckValues({cells[kTermValue], cells[kTermDesc], cells[kTermDetail]})) {
            return false;
        }
    }
    const std::string table = TableOfCurrentType();
    bool failed = false;
    int written = 0;
    for (size_t i = 0; i < dlg.rows.size(); ++i) {
        const auto& cells = dlg.rows[i];
        const std::string sequence = std::to_string(i + 1);
        if (!plcLib.Execute("UPDATE " + table + "_data SET TermValue='" + cells[kTermValue] +
                            "', TERMDESC='" + cells[kTermDesc] + "', DETAILTERMDESC='" +
                            cells[kTermDetail] + "' WHERE CODE ='" + code +
                            "' AND SEQUENCE =" + sequence)) {
            failed = true;
            break;
        }
        ++written;
        for (const auto& held : module->terminals) {
            if (held->sequence == sequence) {
                held->termValue = cells[kTermValue];
                held->termDesc = cells[kTermDesc];
                held->detailTermDesc = cells[kTermDetail];
            }
        }
    }
    if (written > 0) {
        Stamp();
    }
    FillTermList(*module);
    SortTermList();
    return !failed;
}
