// The checks the editor's sub-dialogs make when OK is pressed, and the ordering dialog's moves.
#include "libedit/LibEditDialogs.h"

#include <algorithm>

#include "host/Host.h"
#include "plclib/Engine.h"

namespace libedit {

std::string Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    const size_t last = text.find_last_not_of(kBlanks);
    return std::string(text.substr(first, last - first + 1));
}

namespace {

void Warn(std::string_view text) {
    host::ShowMessage(text, kEditorCaption, host::MsgIcon::Exclamation);
}

}  // namespace
}  // namespace libedit

void CDlgNewManufacturer::SetEditMode(std::string manufacturer, std::string currentShortName) {
    editShortName = true;
    caption = "修改厂家简称";
    fullName = std::move(manufacturer);
    oldShortName = currentShortName;
    shortName = std::move(currentShortName);
}

bool CDlgNewManufacturer::OnOK() {
    if (editShortName) {
        return true;
    }
    fullName = libedit::Trim(fullName);
    if (fullName.empty()) {
        libedit::Warn("厂家全称不能为空！请重新输入");
        return false;
    }
    for (const std::string& existing : existingManufacturers) {
        if (plcdb::EqualsIgnoreCase(existing, fullName)) {
            libedit::Warn("厂家 " + fullName + " 已经存在,请重新操作!");
            fullName.clear();
            return false;
        }
    }
    return true;
}

bool CDlgNewSeries::OnOK() {
    seriesName = libedit::Trim(seriesName);
    if (seriesName.empty()) {
        libedit::Warn("系列名不能为空！请重新输入");
        return false;
    }
    return true;
}

bool CDlgNewModule::OnOK() {
    for (std::string* field : {&code, &points, &moduleType, &description, &rating}) {
        *field = libedit::Trim(*field);
    }
    if (code.empty()) {
        libedit::Warn("模块代码名称不能为空！请重新输入");
        return false;
    }
    return true;
}

bool CDlgTermOrder::MoveUp() {
    if (selected <= 0 || selected >= static_cast<int>(rows.size())) {
        return false;
    }
    std::swap(rows[selected], rows[selected - 1]);
    --selected;
    return true;
}

bool CDlgTermOrder::MoveDown() {
    if (selected < 0 || selected + 1 >= static_cast<int>(rows.size())) {
        return false;
    }
    std::swap(rows[selected], rows[selected + 1]);
    ++selected;
    return true;
}

bool CDlgTermOrder::SetOrder(const std::vector<std::string>& sequences) {
    if (sequences.size() != rows.size()) {
        return false;
    }
    std::vector<std::vector<std::string>> ordered;
    std::vector<bool> used(rows.size(), false);
    for (const std::string& sequence : sequences) {
        bool found = false;
        for (size_t i = 0; i < rows.size(); ++i) {
            if (!used[i] && !rows[i].empty() && rows[i][0] == sequence) {
                used[i] = true;
                ordered.push_back(rows[i]);
                found = true;
                break;
            }
        }
        if (!found) {
            return false;
        }
    }
    rows = std::move(ordered);
    selected = -1;
    return true;
}
