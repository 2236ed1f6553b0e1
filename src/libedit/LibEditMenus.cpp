// The editor's context menus, double clicks, terminal-list sorting and the find button.
#include <algorithm>

#include "files/TextFile.h"
#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

std::vector<MenuEntry> CDlgPlcDataLibEdit::TreeMenu() const {
    const dialog::TreeNode* node = tree.Selected();
    if (node == nullptr) {
        return {};
    }
    switch (node->Level()) {
        case 0:
            return {{kCmdNewManufacturer, "新建厂家"}};
        case 1:
            return {{kCmdDeleteManufacturer, "删除"},
                    {kCmdRenameManufacturer, "重命名"},
                    {kCmdChangeShortName, "修改厂家简称"},
                    {kCmdNewSeries, "新建系列"}};
        case 2:
            return {{kCmdDeleteSeries, "删除"},
                    {kCmdRenameSeries, "重命名"},
                    {kCmdNewType, "新建类型"}};
        case 3:
            return {
                {kCmdDeleteType, "删除"}, {kCmdRenameType, "重命名"}, {kCmdNewModule, "新建模块"}};
        case 4:
            return {{kCmdDeleteModule, "删除"}, {kCmdRenameModule, "重命名"}};
        default:
            return {};
    }
}

std::vector<MenuEntry> CDlgPlcDataLibEdit::OnTreeRightClick(dialog::TreeNode* node) {
    if (node == nullptr) {
        return {};
    }
    SelectTreeNode(node);
    focus = "tree";
    return TreeMenu();
}

std::vector<MenuEntry> CDlgPlcDataLibEdit::ModuleListMenu() const {
    if (moduleList.SelectedCount() == 0) {
        return {};
    }
    return {{kCmdChangeModule, "模块参数修改"}};
}

std::vector<MenuEntry> CDlgPlcDataLibEdit::TermListMenu() const {
    const int selected = termList.SelectedCount();
    if (selected == 0) {
        if (moduleList.Count() == 0) {
            return {};
        }
        return {{kCmdAppendTerm, "追加端点"}};
    }
    const bool several = selected > 1;
    return {{kCmdInsertTerm, "插入端点", several},
            {kCmdAppendTerm, "追加端点"},
            {kCmdDeleteTerms, "删除端点"},
            {kCmdChangeTerm, "修改端点", several},
            {kCmdReorderTerms, "序号调整"}};
}

void CDlgPlcDataLibEdit::OnModuleListDoubleClick() {
    OnMenuCommand(kCmdChangeModule);
}

void CDlgPlcDataLibEdit::OnTermListDoubleClick() {
    OnMenuCommand(kCmdChangeTerm);
}

void CDlgPlcDataLibEdit::OnTermHeaderClick(int column) {
    if (column < 0 || column >= static_cast<int>(termList.Columns().size())) {
        return;
    }
    if (column == sortColumn) {
        sortAscending = !sortAscending;
    } else {
        sortColumn = column;
        sortAscending = true;
    }
    SortTermList();
}

void CDlgPlcDataLibEdit::SortTermList() {
    if (sortColumn < 0) {
        return;
    }
    std::vector<dialog::ListRow> rows = termList.Rows();
    const int column = sortColumn;
    const auto cell = [column](const dialog::ListRow& row) -> std::string {
        return column < static_cast<int>(row.cells.size()) ? row.cells[column] : std::string();
    };
    // Sequences sort as numbers, the other columns as text.
    const auto less = [&](const dialog::ListRow& a, const dialog::ListRow& b) {
        if (column == kTermSequence) {
            return SequenceNumber(cell(a)) < SequenceNumber(cell(b));
        }
        return cell(a) < cell(b);
    };
    if (sortAscending) {
        std::stable_sort(rows.begin(), rows.end(), less);
    } else {
        std::stable_sort(
            rows.begin(), rows.end(),
            [&](const dialog::ListRow& a, const dialog::ListRow& b) { return less(b, a); });
    }
    termList.SetRows(std::move(rows));
}

bool CDlgPlcDataLibEdit::OnFind() {
    dialog::TreeNode* root = tree.Root();
    const std::string wanted = files::UpperAscii(editFind);
    if (root == nullptr || wanted.empty()) {
        return false;
    }
    dialog::TreeNode* start = tree.Selected() != nullptr ? tree.Selected() : root;
    const auto search = [&](dialog::TreeNode* from) {
        return dialog::FindFrom(tree, from, plcLib.Entries(), [&](const dialog::TreeNode& node) {
            return &node != from && node.Level() > 0 &&
                   files::UpperAscii(node.text).find(wanted) != std::string::npos;
        });
    };
    dialog::TreeNode* found = search(start);
    if (found == nullptr) {
        if (host::ShowMessage("搜索已达尾端，是否从头开始？", "Zandrix", host::MsgIcon::Question,
                              host::MsgButtons::YesNo) != host::MsgResult::Yes) {
            return false;
        }
        found = search(root);
    }
    if (found == nullptr) {
        return false;
    }
    dialog::ExpandTo(tree, found);
    SelectTreeNode(found);
    focus = "tree";
    return true;
}
