// Types (系列类型): new, rename, delete. A type's modules live in its own module table and
// terminal table, named once when the type is made.
#include <algorithm>

#include "libedit/DlgPlcDataLibEdit.h"
#include "libedit/LibEditCommon.h"

using namespace libedit;

namespace libedit {

// The module table of a new type: manufacturer_series_type, trimmed, with blanks and "-"
// made "_" ("S7-300 A" under X and Y gives X_Y_S7_300_A).
std::string NewTableName(const std::string& manufacturer, const std::string& series,
                         const std::string& type) {
    std::string table = Trim(manufacturer + "_" + series + "_" + type);
    std::replace(table.begin(), table.end(), ' ', '_');
    std::replace(table.begin(), table.end(), '-', '_');
    return table;
}

}  // namespace libedit

bool CDlgPlcDataLibEdit::NewType() {
    dialog::TreeNode* node = tree.Selected();
    const std::string manufacturer = node->parent->text;
    const std::string series = node->text;
    CDlgNewSeriesStyle dlg;
    dlg.manufacturer = manufacturer;
    dlg.series = series;
    if (!RunModal(newSeriesStyleRunner, dlg)) {
        return false;
    }
    const std::string& type = dlg.typeName;
    for (const auto& entry : plcLib.Entries()) {
        if (SameName(entry->manufacturer, manufacturer) && SameName(entry->series, series) &&
            SameName(entry->type, type)) {
            Tell("厂家 " + manufacturer + " 的系列 " + series + "的系列类型 " + type +
                 " \n已经存在,请重新操作!");
            return false;
        }
    }
    if (!plcdb::CheckValues({manufacturer, series, type})) {
        return false;
    }
    const std::string table = NewTableName(manufacturer, series, type);
    // A series without types has one placeholder row; its first type fills it.
    const bool hasType =
        plcLib.HasSeriesOrType("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER ='" +
                                   manufacturer + "' AND SERIES='" + series + "'",
                               3);
    const bool added =
        hasType ? plcLib.Execute("INSERT INTO PLC_MANUFACTURER VALUES ('" + manufacturer + "','" +
                                 series + "','" + type + "','" + table + "')")
                : plcLib.Execute("UPDATE PLC_MANUFACTURER SET TYPE='" + type + "',TABLE_NAME='" +
                                 table + "' WHERE TYPE='' AND SERIES='" + series +
                                 "' AND MANUFACTURER='" + manufacturer + "'");
    if (!added) {
        Tell("新建系列类型时向数据库添加数据时出错!");
        return false;
    }
    plcLib.Execute("Create TABLE " + table +
                   "(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION "
                   "CHAR(60),RATING CHAR(60),primary key(CODE))");
    plcLib.Execute("Create TABLE " + table +
                   "_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue "
                   "CHAR(60),TERMDESC CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))");
    Stamp();
    CPlcPartData* placeholder = hasType ? nullptr : FindEntry(manufacturer, series, "", "");
    if (placeholder != nullptr) {
        placeholder->type = type;
    } else {
        plcLib.Entries().push_back(std::make_unique<CPlcPartData>(manufacturer, series, type));
    }
    tree.Insert(node, type, dialog::kImageType);
    tree.Expand(node);
    return true;
}

bool CDlgPlcDataLibEdit::RenameType(const std::string& oldName, const std::string& newName) {
    const dialog::LastSelection path = dialog::PathOf(editingNode);
    if (!plcdb::CheckValues({newName, oldName, path.series, path.manufacturer})) {
        return false;
    }
    for (const auto& entry : plcLib.Entries()) {
        if (SameName(entry->manufacturer, path.manufacturer) &&
            SameName(entry->series, path.series) && SameName(entry->type, oldName)) {
            entry->type = newName;
        }
    }
    tree.SetText(editingNode, newName);
    if (manufacturerInfo.manufacturer == path.manufacturer &&
        manufacturerInfo.series == path.series && SameName(manufacturerInfo.type, oldName)) {
        manufacturerInfo.type = newName;
    }
    // The type keeps its table: TABLE_NAME stays as it was.
    if (!plcLib.Execute("UPDATE PLC_MANUFACTURER SET TYPE='" + newName + "' WHERE TYPE='" +
                        oldName + "' AND SERIES='" + path.series + "' AND MANUFACTURER='" +
                        path.manufacturer + "'")) {
        return false;
    }
    Stamp();
    return true;
}

bool CDlgPlcDataLibEdit::DeleteType() {
    dialog::TreeNode* node = tree.Selected();
    const dialog::LastSelection path = dialog::PathOf(node);
    const std::string& manufacturer = path.manufacturer;
    const std::string& series = path.series;
    const std::string& type = path.type;
    if (!Confirm("这将删除厂家为 " + manufacturer + " ,系列为 " + series + " ,类型为 " + type +
                 " 的数据库中的所有模块!\n\n确实要执行此操作 ?")) {
        return false;
    }
    if (!plcdb::CheckValues({manufacturer, series, type})) {
        return false;
    }
    const std::string table = plcLib.GetTableName(manufacturer, series, type);
    if (!table.empty()) {
        plcLib.Execute("Drop table " + table);
        plcLib.Execute("Drop table " + table + "_data");
    }
    auto rows = plcLib.Query("SELECT * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" + manufacturer +
                             "' AND SERIES='" + series + "'");
    bool removed = false;
    if (rows) {
        // The series' only row becomes its placeholder.
        removed = rows->RowCount() < 2
                      ? plcLib.Execute(
                            "UPDATE PLC_MANUFACTURER SET TYPE='',TABLE_NAME='' WHERE "
                            "MANUFACTURER='" +
                            manufacturer + "' AND SERIES='" + series + "'")
                      : plcLib.Execute("DELETE * FROM PLC_MANUFACTURER WHERE MANUFACTURER='" +
                                       manufacturer + "' AND SERIES='" + series + "' AND TYPE='" +
                                       type + "'");
    }
    if (!table.empty() || removed) {
        Stamp();
    }
    if (!removed) {
        return false;
    }
    auto& entries = plcLib.Entries();
    std::erase_if(entries, [&](const auto& entry) {
        return SameName(entry->manufacturer, manufacturer) && SameName(entry->series, series) &&
               SameName(entry->type, type);
    });
    bool seriesLeft = false;
    for (const auto& entry : entries) {
        seriesLeft = seriesLeft || (SameName(entry->manufacturer, manufacturer) &&
                                    SameName(entry->series, series));
    }
    if (!seriesLeft) {
        entries.push_back(std::make_unique<CPlcPartData>(manufacturer, series, ""));
    }
    dialog::TreeNode* parent = node->parent;
    tree.Remove(node);
    SelectTreeNode(parent);
    return true;
}
