// Manufacturers: new, short name, rename, delete.
#include <algorithm>

#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

bool CDlgPlcDataLibEdit::NewManufacturer() {
    CDlgNewManufacturer dlg;
    for (const auto& entry : plcLib.Entries()) {
        if (std::find(dlg.existingManufacturers.begin(), dlg.existingManufacturers.end(),
                      entry->manufacturer) == dlg.existingManufacturers.end()) {
            dlg.existingManufacturers.push_back(entry->manufacturer);
        }
    }
    if (!RunModal(newManufacturerRunner, dlg)) {
        return false;
    }
    const std::string& name = dlg.fullName;
    const std::string& shortName = dlg.shortName;
    if (!plcdb::CheckValues({name, shortName})) {
        return false;
    }
    const bool added =
        plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('" + name + "','','','')");
    // The short name is written whatever became of the manufacturer's row.
    const bool shortAdded = plcLib.Execute("INSERT INTO MANUFACTURER_simple VALUES ('" + name +
                                           "','" + shortName + "')");
    if (added || shortAdded) {
        Stamp();
    }
    if (!added) {
        return false;
    }
    plcLib.Entries().push_back(std::make_unique<CPlcPartData>(name, "", ""));
    dialog::TreeNode* node = tree.Insert(tree.Root(), name, dialog::kImageManufacturer);
    tree.Expand(tree.Root());
    SelectTreeNode(node);
    return true;
}

bool CDlgPlcDataLibEdit::ChangeShortName() {
    const std::string name = manufacturerInfo.manufacturer;
    CDlgNewManufacturer dlg;
    dlg.SetEditMode(name, plcLib.GetShortName(name));
    if (!RunModal(newManufacturerRunner, dlg)) {
        return false;
    }
    if (!dlg.ShortNameChanged()) {
        return true;  // nothing to write
    }
    if (!plcdb::CheckValues({dlg.shortName, name})) {
        return false;
    }
    if (!plcLib.Execute("UPDATE MANUFACTURER_simple SET MFG='" + dlg.shortName +
                        "' WHERE MANUFACTURER='" + name + "'")) {
        return false;
    }
    Stamp();
    statusText = "厂家名:" + name + " 厂家简称:" + dlg.shortName;
    return true;
}

bool CDlgPlcDataLibEdit::RenameManufacturer(const std::string& oldName,
                                            const std::string& newName) {
    if (!plcdb::CheckValues({newName, oldName})) {
        return false;
    }
    // The names in memory change first; the statements follow.
    for (const auto& entry : plcLib.Entries()) {
        if (SameName(entry->manufacturer, oldName)) {
            entry->manufacturer = newName;
        }
    }
    tree.SetText(editingNode, newName);
    if (SameName(manufacturerInfo.manufacturer, oldName)) {
        manufacturerInfo.manufacturer = newName;
    }
    const bool renamed = plcLib.Execute("UPDATE PLC_MANUFACTURER SET MANUFACTURER='" + newName +
                                        "' WHERE MANUFACTURER ='" + oldName + "'");
    const bool shortRenamed =
        renamed && plcLib.Execute("UPDATE MANUFACTURER_simple SET MANUFACTURER='" + newName +
                                  "' WHERE MANUFACTURER ='" + oldName + "'");
    if (renamed) {
        Stamp();
    }
    return renamed && shortRenamed;
}

bool CDlgPlcDataLibEdit::DeleteManufacturer() {
    dialog::TreeNode* node = tree.Selected();
    const std::string name = node->text;
    if (!Confirm("这将删除厂家 " + name + " 数据库中的所有数据!\n\n确实要执行此操作 ?")) {
        return false;
    }
    if (!plcdb::CheckValues({name})) {
        return false;
    }
    std::vector<std::string> tables;
    if (!plcLib.GetTableNames(name, "", tables)) {
        return false;
    }
    const bool shortDeleted =
        plcLib.Execute("DELETE * FROM MANUFACTURER_Simple WHERE MANUFACTURER='" + name + "'");
    const bool deleted =
        shortDeleted &&
        plcLib.Execute("DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + name + "'");
    if (!deleted) {
        if (shortDeleted) {
            Stamp();
        }
        Tell("数据库操作出现错误,请重新删除厂家!");
        return false;
    }
    auto& entries = plcLib.Entries();
    std::erase_if(entries, [&](const auto& entry) { return SameName(entry->manufacturer, name); });
    dialog::TreeNode* parent = node->parent;
    tree.Remove(node);
    SelectTreeNode(parent);
    for (const std::string& table : tables) {
        plcLib.Execute("Drop table [" + table + "_data]");
        plcLib.Execute("Drop table [" + table + "]");
    }
    Stamp();
    return true;
}
