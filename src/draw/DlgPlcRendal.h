// The drawing dialog "PLC元器件参数化绘制": the user picks a module in the library tree,
// chooses its terminals and the side each lead leaves from, types the tag, frame, slot and
// location, and presses a draw button. The dialog never draws: a draw button leaves
// `drawPending` set and sends RENDALFULL or DIVRENDAL to the host, whose run reads this
// object and draws. It also holds the drawing settings (the PlcDrawSettings base).
//
// The controls are plain data (Controls.h) and every user action is a method, so a desktop
// view only mirrors the state and the command-line host and the tests drive it directly.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/Handle.h"
#include "dialog/Controls.h"
#include "dialog/DialogWindow.h"
#include "dialog/LastSelection.h"
#include "dialog/LibraryTree.h"
#include "draw/ModuleChoice.h"
#include "draw/settings/PLCSettingSheetDlg.h"
#include "draw/settings/PlcDrawSettings.h"
#include "plclib/PlcLib.h"

// Texts of the terminal list's direction column. The leading blanks differ on purpose and
// the drawing tells the sides apart only by the characters 上/下/左/右.
inline constexpr std::string_view kDirUp = "向上";
inline constexpr std::string_view kDirDown = "     向下";
inline constexpr std::string_view kDirLeft = "向左";
inline constexpr std::string_view kDirRight = "     向右";
inline constexpr std::string_view kDirRightNewRow = "    向右";  // new rows when 水平 is off

// Terminal-list columns.
enum TermColumn { kColSequence = 0, kColTermValue, kColTermDesc, kColDetailDesc, kColDirection };
// Module-list columns.
enum ModuleColumn { kColCode = 0, kColPoints, kColType, kColDescription, kColRating };

// Terminal-list state images: 1 and 4 mark a terminal as drawn, 0 and 3 do not, 2 is left
// alone by clicks and counts as drawn.
inline constexpr int kMarkOff = 0;
inline constexpr int kMarkOn = 1;
inline bool IsMarked(int stateImage) {
    return stateImage != 0 && stateImage != 3;
}

// Terminal-list pop-up menu: the six patterns and the flip.
enum TermMenuId {
    kMenuAllFirst = 101,
    kMenuAllSecond = 102,
    kMenuEvenFirst = 103,
    kMenuEvenSecond = 104,
    kMenuHalfFirst = 105,
    kMenuHalfSecond = 106,
    kMenuFlip = 107,
};

struct TermMenuEntry {
    int id;
    std::string text;
};

class CDlgPlcRendal : public PlcDrawSettings, public dialog::DialogWindow {
public:
    // Loads the drawing settings and sets libPath and the preview paths; the window does
    // not exist yet.
    CDlgPlcRendal();
    virtual ~CDlgPlcRendal();
    CDlgPlcRendal(const CDlgPlcRendal&) = delete;
    CDlgPlcRendal& operator=(const CDlgPlcRendal&) = delete;

    // --- state shared with the drawing commands -----------------------------------------
    std::string libPath;  // local folder + "PLC/QvPLC.db"
    CPlcLib plcLib;
    CPlcManufacturerInfo manufacturerInfo;
    int orientation = 0;    // 0 horizontal (水平), 1 vertical (垂直)
    int termDirChoice = 0;  // last pattern of the terminal menu, 0..5 (menu id - 101)
    int matchMode = 0;  // 0 前端位置匹配 (code begins with), 1 全字位置匹配 (code contains)
    std::string searchText;
    dialog::LastSelection lastSelection;
    std::string horPreviewPath;  // common folder + "Data/PlcHor.dxf"
    std::string verPreviewPath;  // common folder + "Data/PlcVer.dxf"
    bool drawPending = false;
    bool reshowPending = false;
    bool libLoaded = false;
    std::string selectionText;
    bool drawBusy = false;

    // Written by the drawing.
    int drawActive = 0;
    cad::Handle placedRefId = cad::kNullHandle;  // preview reference kept by the drag
    int drawFinished = 0;
    cad::Handle labelId = cad::kNullHandle;  // the device label of the module being drawn

    // --- controls ------------------------------------------------------------------------
    dialog::TreeModel tree;
    dialog::ListModel moduleList;  // 模块代号, 通道数, 类型, 描述, 额定值
    dialog::ListModel termList;  // 端点序号, 端号, 端点描述, 端点详细描述, 连线端点方向
    std::string editTag;            // 标号
    std::string editFrameNo;        // 框架号
    std::string editSlotNo;         // 槽号
    std::string editShortName;      // 厂家简称
    std::string editModuleCode;     // 模块代号
    std::string editModuleDesc;     // 模块描述
    std::string editLocation;       // 安装位置
    std::string editSearch;         // 模块代码 (search text)
    bool horizontalChecked = true;  // radio 水平 (else 垂直)

    // The window's state (created, visible, minimized, active) is the DialogWindow base.
    std::string focus;             // name of the control holding the focus ("tree", "editTag")
    bool tagTextSelected = false;  // 标号's text is selected after a refused draw
    int listClientWidth = 600;     // client width the list columns are laid out from
    int stateIconWidth = 16;       // width of a terminal row's state icon

    // Called after closing has destroyed the window; the owner deletes the object and clears
    // its pointer to it there. Nothing of the dialog may be touched after it returns.
    std::function<void(CDlgPlcRendal*)> onClosed;
    // Shows the settings sheet modally and says whether it was closed with OK; a view (or a
    // test) supplies it. Without one the sheet counts as cancelled.
    dialog::ModalRunner<CPLCSettingSheetDlg> settingsSheetRunner;

    // --- lifecycle -----------------------------------------------------------------------
    // Creates the window hidden: opens the library (false, and the dialog is cancelled, when
    // that fails), lays out the lists, fills 安装位置 and sets the radios and previews.
    bool Create();
    // Rebuilds the tree from the library and restores the last selection (each PLCRENDAL).
    void Refresh();

    // --- user actions --------------------------------------------------------------------
    void SelectTreeNode(dialog::TreeNode* node);
    void SelectModuleRow(int row);
    // A click in the terminal list at horizontal offset `x` inside the list.
    void OnTermListClick(int x);
    void OnTermListDoubleClick();
    // The pop-up menu's entries for the current orientation.
    std::vector<TermMenuEntry> TermMenuEntries() const;
    void OnTermMenuCommand(int id);
    void OnHorizontal();
    void OnVertical();
    void OnMatchMode(int mode);
    void OnSearch();
    void OnRefresh();
    void OnSettings();
    void OnDrawFull();
    void OnDrawDivided();
    void OnClose();
    // The Enter key: swallowed, so it neither closes the dialog nor presses a button.
    void OnEnter() {}

    // --- helpers shared with the command-line host and the tests ---------------------------
    // Selects the module manufacturer/series/type/code through the tree, as a user would.
    // False when one of the levels is not in the tree.
    bool SelectModulePath(std::string_view manufacturer, std::string_view series,
                          std::string_view type, std::string_view code);
    // Applies pattern 0..5 (menu id - 101) to every row for the current orientation.
    void ApplyDirectionPattern(int choice);
    // Fills 安装位置 from the location stored in the current drawing's saved file.
    void FillLocation();
    // What the draw buttons would draw now: the module and header texts from the fields, the
    // terminals from the list (marked unless their state image is 0 or 3, each on the side
    // its direction text names), the pattern and the orientation.
    draw::ModuleChoice CurrentChoice() const;

private:
    void BuildTree();
    void RestoreLastSelection();
    void FillTypeModules(dialog::TreeNode* typeNode);
    void ShowModule(const CPlcPartData& module);
    CPlcPartData* FindModule(std::string_view manufacturer, std::string_view series,
                             std::string_view type, std::string_view code);
    void SaveLastSelection();
    void FlipSelectedRows();
    bool PrepareDraw();
    void RequestDraw(std::string_view command);
    dialog::TreeNode* SearchFrom(dialog::TreeNode* start);
    bool MatchesSearch(const std::string& code) const;
};
