// Modules: new, rename, delete, change of parameters.
#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

bool CDlgPlcDataLibEdit::NewModule() {
    dialog::TreeNode* node = tree.Selected();
    const dialog::LastSelection path = dialog::PathOf(node);
    CDlgNewModule dlg;
    if (!RunModal(newModuleRunner, dlg)) {
        return false;
    }
    if (!plcdb::CheckValues({path.manufacturer, path.series, path.type, dlg.code, dlg.points,
                             dlg.moduleType, dlg.description, dlg.rating})) {
        return false;
    }
    const std::string table = plcLib.GetTableName(path.manufacturer, path.series, path.type);
    auto existing = plcLib.Query(Format2("SELECT * FROM %s WHERE CODE ='%s'", table, dlg.code));
    if (!existing) {
        return false;
    }
    if (!existing->Empty()) {
        Tell("该模块已经存在!");
        return false;
    }
    if (!plcLib.Execute("INSERT INTO " + table + " VALUES ('" + dlg.code + "','" + dlg.points +
                        "','" + dlg.moduleType + "','" + dlg.description + "','" + dlg.rating +
                        "')")) {
        Tell("添加新模块时操作数据库出错!");
        return false;
    }
    Stamp();
    // The type's module nodes are made before the new one joins them, so none is missing.
    FillTypeNode(node);
    CPlcPartData* entry = FindEntry(path.manufacturer, path.series, path.type, "");
    if (entry == nullptr) {
        plcLib.Entries().push_back(
            std::make_unique<CPlcPartData>(path.manufacturer, path.series, path.type));
        entry = plcLib.Entries().back().get();
    }
    entry->code = dlg.code;
    entry->points = dlg.points;
    entry->moduleType = dlg.moduleType;
    entry->description = dlg.description;
    entry->rating = dlg.rating;
    entry->marker = kTerminalsLoaded;  // a new module has no terminal rows yet
    entry->terminals.clear();
    tree.Insert(node, dlg.code, dialog::kImageModule);
    tree.Expand(node);
    AddModuleRow(*entry);
    return true;
}

bool CDlgPlcDataLibEdit::RenameModule(const std::string& oldName, const std::string& newName) {
    const dialog::LastSelection path = dialog::PathOf(editingNode);
    if (!plcdb::CheckValues({newName, oldName})) {
        return false;
    }
    const std::string table = plcLib.GetTableName(path.manufacturer, path.series, path.type);
    if (!plcLib.RenameCode(table, oldName, newName)) {
        return false;
    }
    Stamp();
    for (const auto& entry : plcLib.Entries()) {
        if (entry->manufacturer == path.manufacturer && entry->series == path.series &&
            entry->type == path.type && SameName(entry->code, oldName)) {
            entry->code = newName;
        }
    }
    tree.SetText(editingNode, newName);
    for (int row = 0; row < moduleList.Count(); ++row) {
        if (moduleList.Text(row, kModCode) == oldName) {
            moduleList.SetText(row, kModCode, newName);
        }
    }
    if (manufacturerInfo.manufacturer == path.manufacturer &&
        manufacturerInfo.series == path.series && manufacturerInfo.type == path.type &&
        manufacturerInfo.code == oldName) {
        manufacturerInfo.code = newName;
    }
    return true;
}

bool CDlgPlcDataLibEdit::DeleteModule() {
    dialog::TreeNode* node = tree.Selected();
    const dialog::LastSelection path = dialog::PathOf(node);
    const std::string& code = path.code;
    if (!Confirm("这将删除厂家为 " + path.manufacturer + " ,系列为 " + path.series + " ,类型为 " +
                 path.type + " ,模块号为 " + code + " 的数据!\n\n确实要执行此操作 ?")) {
        return false;
    }
    if (!plcdb::CheckValues({code})) {
        return false;
    }
    const std::string table = plcLib.GetTableName(path.manufacturer, path.series, path.type);
    const bool moduleDeleted =
        plcLib.Execute("DELETE * FROM " + table + " WHERE CODE='" + code + "'");
    const bool rowsDeleted =
        plcLib.Execute("DELETE * FROM " + table + "_data WHERE CODE='" + code + "'");
    if (moduleDeleted || rowsDeleted) {
        Stamp();
    }
    if (!rowsDeleted) {
        return false;
    }
    auto& entries = plcLib.Entries();
    std::erase_if(entries, [&](const auto& entry) {
        return entry->manufacturer == path.manufacturer && entry->series == path.series &&
               entry->type == path.type && SameName(entry->code, code);
    });
    // A type without modules stays as an entry of its own.
    bool typeLeft = false;
    for (const auto& entry : entries) {
        typeLeft = typeLeft || (entry->manufacturer == path.manufacturer &&
                                entry->series == path.series && entry->type == path.type);
    }
    if (!typeLeft) {
        entries.push_back(
            std::make_unique<CPlcPartData>(path.manufacturer, path.series, path.type));
    }
    dialog::TreeNode* parent = node->parent;
    tree.Remove(node);
    SelectTreeNode(parent);
    return true;
}

bool CDlgPlcDataLibEdit::ChangeModule() {
    const int row = moduleList.FirstSelected();
    if (row < 0) {
        Tell("请选择模块进行修改！");
        return false;
    }
    CDlgChangeModule dlg;
    dlg.code = moduleList.Text(row, kModCode);
    dlg.points = moduleList.Text(row, kModPoints);
    dlg.moduleType = moduleList.Text(row, kModType);
    dlg.description = moduleList.Text(row, kModDescription);
    dlg.rating = moduleList.Text(row, kModRating);
    if (!RunModal(changeModuleRunner, dlg)) {
        return false;
    }
    const std::string& code = dlg.code;
    if (!plcdb::CheckValues({dlg.points, dlg.moduleType, dlg.description, dlg.rating, code})) {
        return false;
    }
    const std::string table = TableOfCurrentType();
    if (!plcLib.Execute("UPDATE " + table + " SET POINTS='" + dlg.points + "', TYPE='" +
                        dlg.moduleType + "', DESCRIPTION='" + dlg.description + "', RATING='" +
                        dlg.rating + "' WHERE CODE ='" + code + "'")) {
        return false;
    }
    Stamp();
    for (const auto& entry : plcLib.Entries()) {
        if (entry->manufacturer == manufacturerInfo.manufacturer &&
            entry->series == manufacturerInfo.series && entry->type == manufacturerInfo.type &&
            SameName(entry->code, code)) {
            entry->points = dlg.points;
            entry->moduleType = dlg.moduleType;
            entry->description = dlg.description;
            entry->rating = dlg.rating;
        }
    }
    moduleList.SetText(row, kModPoints, dlg.points);
    moduleList.SetText(row, kModType, dlg.moduleType);
    moduleList.SetText(row, kModDescription, dlg.description);
    moduleList.SetText(row, kModRating, dlg.rating);
    return true;
}
