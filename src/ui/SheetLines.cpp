// "dialog sheet ..." lines: what they say on the settings sheet's widgets. A line given while
// no sheet is open is checked and kept until 设置 opens one.
#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include <array>
#include <map>

#include "draw/settings/SettingPages.h"
#include "ui/DialogLines.h"
#include "ui/ModalScript.h"
#include "ui/SettingsViews.h"

namespace ui {

namespace {

const std::map<std::string, int> kLabelKeys = {{"manufacturer", CLabelSettingDlg::Manufacturer},
                                               {"desc", CLabelSettingDlg::ModuleDesc},
                                               {"code", CLabelSettingDlg::ModuleCode},
                                               {"frame", CLabelSettingDlg::FrameNo},
                                               {"slot", CLabelSettingDlg::SlotNo}};
constexpr int kPrefixOffset = CLabelSettingDlg::ManufacturerPrefix;

// Sets a check box by clicking it, as a user would, when it does not show `on` yet.
void ClickTo(QCheckBox* box, bool on) {
    if (box->isChecked() != on) {
        box->click();
    }
}

// A sheet line taken apart; `error` set when it is not one of the forms.
struct SheetLine {
    std::string verb;
    int number = 0;  // format, box or model entry
    bool on = false;
    std::vector<std::pair<std::string, std::string>> terminalSettings;  // symbol/width/spacing
    std::string error;
};

bool OnOff(const std::vector<std::string>& words, size_t at, bool& on) {
    if (words.size() != at + 1 || (words[at] != "on" && words[at] != "off")) {
        return false;
    }
    on = words[at] == "on";
    return true;
}

SheetLine Parse(const std::string& text) {
    const std::vector<std::string> words = SplitWords(text, 64);
    SheetLine line;
    line.verb = words.empty() ? std::string() : words[0];
    const std::string& verb = line.verb;
    if ((verb == "ok" || verb == "cancel") && words.size() == 1) {
        return line;
    }
    if (verb == "format" && words.size() == 2 && words[1].size() == 1 && words[1][0] >= '1' &&
        words[1][0] <= '3') {
        line.number = words[1][0] - '0';
        return line;
    }
    if (verb == "label" || verb == "prefix") {
        const auto key = words.size() > 1 ? kLabelKeys.find(words[1]) : kLabelKeys.end();
        if (key != kLabelKeys.end() && OnOff(words, 2, line.on)) {
            line.number = key->second + (verb == "prefix" ? kPrefixOffset : 0);
            return line;
        }
        line.error = FormatMessage(
            "%s needs manufacturer, desc, code, frame or slot and on or off, as in: dialog sheet "
            "label frame off",
            verb);
        return line;
    }
    if ((verb == "detailname" || verb == "detailmodel") && OnOff(words, 1, line.on)) {
        return line;
    }
    if (verb == "model" && words.size() == 2 && (words[1] == "0" || words[1] == "1")) {
        line.number = words[1][0] - '0';
        return line;
    }
    if (verb == "terminals" && words.size() % 2 == 1) {
        for (size_t i = 1; i < words.size(); i += 2) {
            if (words[i] != "symbol" && words[i] != "width" && words[i] != "spacing") {
                line.error = FormatMessage(
                    "terminals takes symbol NAME, width TEXT and spacing TEXT, not %s", words[i]);
                return line;
            }
            line.terminalSettings.emplace_back(words[i], words[i + 1]);
        }
        return line;
    }
    line.error = FormatMessage("unknown sheet line: %s", text);
    return line;
}

}  // namespace

std::string SettingsSheetView::Play(const std::string& text) {
    const SheetLine line = Parse(text);
    if (!line.error.empty()) {
        return line.error;
    }
    if (line.verb == "ok") {
        ok_->click();
    } else if (line.verb == "cancel") {
        cancel_->click();
    } else if (line.verb == "format") {
        formats_[line.number - 1]->click();
    } else if (line.verb == "label" || line.verb == "prefix") {
        ClickTo(labelBoxes_[line.number], line.on);
    } else if (line.verb == "detailname") {
        ClickTo(autoDetail_, line.on);
    } else if (line.verb == "detailmodel") {
        ClickTo(autoDetailModel_, line.on);
    } else if (line.verb == "model") {
        if (!modelList_->isEnabled()) {
            return "the detail model list is disabled: tick it first with dialog sheet detailmodel "
                   "on";
        }
        modelList_->setCurrentRow(line.number);
    } else if (line.verb == "terminals") {
        QPushButton* button = nullptr;
        for (QPushButton* candidate : termButtons_) {
            button = candidate->isEnabled() ? candidate : button;
        }
        for (const auto& [what, value] : line.terminalSettings) {
            if (what == "symbol") {
                KeepModalLine("symbols", "pick " + value);
                KeepModalLine("symbols", "ok");
                KeepModalLine("terminals", "choose");
            } else {
                KeepModalLine("terminals", what + " " + value);
            }
        }
        KeepModalLine("terminals", "ok");
        if (button != nullptr) {
            button->click();
        }
        DropModalLines("terminals");
        DropModalLines("symbols");
        return TakeModalError();
    }
    return {};
}

std::string RunSheetLine(const std::string& line) {
    if (SettingsSheetView* open = SettingsSheetView::Open()) {
        return open->Play(line);
    }
    const SheetLine parsed = Parse(line);
    if (!parsed.error.empty()) {
        return parsed.error;
    }
    KeepModalLine("sheet", line);
    return {};
}

std::string SheetLineHelp() {
    return "dialog sheet LINE                             kept until 设置 opens the settings "
           "sheet, then done on it in order:\n"
           "  format 1|2|3                                click 格式N\n"
           "  label manufacturer|desc|code|frame|slot on|off    a box of 是否标注\n"
           "  prefix manufacturer|desc|code|frame|slot on|off   a box of 是否添加汉字文字前缀\n"
           "  detailname on|off, detailmodel on|off       the boxes of 明细设置\n"
           "  model 0|1                                   an entry of 明细型号\n"
           "  terminals [symbol NAME] [width W] [spacing S]   端子设置 of the chosen format, then "
           "its OK\n"
           "  ok | cancel                                 close the sheet (a sheet left open is "
           "cancelled)\n";
}

}  // namespace ui
