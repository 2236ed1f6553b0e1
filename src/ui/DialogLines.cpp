// "dialog ..." script lines: each acts on the open drawing dialog's widgets as the user would,
// so that a script goes through the same view, and the same dialog methods, as the mouse.
#include "ui/DialogLines.h"

#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

#include <memory>

#include "ui/ModalScript.h"
#include "ui/PlcRendalView.h"
#include "ui/SettingsViews.h"
#include "ui/Text.h"
#include "ui/Views.h"

namespace ui {

namespace {

constexpr int kSequenceColumn = 0;
constexpr int kCodeColumn = 0;
constexpr int kFlipId = 107;
constexpr int kFirstPatternId = 101;

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

QTreeWidgetItem* ChildNamed(QTreeWidgetItem* parent, const std::string& name) {
    for (int i = 0; i < parent->childCount(); ++i) {
        if (U(parent->child(i)->text(0)) == name) {
            return parent->child(i);
        }
    }
    return nullptr;
}

QTreeWidgetItem* RowWithText(QTreeWidget* list, int column, const std::string& text) {
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (U(list->topLevelItem(i)->text(column)) == text) {
            return list->topLevelItem(i);
        }
    }
    return nullptr;
}

// A click on a tree item: it becomes the current, selected one.
void ClickItem(QTreeWidget* widget, QTreeWidgetItem* item) {
    widget->setCurrentItem(item);
}

// "MFR/SERIES/TYPE/CODE": the node is clicked; a type whose modules the tree does not show
// yet is clicked first, as a user opens it before picking a module. The code may itself hold
// "/". A path that leaves the tree before its code changes nothing.
std::string SelectPath(PlcRendalView& view, const std::string& path) {
    QTreeWidget* tree = view.Tree();
    QTreeWidgetItem* item = tree->topLevelItem(0);
    const std::string notFound = FormatMessage("no tree node %s", path);
    if (item == nullptr) {
        return notFound;
    }
    if (path == U(item->text(0))) {
        ClickItem(tree, item);
        return {};
    }
    std::vector<std::string> names;
    std::string_view rest = path;
    while (names.size() < 3 && rest.find('/') != std::string_view::npos) {
        names.emplace_back(rest.substr(0, rest.find('/')));
        rest.remove_prefix(rest.find('/') + 1);
    }
    names.emplace_back(rest);
    for (size_t level = 0; level < names.size(); ++level) {
        if (level == 3 && item->childCount() == 0) {
            ClickItem(tree, item);
            item = tree->currentItem();
        }
        item = item != nullptr ? ChildNamed(item, names[level]) : nullptr;
        if (item == nullptr) {
            return notFound;
        }
    }
    ClickItem(tree, item);
    return {};
}

std::string SelectModule(PlcRendalView& view, const std::string& code) {
    QTreeWidgetItem* row = RowWithText(view.ModuleList(), kCodeColumn, code);
    if (row == nullptr) {
        return FormatMessage("no module %s in the module list", code);
    }
    view.ModuleList()->clearSelection();
    view.ModuleList()->setCurrentItem(row);
    return {};
}

std::string Mark(PlcRendalView& view, const std::vector<std::string>& words) {
    if (words.size() != 3 || (words[2] != "on" && words[2] != "off")) {
        return "mark needs a terminal number and on or off, as in: dialog mark 3 off";
    }
    QTreeWidgetItem* row = RowWithText(view.TermList(), kSequenceColumn, words[1]);
    if (row == nullptr) {
        return FormatMessage("no terminal %s in the terminal list", words[1]);
    }
    const Qt::CheckState wanted = words[2] == "on" ? Qt::Checked : Qt::Unchecked;
    if (row->checkState(0) != wanted) {
        view.TermList()->setCurrentItem(row);
        row->setCheckState(0, wanted);
    }
    // The row may have been rebuilt: read the mark the list shows now.
    row = RowWithText(view.TermList(), kSequenceColumn, words[1]);
    if (row == nullptr || row->checkState(0) != wanted) {
        return FormatMessage("the mark of terminal %s stayed as it was", words[1]);
    }
    return {};
}

std::string TriggerMenu(PlcRendalView& view, int id) {
    std::unique_ptr<QMenu> menu(view.MakeTermMenu());
    for (QAction* action : menu->actions()) {
        if (action->data().toInt() == id) {
            action->trigger();
            return {};
        }
    }
    return "the terminal list's menu has no such entry";
}

std::string Pattern(PlcRendalView& view, const std::string& number) {
    const int n = number.size() == 1 ? number[0] - '0' : 0;
    if (n < 1 || n > 6) {
        return FormatMessage("pattern must be a number from 1 to 6: %s", number);
    }
    return TriggerMenu(view, kFirstPatternId + n - 1);
}

// Selects the rows of the given terminal numbers and chooses the menu's flip.
std::string Flip(PlcRendalView& view, const std::vector<std::string>& words) {
    if (words.size() < 2) {
        return "flip needs the terminal numbers, as in: dialog flip 1 3";
    }
    QTreeWidget* list = view.TermList();
    std::vector<QTreeWidgetItem*> rows;
    for (size_t i = 1; i < words.size(); ++i) {
        QTreeWidgetItem* row = RowWithText(list, kSequenceColumn, words[i]);
        if (row == nullptr) {
            return FormatMessage("no terminal %s in the terminal list", words[i]);
        }
        rows.push_back(row);
    }
    list->clearSelection();
    for (QTreeWidgetItem* row : rows) {
        row->setSelected(true);
    }
    return TriggerMenu(view, kFlipId);
}

std::string SetField(PlcRendalView& view, const std::vector<std::string>& words) {
    QLineEdit* edit = words.size() >= 2 ? view.Edit(words[1]) : nullptr;
    if (edit == nullptr) {
        return FormatMessage(
            "unknown field %s; the fields are tag, frame, slot, location, shortname, code, desc, "
            "search",
            words.size() >= 2 ? words[1] : std::string());
    }
    edit->setText(Q(words.size() >= 3 ? words[2] : std::string()));
    return {};
}

std::string Press(PlcRendalView& view, const std::string& name) {
    QPushButton* button = view.Button(name);
    if (button == nullptr) {
        return FormatMessage(
            "unknown button %s; the buttons are search, refresh, settings, draw, divided, close",
            name);
    }
    if (name == "settings") {
        // A script cannot answer a sheet that waits for the user: one left open is cancelled.
        KeepModalLine("sheet", "cancel");
    }
    button->click();
    // Lines kept for the settings sheet were played on it while it was open.
    return TakeModalError();
}

std::string Orientation(PlcRendalView& view, const std::string& which) {
    if (which == "horizontal") {
        view.HorizontalRadio()->click();
    } else if (which == "vertical") {
        view.VerticalRadio()->click();
    } else {
        return FormatMessage("orientation must be horizontal or vertical: %s", which);
    }
    return {};
}

std::string Match(PlcRendalView& view, const std::string& which) {
    if (which != "begin" && which != "contains") {
        return FormatMessage("match must be begin or contains: %s", which);
    }
    view.MatchRadio(which == "contains" ? 1 : 0)->click();
    return {};
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line, size_t maxWords) {
    std::vector<std::string> words;
    std::string_view rest = Trim(line);
    while (!rest.empty()) {
        if (words.size() + 1 == maxWords) {
            words.emplace_back(rest);
            break;
        }
        const auto blank = rest.find_first_of(" \t");
        words.emplace_back(rest.substr(0, blank));
        rest = blank == std::string_view::npos ? std::string_view() : Trim(rest.substr(blank));
    }
    return words;
}

std::string FormatMessage(const char* format, std::string_view value) {
    std::string text(format);
    const auto at = text.find("%s");
    if (at != std::string::npos) {
        text.replace(at, 2, value);
    }
    return text;
}

std::string RunDialogLine(std::string_view line) {
    std::string_view rest = Trim(line);
    if (rest.substr(0, 6) == "dialog" && (rest.size() == 6 || rest[6] == ' ' || rest[6] == '\t')) {
        rest = Trim(rest.substr(6));
    }
    const std::vector<std::string> head = SplitWords(rest, 2);
    if (head.empty()) {
        return "an empty dialog line; the forms are:\n" + DialogLineHelp();
    }
    const std::string& verb = head[0];
    if (verb == "sheet") {
        return RunSheetLine(head.size() > 1 ? head[1] : std::string());
    }
    PlcRendalView* view = PlcRendalView::Current();
    if (view == nullptr) {
        return "no drawing dialog is open: run PLCRENDAL first";
    }
    const std::string argument = head.size() > 1 ? head[1] : std::string();
    if (verb == "select" && !argument.empty()) {
        return SelectPath(*view, argument);
    }
    if (verb == "module" && !argument.empty()) {
        return SelectModule(*view, argument);
    }
    if (verb == "mark") {
        return Mark(*view, SplitWords(rest, 3));
    }
    if (verb == "pattern") {
        return Pattern(*view, argument);
    }
    if (verb == "flip") {
        return Flip(*view, SplitWords(rest, 1000));
    }
    if (verb == "set") {
        return SetField(*view, SplitWords(rest, 3));
    }
    if (verb == "search") {
        view->Edit("search")->setText(Q(argument));
        return Press(*view, "search");
    }
    if (verb == "orientation") {
        return Orientation(*view, argument);
    }
    if (verb == "match") {
        return Match(*view, argument);
    }
    if (verb == "press") {
        return Press(*view, argument);
    }
    return FormatMessage("unknown dialog line: %s", line);
}

std::string DialogLineHelp() {
    return "dialog select MANUFACTURER/SERIES/TYPE/CODE   click the tree down to that node (fewer "
           "levels stop higher)\n"
           "dialog module CODE                            select a row of the module list\n"
           "dialog mark SEQ on|off                        tick or clear a terminal's mark\n"
           "dialog pattern N                              choose direction pattern N (1-6) from "
           "the terminal list's menu\n"
           "dialog flip SEQ...                            select those terminals and choose the "
           "menu's flip\n"
           "dialog set FIELD TEXT                         type TEXT into tag, frame, slot, "
           "location, shortname, code, desc or search\n"
           "dialog orientation horizontal|vertical        click 水平 or 垂直\n"
           "dialog match begin|contains                   click 前端位置匹配 or 全字位置匹配\n"
           "dialog search TEXT                            type TEXT into 模块代码 and click 搜索\n"
           "dialog press search|refresh|settings|draw|divided|close   click that button\n" +
           SheetLineHelp();
}

}  // namespace ui
