// The library editor's window life, its tree and lists, and what selecting in them shows.
#include "libedit/DlgPlcDataLibEdit.h"

#include "host/Host.h"
#include "host/SuiteServices.h"
#include "libedit/LibEditCommon.h"
#include "plclib/TimeStamp.h"

using libedit::kModCode;

CDlgPlcDataLibEdit::CDlgPlcDataLibEdit()
    : libPath(suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath)) {}

CDlgPlcDataLibEdit::~CDlgPlcDataLibEdit() = default;

bool CDlgPlcDataLibEdit::Create() {
    if (!plcLib.Open(libPath)) {
        return false;
    }
    SetupColumns();
    sortColumn = -1;
    sortAscending = true;
    CreateWindow();
    return true;
}

void CDlgPlcDataLibEdit::SetupColumns() {
    moduleList.SetColumns({"模块代号", "通道数", "类型", "描述", "额定值"}, moduleListClientWidth,
                          {2.5, 1.5, 1, 3, 2});
    termList.SetColumns({"端点序号", "端号", "端点描述", "端点详细描述"}, termListClientWidth,
                        {2, 1.5, 2.5, 12});
}

void CDlgPlcDataLibEdit::Refresh() {
    if (!plcLib.IsOpen()) {
        plcLib.Open(libPath);
    }
    BuildTree();
}

void CDlgPlcDataLibEdit::BuildTree() {
    moduleList.Clear();
    termList.Clear();
    editingNode = nullptr;
    manufacturerInfo = CPlcManufacturerInfo();
    statusText.clear();
    plcLib.LoadLibrary();
    const ChangingEntries reloaded(*this);
    dialog::TreeNode* root = dialog::FillLibraryTree(tree, plcLib.Entries());
    tree.Expand(root);
    RestoreLastSelection();
    focus = "tree";
}

void CDlgPlcDataLibEdit::RestoreLastSelection() {
    const dialog::LastSelection remembered = dialog::ReadLastSelection();
    if (dialog::TreeNode* found = dialog::DescendTo(tree, remembered, plcLib.Entries())) {
        SelectTreeNode(found);
    }
}

namespace {

std::string TypeKey(std::string_view manufacturer, std::string_view series, std::string_view type) {
    std::string key;
    key.reserve(manufacturer.size() + series.size() + type.size() + 2);
    key.append(manufacturer).append(1, '\x1f').append(series).append(1, '\x1f').append(type);
    return key;
}

}  // namespace

CDlgPlcDataLibEdit::ChangingEntries::ChangingEntries(CDlgPlcDataLibEdit& d) : dlg(d) {
    ++dlg.changingEntries_;
    dlg.typeIndex_.clear();
    dlg.typeIndexBuilt_ = false;
}

CDlgPlcDataLibEdit::ChangingEntries::~ChangingEntries() {
    --dlg.changingEntries_;
    dlg.typeIndex_.clear();
    dlg.typeIndexBuilt_ = false;
}

std::vector<CPlcPartData*> CDlgPlcDataLibEdit::EntriesOfType(std::string_view manufacturer,
                                                             std::string_view series,
                                                             std::string_view type) {
    if (changingEntries_ > 0) {
        std::vector<CPlcPartData*> found;
        for (const auto& entry : plcLib.Entries()) {
            if (entry->manufacturer == manufacturer && entry->series == series &&
                entry->type == type) {
                found.push_back(entry.get());
            }
        }
        return found;
    }
    if (!typeIndexBuilt_) {
        typeIndex_.clear();
        for (const auto& entry : plcLib.Entries()) {
            typeIndex_[TypeKey(entry->manufacturer, entry->series, entry->type)].push_back(
                entry.get());
        }
        typeIndexBuilt_ = true;
    }
    const auto found = typeIndex_.find(TypeKey(manufacturer, series, type));
    return found == typeIndex_.end() ? std::vector<CPlcPartData*>() : found->second;
}

CPlcPartData* CDlgPlcDataLibEdit::FindEntry(std::string_view manufacturer, std::string_view series,
                                            std::string_view type, std::string_view code) {
    for (CPlcPartData* entry : EntriesOfType(manufacturer, series, type)) {
        if (entry->code == code) {
            return entry;
        }
    }
    return nullptr;
}

void CDlgPlcDataLibEdit::FillTypeNode(dialog::TreeNode* typeNode) {
    if (!typeNode->children.empty()) {
        return;
    }
    const dialog::LastSelection path = dialog::PathOf(typeNode);
    for (const CPlcPartData* entry : EntriesOfType(path.manufacturer, path.series, path.type)) {
        if (!entry->code.empty()) {
            tree.Insert(typeNode, entry->code, dialog::kImageModule);
        }
    }
}

CPlcPartData* CDlgPlcDataLibEdit::CurrentModule() {
    const CPlcManufacturerInfo& info = manufacturerInfo;
    if (info.code.empty()) {
        return nullptr;
    }
    return FindEntry(info.manufacturer, info.series, info.type, info.code);
}

std::string CDlgPlcDataLibEdit::TableOfCurrentType() {
    return plcLib.GetTableName(manufacturerInfo.manufacturer, manufacturerInfo.series,
                               manufacturerInfo.type);
}

dialog::LastSelection CDlgPlcDataLibEdit::CurrentSelection() const {
    return {manufacturerInfo.manufacturer, manufacturerInfo.series, manufacturerInfo.type,
            manufacturerInfo.code};
}

void CDlgPlcDataLibEdit::SaveLastSelection() {
    if (!dialog::WriteLastSelection(CurrentSelection())) {
        host::Print("\n无法写入文件" + dialog::LastSelectionPath() + "\n");
    }
}

void CDlgPlcDataLibEdit::Stamp() {
    plcdb::StampLibraryChange();
}

void CDlgPlcDataLibEdit::AddModuleRow(const CPlcPartData& module) {
    moduleList.AddRow(
        {module.code, module.points, module.moduleType, module.description, module.rating});
}

void CDlgPlcDataLibEdit::AddTermRow(const CPlcPartTermData& row) {
    termList.AddRow({row.sequence, row.termValue, row.termDesc, row.detailTermDesc});
}

void CDlgPlcDataLibEdit::FillModuleList(const dialog::LastSelection& path) {
    std::vector<dialog::ListRow> rows;
    for (const CPlcPartData* entry : EntriesOfType(path.manufacturer, path.series, path.type)) {
        if (!entry->code.empty() && (path.code.empty() || entry->code == path.code)) {
            rows.push_back({{entry->code, entry->points, entry->moduleType, entry->description,
                             entry->rating}});
        }
    }
    moduleList.SetRows(std::move(rows));
}

void CDlgPlcDataLibEdit::FillTermList(CPlcPartData& module) {
    if (module.marker != libedit::kTerminalsLoaded) {
        module.terminals.clear();
        plcLib.LoadTerminals(module.manufacturer, module.series, module.type, module.code, module);
        module.marker = libedit::kTerminalsLoaded;
    }
    // One change for the whole list: a view redraws once, not once per row.
    std::vector<dialog::ListRow> rows;
    rows.reserve(module.terminals.size());
    for (const auto& row : module.terminals) {
        rows.push_back({{row->sequence, row->termValue, row->termDesc, row->detailTermDesc}});
    }
    termList.SetRows(std::move(rows));
}

void CDlgPlcDataLibEdit::SelectTreeNode(dialog::TreeNode* node) {
    if (node == nullptr) {
        return;
    }
    tree.Select(node);
    const dialog::LastSelection path = dialog::PathOf(node);
    manufacturerInfo.manufacturer = path.manufacturer;
    manufacturerInfo.series = path.series;
    manufacturerInfo.type = path.type;
    manufacturerInfo.code = path.code;
    moduleList.Clear();
    termList.Clear();
    const int level = node->Level();
    if (level == 0) {
        statusText = "PLC";
        return;
    }
    if (level == 1) {
        const std::string shortName = plcLib.GetShortName(path.manufacturer);
        statusText = "厂家名:" + path.manufacturer +
                     (shortName.empty() ? std::string(" 厂家简称:无") : " 厂家简称:" + shortName);
        return;
    }
    if (level == 3) {
        FillTypeNode(node);
    }
    if (level >= 3) {
        FillModuleList(path);
    }
    if (level == 4 && moduleList.Count() > 0) {
        SelectModuleRow(0);
    }
    statusText = "厂家:" + path.manufacturer + " 系列:" + path.series;
    if (level >= 3) {
        statusText += " 系列类型:" + path.type;
    }
    if (level >= 4) {
        statusText += " 模块代码:" + path.code;
    }
}

void CDlgPlcDataLibEdit::SelectModuleRow(int row) {
    if (row < 0 || row >= moduleList.Count()) {
        moduleList.ClearSelection();
        return;
    }
    moduleList.SelectOnly(row);
    const std::string code = moduleList.Text(row, kModCode);
    manufacturerInfo.code = code;
    statusText = "厂家:" + manufacturerInfo.manufacturer + " 系列:" + manufacturerInfo.series +
                 " 系列类型:" + manufacturerInfo.type + " 模块代号:" + code;
    termList.Clear();
    if (CPlcPartData* module = CurrentModule()) {
        FillTermList(*module);
    }
    focus = "moduleList";
}

void CDlgPlcDataLibEdit::SelectTermRows(const std::vector<int>& rows) {
    termList.ClearSelection();
    for (int row : rows) {
        if (row >= 0 && row < termList.Count()) {
            termList.SetSelected(row, true);
        }
    }
    focus = "termList";
}

dialog::TreeNode* CDlgPlcDataLibEdit::FindPath(const std::vector<std::string>& names) {
    dialog::TreeNode* node = tree.Root();
    for (const std::string& name : names) {
        if (node == nullptr) {
            return nullptr;
        }
        if (node->Level() == 3) {
            FillTypeNode(node);
        }
        node = dialog::FindChildExact(node, name);
    }
    return node;
}

bool CDlgPlcDataLibEdit::SelectPath(const std::vector<std::string>& names) {
    dialog::TreeNode* node = FindPath(names);
    if (node == nullptr) {
        return false;
    }
    dialog::ExpandTo(tree, node);
    SelectTreeNode(node);
    return true;
}

int CDlgPlcDataLibEdit::FindTermRow(std::string_view sequence) const {
    for (int row = 0; row < termList.Count(); ++row) {
        if (termList.Text(row, libedit::kTermSequence) == sequence) {
            return row;
        }
    }
    return -1;
}

void CDlgPlcDataLibEdit::OnImport() {
    if (!onImport || !onImport()) {
        return;
    }
    BuildTree();
}

bool CDlgPlcDataLibEdit::OnDraw() {
    const dialog::TreeNode* selected = tree.Selected();
    if (selected != nullptr && selected->Level() >= 3 && moduleList.Count() == 0) {
        libedit::Tell("当前选中的项中没有可以绘制的数据！");
        return false;
    }
    host::IHost& current = host::Current();
    SaveLastSelection();
    plcLib.Close();
    DestroyWindow();
    current.SendCommandString("(Command)\nPlcRendal\n");
    if (onClosed) {
        // The owner may delete this object here; nothing of it may be used afterwards.
        auto closed = onClosed;
        closed(this);
    }
    return true;
}

void CDlgPlcDataLibEdit::OnClose() {
    SaveLastSelection();
    plcLib.Close();
    DestroyWindow();
    if (onClosed) {
        auto closed = onClosed;
        closed(this);
    }
}
