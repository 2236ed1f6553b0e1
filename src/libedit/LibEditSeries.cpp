// Series: new, rename, delete.
#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

bool CDlgPlcDataLibEdit::NewSeries() {
    dialog::TreeNode* node = tree.Selected();
    const std::string manufacturer = node->text;
    CDlgNewSeries dlg;
    dlg.manufacturer = manufacturer;
    if (!RunModal(newSeriesRunner, dlg)) {
        return false;
    }
    const std::string& series = dlg.seriesName;
    for (const auto& entry : plcLib.Entries()) {
        if (SameName(entry->manufacturer, manufacturer) && SameName(entry->series, series)) {
            Tell("厂家 " + manufacturer + " 的系列 " + series + " 已经存在,请重新新建该厂家系列!");
            return false;
        }
    }
    if (!plcdb::CheckValues({manufacturer, series})) {
        return false;
    }
    // A manufacturer without series has one placeholder row; its first series fills it.
    const bool hasSeries = plcLib.HasSeriesOrType(
        "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='" + manufacturer + "'", 2);
    const bool added = hasSeries
                           ? plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('" +
                                            manufacturer + "','" + series + "','','')")
                           : plcLib.Execute("UPDATE PLC_MANUFACTURER SET SERIES='" + series +
                                            "' WHERE TYPE='' AND SERIES='' AND MANUFACTURER='" +
                                            manufacturer + "'");
    if (!added) {
        Tell("新建系列时进行数据库操作是出错!");
        return false;
    }
    Stamp();
    CPlcPartData* placeholder = hasSeries ? nullptr : FindEntry(manufacturer, "", "", "");
    if (placeholder != nullptr) {
        placeholder->series = series;
    } else {
        plcLib.Entries().push_back(std::make_unique<CPlcPartData>(manufacturer, series, ""));
    }
    dialog::TreeNode* seriesNode = tree.Insert(node, series, dialog::kImageSeries);
    tree.Expand(node);
    SelectTreeNode(seriesNode);
    return true;
}

bool CDlgPlcDataLibEdit::RenameSeries(const std::string& oldName, const std::string& newName) {
    const std::string manufacturer = dialog::PathOf(editingNode).manufacturer;
    if (!plcdb::CheckValues({newName, oldName, manufacturer})) {
        return false;
    }
    for (const auto& entry : plcLib.Entries()) {
        if (SameName(entry->manufacturer, manufacturer) && SameName(entry->series, oldName)) {
            entry->series = newName;
        }
    }
    tree.SetText(editingNode, newName);
    if (manufacturerInfo.manufacturer == manufacturer &&
        SameName(manufacturerInfo.series, oldName)) {
        manufacturerInfo.series = newName;
    }
    if (!plcLib.Execute("UPDATE PLC_MANUFACTURER SET SERIES='" + newName + "' WHERE SERIES ='" +
                        oldName + "' AND MANUFACTURER='" + manufacturer + "'")) {
        return false;
    }
    Stamp();
    return true;
}

bool CDlgPlcDataLibEdit::DeleteSeries() {
    dialog::TreeNode* node = tree.Selected();
    const std::string manufacturer = node->parent->text;
    const std::string series = node->text;
    if (!Confirm("这将删除厂家为 " + manufacturer + ",系列为 " + series +
                 " 的数据库中的所有模块!\n\n确实要执行此操作 ?")) {
        return false;
    }
    if (!plcdb::CheckValues({manufacturer, series})) {
        return false;
    }
    std::vector<std::string> tables;
    if (!plcLib.GetTableNames(manufacturer, series, tables)) {
        return false;
    }
    for (const std::string& table : tables) {
        plcLib.Execute("Drop table " + table);
        plcLib.Execute("Drop table " + table + "_data");
    }
    const std::string rowsOfManufacturer =
        "SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + manufacturer + "'";
    auto rows = plcLib.Query(rowsOfManufacturer);
    bool removed = false;
    if (rows) {
        removed = rows->RowCount() < 2
                      ? plcLib.Execute(
                            "UPDATE PLC_MANUFACTURER SET SERIES='',TYPE='',TABLE_NAME='' WHERE "
                            "MANUFACTURER='" +
                            manufacturer + "'")
                      : plcLib.Execute("DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" +
                                       manufacturer + "' AND SERIES='" + series + "'");
    }
    if (removed) {
        auto again = plcLib.Query(rowsOfManufacturer);
        if (again && again->Empty()) {
            removed = plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES('" + manufacturer +
                                     "','','','')");
        }
    }
    if (!tables.empty() || removed) {
        Stamp();
    }
    if (!removed) {
        Tell("数据库操作出现错误,请重新删除系列!");
        return false;
    }
    auto& entries = plcLib.Entries();
    std::erase_if(entries, [&](const auto& entry) {
        return SameName(entry->manufacturer, manufacturer) && SameName(entry->series, series);
    });
    // The manufacturer stays, as a placeholder when this was its only series.
    bool manufacturerLeft = false;
    for (const auto& entry : entries) {
        manufacturerLeft = manufacturerLeft || SameName(entry->manufacturer, manufacturer);
    }
    if (!manufacturerLeft) {
        entries.push_back(std::make_unique<CPlcPartData>(manufacturer, "", ""));
    }
    dialog::TreeNode* parent = node->parent;
    tree.Remove(node);
    SelectTreeNode(parent);
    return true;
}
