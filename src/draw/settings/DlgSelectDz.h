// The terminal-symbol chooser: the single-terminal secondary symbols of the common symbol
// library (one drawing per symbol in SYMB2LIB, named after its block), shown 24 to a page.
#pragma once

#include <string>
#include <vector>

struct TermSymbolEntry {
    std::string blockName;  // the file's base name
    std::string path;       // the drawing file
};

// The .dxf drawings of `folder`, sorted by block name. Empty when the folder cannot be read.
std::vector<TermSymbolEntry> ScanTermSymbols(const std::string& folder);
// The SYMB2LIB folder of the common resource folder.
std::string TermSymbolFolder();

class CDlgSelectDz {
public:
    static constexpr int kCellsPerPage = 24;
    static constexpr const char* kGroupCaptions[3] = {"单端二次符号", "选择", "动态"};

    std::vector<TermSymbolEntry> symbols;
    int pageCount = 0;
    int scrollMin = 1;
    int scrollMax = 1;
    int scrollPos = 1;
    std::string pageCountLabel;    // "共N页"
    std::string currentPageLabel;  // "第N页"
    int picked = -1;               // index into symbols; -1 when nothing is picked

    // Result on OK.
    std::string chosenName;
    std::string chosenPath;

    // Showing the dialog: takes the symbol list from the SYMB2LIB folder.
    void OnInitDialog();
    // Showing it over a given list (the common library's list, or one made by a caller).
    void Show(std::vector<TermSymbolEntry> list);
    // The scroll bar moved to page `page` (clamped to the bar's range).
    void OnScroll(int page);
    // The symbols in the 24 cells of the current page; fewer on the last page.
    std::vector<const TermSymbolEntry*> VisibleCells() const;
    // A click in cell `cell` (0..23) of the current page; a click on an empty cell picks none.
    void OnClickCell(int cell);
    // The OK checks; true when the dialog closes, with chosenName and chosenPath set.
    bool OnOK();
};
