// The library editor: the tree of manufacturers > series > types > modules, the module list
// of the selected type and the terminal list of the selected module. Every change the user
// makes is written at once to the library, one statement per step, and mirrored into the
// entry list, the tree and the lists, so nothing is ever reloaded whole. It remembers the
// last selection in LocalData/PlcLibEdit.dat and hands over to the drawing command.
//
// The controls are plain data (dialog/Controls.h) and every user action is a method: a
// desktop view mirrors the state and forwards clicks, the command-line host and the tests
// call the same methods. Sub-dialogs run through the ModalRunner members; a missing runner
// counts as Cancel. Every command that opens a sub-dialog (or asks a question) brackets it
// with the host's document lock.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dialog/Controls.h"
#include "dialog/DialogWindow.h"
#include "dialog/LastSelection.h"
#include "dialog/LibraryTree.h"
#include "dialog/ModalRunner.h"
#include "libedit/LibEditDialogs.h"
#include "plclib/PlcLib.h"

namespace libedit {

// Commands of the tree's and the lists' context menus.
enum MenuId {
    kCmdNewManufacturer = 32768,
    kCmdDeleteManufacturer = 32769,
    kCmdRenameManufacturer = 32770,
    kCmdNewSeries = 32771,
    kCmdDeleteSeries = 32772,
    kCmdRenameSeries = 32773,
    kCmdNewType = 32774,
    kCmdDeleteType = 32775,
    kCmdRenameType = 32776,
    kCmdNewModule = 32777,
    kCmdDeleteModule = 32778,
    kCmdRenameModule = 32779,
    kCmdChangeModule = 32780,
    kCmdAppendTerm = 32781,
    kCmdDeleteTerms = 32782,
    kCmdChangeTerm = 32783,
    kCmdInsertTerm = 32784,
    kCmdChangeShortName = 32785,
    kCmdReorderTerms = 32786,
};

struct MenuEntry {
    int id = 0;
    std::string text;
    bool greyed = false;

    bool operator==(const MenuEntry&) const = default;
};

// Module-list columns.
enum ModuleColumn { kModCode = 0, kModPoints, kModType, kModDescription, kModRating };
// Terminal-list columns.
enum TermColumn { kTermSequence = 0, kTermValue, kTermDesc, kTermDetail };

// Set on an entry whose terminal rows have been read from the library; from then on the
// editor keeps them in step itself.
inline constexpr int kTerminalsLoaded = 1;

}  // namespace libedit

class CDlgPlcDataLibEdit : public dialog::DialogWindow {
public:
    // Sets libPath; the window does not exist yet.
    CDlgPlcDataLibEdit();
    virtual ~CDlgPlcDataLibEdit();
    CDlgPlcDataLibEdit(const CDlgPlcDataLibEdit&) = delete;
    CDlgPlcDataLibEdit& operator=(const CDlgPlcDataLibEdit&) = delete;

    // --- state ----------------------------------------------------------------------------
    std::string libPath;  // local folder + "PLC/QvPLC.db"
    CPlcLib plcLib;
    // The current manufacturer, series, type and module code: what PlcLibEdit.dat keeps.
    CPlcManufacturerInfo manufacturerInfo;
    // The label a tree node had when in-place editing began: the old name of a rename.
    std::string oldLabel;
    // The node being edited in place; null when no label edit is under way.
    dialog::TreeNode* editingNode = nullptr;
    std::string statusText;
    std::string editFind;  // the find field
    // Terminal-list sort: the column sorted (-1: none yet) and its direction.
    int sortColumn = -1;
    bool sortAscending = true;

    // --- controls -------------------------------------------------------------------------
    dialog::TreeModel tree;
    dialog::ListModel moduleList;  // 模块代号, 通道数, 类型, 描述, 额定值
    dialog::ListModel termList;    // 端点序号, 端号, 端点描述, 端点详细描述

    // The window's state (created, visible, minimized, active) is the DialogWindow base.
    std::string focus;  // "tree", "moduleList", "termList"
    int moduleListClientWidth = 600;
    int termListClientWidth = 600;

    // --- sub-dialogs, hooks ---------------------------------------------------------------
    dialog::ModalRunner<CDlgNewManufacturer> newManufacturerRunner;  // new and short name
    dialog::ModalRunner<CDlgNewSeries> newSeriesRunner;
    dialog::ModalRunner<CDlgNewSeriesStyle> newSeriesStyleRunner;
    dialog::ModalRunner<CDlgNewModule> newModuleRunner;
    dialog::ModalRunner<CDlgNewTermInfo> newTermInfoRunner;  // append and insert
    dialog::ModalRunner<CDlgChangeModule> changeModuleRunner;
    dialog::ModalRunner<CDlgChangeTermData> changeTermDataRunner;
    dialog::ModalRunner<CDlgTermOrder> termOrderRunner;
    // The import dialog, run modally; true when it closed with OK (the library is then read
    // again and the tree rebuilt). Without one, the import button does nothing.
    std::function<bool()> onImport;
    // Called after closing has written the last selection and closed the library. The owner
    // gives the library back to the server there, and may delete the object: nothing of the
    // dialog may be touched after it returns.
    std::function<void(CDlgPlcDataLibEdit*)> onClosed;

    // --- lifecycle ------------------------------------------------------------------------
    // Creates the window hidden: opens the library (false when that fails) and lays out the
    // two lists' columns.
    bool Create();
    // Reads the library, rebuilds the tree (root "PLC", expanded) and restores the last
    // selection from PlcLibEdit.dat; run before each showing.
    void Refresh();

    // --- user actions: tree ---------------------------------------------------------------
    // Selects a node: fills the module list (a type's modules; a module node's own row,
    // selected), clears the terminal list and sets the status text.
    void SelectTreeNode(dialog::TreeNode* node);
    // A right click: selects the node, then gives the menu entries kept for its level.
    std::vector<libedit::MenuEntry> OnTreeRightClick(dialog::TreeNode* node);
    // The entries of the tree menu for the selected node's level.
    std::vector<libedit::MenuEntry> TreeMenu() const;
    // A command of any of the context menus. True when the command finished its change
    // (or began a label edit); false when it was refused, cancelled or failed.
    bool OnMenuCommand(int id);
    // In-place label edit of a tree node (the root cannot be renamed). Begin keeps the old
    // label; End with a text renames (manufacturer, series, type, module) and says whether
    // the node keeps the new label; End with nullopt cancels the edit.
    bool BeginLabelEdit(dialog::TreeNode* node);
    bool EndLabelEdit(std::optional<std::string> newText);

    // --- user actions: lists --------------------------------------------------------------
    // Selects one module row (-1 clears): fills the terminal list and sets the status text.
    void SelectModuleRow(int row);
    // Selects the given terminal rows (replacing the selection).
    void SelectTermRows(const std::vector<int>& rows);
    std::vector<libedit::MenuEntry> ModuleListMenu() const;
    std::vector<libedit::MenuEntry> TermListMenu() const;
    void OnModuleListDoubleClick();  // change module parameters
    void OnTermListDoubleClick();    // change terminal
    // A left click on a terminal-list column header: sorts by that column.
    void OnTermHeaderClick(int column);

    // --- user actions: buttons ------------------------------------------------------------
    // Finds editFind in the tree after the selected node (without regard to case), asking
    // "搜索已达尾端，是否从头开始？" at the end; true when a node was found and selected.
    bool OnFind();
    void OnImport();
    // The draw button: refused when a type or module is selected and the module list is
    // empty; otherwise closes and sends "(Command)\nPlcRendal\n". True when it closed.
    bool OnDraw();
    // Window close: writes PlcLibEdit.dat, closes the library, destroys the window and calls
    // onClosed.
    void OnClose();

    // --- helpers for the command-line host and the tests ----------------------------------
    // The node of "M", "M/S", "M/S/T" or "M/S/T/CODE" (names as stored), filling a type's
    // modules on the way; null when a level is missing.
    dialog::TreeNode* FindPath(const std::vector<std::string>& names);
    // Selects that node as a click would; false when it is not in the tree.
    bool SelectPath(const std::vector<std::string>& names);
    // The terminal-list row showing sequence `sequence`; -1 when none does.
    int FindTermRow(std::string_view sequence) const;
    // The entry of the current module, or null.
    CPlcPartData* CurrentModule();
    // The last selection as it would be written now.
    dialog::LastSelection CurrentSelection() const;

private:
    // Tree and lists.
    void BuildTree();
    void RestoreLastSelection();
    void SetupColumns();
    void FillModuleList(const dialog::LastSelection& path);
    void FillTermList(CPlcPartData& module);
    void AddModuleRow(const CPlcPartData& module);
    void AddTermRow(const CPlcPartTermData& row);
    void SortTermList();
    void SaveLastSelection();
    bool RunLocked(const std::function<bool()>& body);
    std::string TableOfCurrentType();
    CPlcPartData* FindEntry(std::string_view manufacturer, std::string_view series,
                            std::string_view type, std::string_view code);
    // The entries of one type, in list order (placeholders included).
    std::vector<CPlcPartData*> EntriesOfType(std::string_view manufacturer, std::string_view series,
                                             std::string_view type);
    void FillTypeNode(dialog::TreeNode* typeNode);
    void Stamp();

    // Selections look entries up by type through an index. A command that changes entries
    // drops it on the way in and out (ChangingEntries) and looks entries up directly while
    // it runs, so the index never outlives the entry list it was built from.
    struct ChangingEntries {
        explicit ChangingEntries(CDlgPlcDataLibEdit& dlg);
        ~ChangingEntries();
        CDlgPlcDataLibEdit& dlg;
    };
    std::unordered_map<std::string, std::vector<CPlcPartData*>> typeIndex_;
    bool typeIndexBuilt_ = false;
    int changingEntries_ = 0;

    // The operations, one per command (LibEdit*.cpp).
    bool NewManufacturer();
    bool ChangeShortName();
    bool NewSeries();
    bool NewType();
    bool NewModule();
    bool RenameManufacturer(const std::string& oldName, const std::string& newName);
    bool RenameSeries(const std::string& oldName, const std::string& newName);
    bool RenameType(const std::string& oldName, const std::string& newName);
    bool RenameModule(const std::string& oldName, const std::string& newName);
    bool DeleteManufacturer();
    bool DeleteSeries();
    bool DeleteType();
    bool DeleteModule();
    bool ChangeModule();
    bool AppendTerminal();
    bool InsertTerminal();
    bool DeleteTerminals();
    bool ChangeTerminal();
    bool ReorderTerminals();
};
