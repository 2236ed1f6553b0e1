#include "draw/settings/DlgSelectDz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "host/Host.h"
#include "host/SuiteServices.h"

namespace {

bool HasDxfExtension(const std::filesystem::path& path) {
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".dxf";
}

std::string PageText(const char* before, int number, const char* after) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%s%d%s", before, number, after);
    return buffer;
}

}  // namespace

std::vector<TermSymbolEntry> ScanTermSymbols(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<TermSymbolEntry> list;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code fileEc;
        if (!it->is_regular_file(fileEc) || !HasDxfExtension(it->path())) {
            continue;
        }
        list.push_back({it->path().stem().string(), it->path().string()});
    }
    std::sort(list.begin(), list.end(), [](const TermSymbolEntry& a, const TermSymbolEntry& b) {
        return a.blockName < b.blockName;
    });
    return list;
}

std::string TermSymbolFolder() {
    return suite::PathJoin(suite::GetZandrixCommonResInstallPath(), "SYMB2LIB");
}

void CDlgSelectDz::OnInitDialog() {
    Show(ScanTermSymbols(TermSymbolFolder()));
}

void CDlgSelectDz::Show(std::vector<TermSymbolEntry> list) {
    symbols = std::move(list);
    const int count = static_cast<int>(symbols.size());
    pageCount = (count + kCellsPerPage - 1) / kCellsPerPage;
    scrollMin = 1;
    scrollMax = pageCount;
    scrollPos = 1;
    pageCountLabel = PageText("共", pageCount, "页");
    currentPageLabel = "第1页";
    picked = -1;
}

void CDlgSelectDz::OnScroll(int page) {
    scrollPos = std::max(scrollMin, std::min(page, std::max(scrollMin, scrollMax)));
    currentPageLabel = PageText("第", scrollPos, "页");
}

std::vector<const TermSymbolEntry*> CDlgSelectDz::VisibleCells() const {
    std::vector<const TermSymbolEntry*> cells;
    const size_t first = static_cast<size_t>(scrollPos - 1) * kCellsPerPage;
    for (size_t i = first; i < symbols.size() && i < first + kCellsPerPage; ++i) {
        cells.push_back(&symbols[i]);
    }
    return cells;
}

void CDlgSelectDz::OnClickCell(int cell) {
    const int index = (scrollPos - 1) * kCellsPerPage + cell;
    picked = (cell >= 0 && cell < kCellsPerPage && index < static_cast<int>(symbols.size())) ? index
                                                                                             : -1;
}

bool CDlgSelectDz::OnOK() {
    if (picked < 0 || picked >= static_cast<int>(symbols.size())) {
        host::ShowMessage("没有二次符号被选中！", "Zandrix", host::MsgIcon::Exclamation);
        return false;
    }
    const TermSymbolEntry& entry = symbols[picked];
    std::error_code ec;
    if (!std::filesystem::is_regular_file(entry.path, ec)) {
        host::ShowMessage("符号" + entry.blockName + "对应库文件" + entry.path + "已被破坏！",
                          "Zandrix", host::MsgIcon::Exclamation);
        return false;
    }
    chosenName = entry.blockName;
    chosenPath = entry.path;
    return true;
}
