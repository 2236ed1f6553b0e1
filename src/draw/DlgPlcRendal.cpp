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

// The path of names from the manufacturer down to `node` (empty for the levels below it).
draw::LastSelection PathOf(const draw::TreeNode* node) {
    draw::LastSelection path;
    std::string* fields[] = {&path.manufacturer, &path.series, &path.type, &path.code};
    for (; node != nullptr && node->Level() > 0; node = node->parent) {
        if (node->Level() <= 4) {
            *fields[node->Level() - 1] = node->text;
        }
    }
    return path;
}

void InsertDistinct(draw::TreeModel& tree, draw::TreeNode* parent, const std::string& text,
                    int image) {
    if (text.empty()) {
        return;
    }
    for (const auto& child : parent->children) {
        if (child->text == text) {
            return;
        }
    }
    tree.Insert(parent, text, image);
}

draw::TreeNode* FindChild(draw::TreeNode* parent, const std::string& text) {
    for (const auto& child : parent->children) {
        if (child->text == text) {
            return child.get();
        }
    }
    return nullptr;
}

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
    windowCreated = true;
    visible = false;
    moduleList.SetColumns(kModuleColumns, listClientWidth, kModuleShares);
    termList.SetColumns(kTermColumns, listClientWidth, kTermShares);
    FillLocation();
    horizontalChecked = true;
    const std::string common = suite::GetZandrixCommonResInstallPath();
    horPreviewPath = suite::PathJoin(common, "Data/PlcHor.dxf");
    verPreviewPath = suite::PathJoin(common, "Data/PlcVer.dxf");
    return true;
}

void CDlgPlcRendal::Refresh() {
    BuildTree();
}

void CDlgPlcRendal::Show() {
    visible = true;
}
void CDlgPlcRendal::Minimize() {
    minimized = true;
}
void CDlgPlcRendal::Restore() {
    minimized = false;
}
void CDlgPlcRendal::Activate() {
    active = true;
}

bool CDlgPlcRendal::DestroyWindow() {
    if (!windowCreated) {
        return false;
    }
    windowCreated = false;
    visible = false;
    active = false;
    return true;
}

void CDlgPlcRendal::BuildTree() {
    tree.Clear();
    draw::TreeNode* root = tree.InsertRoot("PLC", kImageRoot);
    if (!plcLib.LoadLibrary()) {
        libLoaded = false;
        return;
    }
    libLoaded = true;
    for (const auto& entry : plcLib.Entries()) {
        InsertDistinct(tree, root, entry->manufacturer, kImageManufacturer);
        draw::TreeNode* maker = FindChild(root, entry->manufacturer);
        if (maker == nullptr) {
            continue;
        }
        InsertDistinct(tree, maker, entry->series, kImageSeries);
        draw::TreeNode* series = FindChild(maker, entry->series);
        if (series != nullptr) {
            InsertDistinct(tree, series, entry->type, kImageType);
        }
    }
    RestoreLastSelection();
    focus = "tree";
}

void CDlgPlcRendal::RestoreLastSelection() {
    lastSelection = draw::ReadLastSelection();
    const std::string* levels[] = {&lastSelection.manufacturer, &lastSelection.series,
                                   &lastSelection.type, &lastSelection.code};
    draw::TreeNode* node = tree.Root();
    draw::TreeNode* found = nullptr;
    for (const std::string* name : levels) {
        if (name->empty()) {
            break;
        }
        if (node->Level() == 3) {
            FillTypeModules(node);
        }
        draw::TreeNode* child = node->FindChildNoCase(*name);
        if (child == nullptr) {
            break;
        }
        node->expanded = true;
        node = found = child;
    }
    if (found != nullptr) {
        found->expanded = true;
        SelectTreeNode(found);
    }
}

void CDlgPlcRendal::FillTypeModules(draw::TreeNode* typeNode) {
    if (!typeNode->children.empty()) {
        return;
    }
    const draw::LastSelection path = PathOf(typeNode);
    for (const auto& entry : plcLib.Entries()) {
        if (!entry->code.empty() && entry->manufacturer == path.manufacturer &&
            entry->series == path.series && entry->type == path.type) {
            tree.Insert(typeNode, entry->code, kImageModule);
        }
    }
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

void CDlgPlcRendal::SelectTreeNode(draw::TreeNode* node) {
    if (node == nullptr) {
        return;
    }
    tree.Select(node);
    const draw::LastSelection path = PathOf(node);
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
    draw::TreeNode* node = tree.Root();
    const std::string_view levels[] = {manufacturer, series, type, code};
    for (std::string_view name : levels) {
        if (node == nullptr) {
            return false;
        }
        if (node->Level() == 3) {
            FillTypeModules(node);
        }
        node->expanded = true;
        node = FindChild(node, std::string(name));
    }
    if (node == nullptr) {
        return false;
    }
    SelectTreeNode(node);
    return true;
}
