// The drawing dialog's life and its library tree: creation, the tree built from the entry
// list, the restored last selection, and what selecting a node or a module row fills in.
#include "draw/DlgPlcRendal.h"

#include "host/Host.h"
#include "host/SuiteServices.h"

namespace {

const std::vector<std::string> kModuleColumns = {"模块代号", "通道数", "类型", "描述", "额定值"};
const std::vector<double> kModuleShares = {2.5, 1.5, 1.0, 3.0, 2.0};
const std::vector<std::string> kTermColumns = {"端点序号", "端号", "端点描述", "端点详细描述",
                                               "连线端点方向"};
const std::vector<double> kTermShares = {1.8, 1.5, 2.0, 2.5, 2.5};

}  // namespace

CDlgPlcRendal::CDlgPlcRendal() {
    InitPlcDrawSettings(*this);
    libPath = suite::PathJoin(suite::GetZandrixLocalInstallPath(), plcdb::kLibraryRelativePath);
}

CDlgPlcRendal::~CDlgPlcRendal() = default;

bool CDlgPlcRendal::Create() {
    if (!plcLib.Open(libPath)) {
        // The dialog cannot work without its library: it is cancelled before it shows.
        windowCreated = false;
        return false;
    }
    moduleList.SetColumns(kModuleColumns, listClientWidth, kModuleShares);
    termList.SetColumns(kTermColumns, listClientWidth, kTermShares);
    FillLocation();
    horizontalChecked = true;
    const std::string common = suite::GetZandrixCommonResInstallPath();
    horPreviewPath = suite::PathJoin(common, "Data/PlcHor.dxf");
    verPreviewPath = suite::PathJoin(common, "Data/PlcVer.dxf");
    CreateWindow();
    return true;
}

void CDlgPlcRendal::Refresh() {
    BuildTree();
}

void CDlgPlcRendal::BuildTree() {
    tree.Clear();
    if (!plcLib.LoadLibrary()) {
        tree.InsertRoot("PLC", dialog::kImageRoot);
        libLoaded = false;
        return;
    }
    libLoaded = true;
    dialog::FillLibraryTree(tree, plcLib.Entries());
    RestoreLastSelection();
    focus = "tree";
}

void CDlgPlcRendal::RestoreLastSelection() {
    lastSelection = dialog::ReadLastSelection();
    if (dialog::TreeNode* found = dialog::DescendTo(tree, lastSelection, plcLib.Entries())) {
        SelectTreeNode(found);
    }
}

void CDlgPlcRendal::FillTypeModules(dialog::TreeNode* typeNode) {
    dialog::FillTypeModules(tree, typeNode, plcLib.Entries());
}

CPlcPartData* CDlgPlcRendal::FindModule(std::string_view manufacturer, std::string_view series,
                                        std::string_view type, std::string_view code) {
    for (const auto& entry : plcLib.Entries()) {
        if (entry->manufacturer == manufacturer && entry->series == series && entry->type == type &&
            entry->code == code) {
            return entry.get();
        }
    }
    return nullptr;
}

void CDlgPlcRendal::ShowModule(const CPlcPartData& module) {
    moduleList.AddRow(
        {module.code, module.points, module.moduleType, module.description, module.rating});
}

void CDlgPlcRendal::SelectTreeNode(dialog::TreeNode* node) {
    if (node == nullptr) {
        return;
    }
    tree.Select(node);
    const dialog::LastSelection path = dialog::PathOf(node);
    lastSelection = path;
    manufacturerInfo.manufacturer = path.manufacturer;
    manufacturerInfo.series = path.series;
    manufacturerInfo.type = path.type;
    manufacturerInfo.code = path.code;
    editShortName.clear();
    editModuleCode.clear();
    editModuleDesc.clear();
    moduleList.Clear();
    termList.Clear();

    const int level = node->Level();
    if (level == 0) {
        selectionText = "PLC";
        return;
    }
    const std::string shortName = plcLib.GetShortName(path.manufacturer);
    editShortName = shortName;
    if (level == 1) {
        selectionText = "厂家名:" + path.manufacturer +
                        " 厂家简称:" + (shortName.empty() ? std::string("无") : shortName);
        return;
    }
    if (level == 3) {
        for (const auto& entry : plcLib.Entries()) {
            if (!entry->code.empty() && entry->manufacturer == path.manufacturer &&
                entry->series == path.series && entry->type == path.type) {
                ShowModule(*entry);
            }
        }
        FillTypeModules(node);
    } else if (level == 4) {
        if (const CPlcPartData* module =
                FindModule(path.manufacturer, path.series, path.type, path.code)) {
            ShowModule(*module);
            SelectModuleRow(0);
        }
    }
    selectionText = "厂家:" + path.manufacturer + " 系列:" + path.series;
    if (level >= 3) {
        selectionText += " 系列类型:" + path.type;
    }
    if (level >= 4) {
        selectionText += " 模块代码:" + path.code;
    }
}

void CDlgPlcRendal::SelectModuleRow(int row) {
    if (row < 0 || row >= moduleList.Count()) {
        return;
    }
    moduleList.SelectOnly(row);
    termList.Clear();
    const std::string code = moduleList.Text(row, kColCode);
    const std::string description = moduleList.Text(row, kColDescription);
    const CPlcManufacturerInfo& info = manufacturerInfo;
    selectionText = "厂家:" + info.manufacturer + " 系列:" + info.series +
                    " 系列类型:" + info.type + " 模块代号:" + code;
    if (CPlcPartData* module = FindModule(info.manufacturer, info.series, info.type, code)) {
        // Read afresh each time: the library may have changed since the last selection.
        module->terminals.clear();
        plcLib.LoadTerminals(info.manufacturer, info.series, info.type, code, *module);
        const std::string direction(horizontalChecked ? kDirUp : kDirRightNewRow);
        for (const auto& terminal : module->terminals) {
            termList.AddRow({terminal->sequence, terminal->termValue, terminal->termDesc,
                             terminal->detailTermDesc, direction},
                            kMarkOn);
        }
    }
    manufacturerInfo.code = code;
    lastSelection.code = code;
    editModuleCode = code;
    editModuleDesc = description;
}

bool CDlgPlcRendal::SelectModulePath(std::string_view manufacturer, std::string_view series,
                                     std::string_view type, std::string_view code) {
    dialog::TreeNode* node = tree.Root();
    const std::string_view levels[] = {manufacturer, series, type, code};
    for (std::string_view name : levels) {
        if (node == nullptr) {
            return false;
        }
        if (node->Level() == 3) {
            FillTypeModules(node);
        }
        tree.Expand(node);
        node = dialog::FindChildExact(node, name);
    }
    if (node == nullptr) {
        return false;
    }
    SelectTreeNode(node);
    return true;
}
