// The library editor's modal sub-dialogs as plain classes: their fields, and the checks made
// when OK is pressed. A runner (dialog::ModalRunner) shows one: it fills the fields the way
// a user types them and calls OnOK(), which either accepts (true: the dialog closes with OK
// and the caller reads the fields) or shows its message and keeps the dialog open (false).
// Warnings carry the exclamation icon and the caption "Zandrix 消息".
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dialog/ModalRunner.h"

namespace libedit {

// Caption of the editor's confirmations and the sub-dialogs' warnings.
inline constexpr const char* kEditorCaption = "Zandrix 消息";

// Blanks (spaces, tabs, line ends) removed at both ends.
std::string Trim(std::string_view text);

// A runner that fills the dialog with `fill` and presses OK once: true when OnOK accepted.
// The command-line host and the tests run the sub-dialogs through it.
template <class Dialog>
dialog::ModalRunner<Dialog> FillAndOk(std::function<void(Dialog&)> fill) {
    return [fill = std::move(fill)](Dialog& dlg) {
        if (fill) {
            fill(dlg);
        }
        return dlg.OnOK();
    };
}

}  // namespace libedit

// New manufacturer (caption "新建厂家"), or, in its editing mode (caption "修改厂家简称"),
// the change of an existing manufacturer's short name.
class CDlgNewManufacturer {
public:
    virtual ~CDlgNewManufacturer() = default;

    std::string caption = "新建厂家";
    std::string fullName;   // 厂家全称; shown only, in the editing mode
    std::string shortName;  // 厂家简称
    // Set by the editor for the editing mode, with the short name the manufacturer has now.
    bool editShortName = false;
    std::string oldShortName;
    // The manufacturers of the library, for the duplicate test of a new one.
    std::vector<std::string> existingManufacturers;

    // Prepares the editing mode: caption, the full name shown and the current short name.
    void SetEditMode(std::string manufacturer, std::string currentShortName);

    // New manufacturer: the full name is trimmed; empty gives "厂家全称不能为空！请重新输入";
    // one equal (without regard to case) to an existing manufacturer gives
    // "厂家 <name> 已经存在,请重新操作!" and clears the field. Editing mode: no check; the
    // new short name is only compared with the old one (ShortNameChanged).
    bool OnOK();
    // Editing mode: whether OK brought a short name other than the old one.
    bool ShortNameChanged() const { return shortName != oldShortName; }
};

// New series under a manufacturer.
class CDlgNewSeries {
public:
    virtual ~CDlgNewSeries() = default;

    std::string manufacturer;  // shown
    std::string seriesName;

    // Trims the name; empty gives "系列名不能为空！请重新输入".
    bool OnOK();
};

// New type (系列类型) under a manufacturer and series. The duplicate test is the editor's.
class CDlgNewSeriesStyle {
public:
    virtual ~CDlgNewSeriesStyle() = default;

    std::string manufacturer;  // shown
    std::string series;        // shown
    std::string typeName;

    bool OnOK() { return true; }
};

// New module under a type: every field is trimmed on OK.
class CDlgNewModule {
public:
    virtual ~CDlgNewModule() = default;

    std::string code;
    std::string points;
    std::string moduleType;
    std::string description;
    std::string rating;

    // Trims the fields; an empty code gives "模块代码名称不能为空！请重新输入".
    bool OnOK();
};

// A new terminal row, appended (caption "添加端点信息") or inserted ("插入端点信息").
class CDlgNewTermInfo {
public:
    virtual ~CDlgNewTermInfo() = default;

    std::string caption = "添加端点信息";
    std::string sequence;  // preset by the editor, shown only
    std::string termValue;
    std::string termDesc;
    std::string detailTermDesc;

    bool OnOK() { return true; }
};

// The parameters of the selected module, preset from its row. The code is shown only: it
// changes by renaming the module's tree node.
class CDlgChangeModule {
public:
    virtual ~CDlgChangeModule() = default;

    std::string code;  // shown
    std::string points;
    std::string moduleType;
    std::string description;
    std::string rating;

    bool OnOK() { return true; }
};

// The contents of the selected terminal row, preset from it.
class CDlgChangeTermData {
public:
    virtual ~CDlgChangeTermData() = default;

    std::string sequence;  // shown
    std::string termValue;
    std::string termDesc;
    std::string detailTermDesc;

    bool OnOK() { return true; }
};

// The terminal ordering dialog: every row of the terminal list (all its cells) in the
// order shown; the user moves rows up and down. After OK, row i (from 1) of `rows` is
// written to sequence i.
class CDlgTermOrder {
public:
    virtual ~CDlgTermOrder() = default;

    // Cells as in the terminal list: sequence, terminal value, description, detail.
    std::vector<std::vector<std::string>> rows;
    int selected = -1;  // the row the buttons move

    // Moves the selected row one place up or down; the selection follows it. False, with
    // nothing moved, at the edge or without a selection.
    bool MoveUp();
    bool MoveDown();
    // Puts the rows in the order of `sequences` (the sequence cells of the current rows,
    // each exactly once). False, with nothing moved, when the list is not such an order.
    bool SetOrder(const std::vector<std::string>& sequences);

    bool OnOK() { return true; }
};
