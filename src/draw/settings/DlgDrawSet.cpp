#include "draw/settings/DlgDrawSet.h"

#include <filesystem>

#include "draw/settings/PlcDrawSettings.h"
#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsFile.h"
#include "draw/settings/SettingsText.h"
#include "draw/settings/TermSymbolMeasure.h"
#include "host/Host.h"

namespace {

void Warn(const std::string& text) {
    host::ShowMessage(text, "Zandrix", host::MsgIcon::Exclamation);
}

}  // namespace

void CDlgDrawSet::MeasureSymbol() {
    // A symbol that cannot be read keeps the direction and length it was given; the OK
    // check then refuses a missing file.
    if (const auto measure = drawsettings::MeasureTerminalSymbol(termPath)) {
        termDirection = measure->direction;
        termLength = measure->length;
    }
    if (termDirection >= 0 && termDirection <= 3) {
        directionSelection = termDirection;
    }
    previewPath = termPath;
}

void CDlgDrawSet::OnInitDialog() {
    MeasureSymbol();
}

void CDlgDrawSet::OnSelectDirection(int index) {
    if (index >= 0 && index < static_cast<int>(kDirectionTexts.size())) {
        directionSelection = index;
    }
}

bool CDlgDrawSet::OnChooseSymbol(const dialog::ModalRunner<CDlgSelectDz>& runChooser) {
    CDlgSelectDz chooser;
    if (!runChooser || !runChooser(chooser)) {
        return false;
    }
    TakeSymbol(chooser.chosenPath, chooser.chosenName);
    return true;
}

void CDlgDrawSet::TakeSymbol(const std::string& path, const std::string& name) {
    termPath = path;
    termName = name;
    MeasureSymbol();
}

bool CDlgDrawSet::OnOK() {
    widthText = drawsettings::RemoveBlanks(widthText);
    if (widthText.empty()) {
        Warn("请输入外框宽度!");
        return false;
    }
    if (!drawsettings::IsUnsignedRealText(widthText)) {
        Warn("外框宽度应为正实数!");
        return false;
    }
    if (!drawsettings::IsUnsignedRealText(spacingText)) {
        Warn("端子间隔应为实数!");
        return false;
    }
    // Beyond the dialog's own checks, the width and the spacing must lie in their ranges: a
    // zero spacing or width collapses the drawing.
    for (const auto& [key, text] :
         {std::pair<const char*, const std::string*>{"typeWidth", &widthText},
          {"termSpacing", &spacingText}}) {
        const drawsettings::SettingRange& range = *drawsettings::FindSettingRange(key);
        if (!drawsettings::InSettingRange(range, drawsettings::ParseReal(*text))) {
            Warn(drawsettings::OutOfRangeText(range, *text));
            return false;
        }
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(termPath, ec)) {
        Warn("符号" + termName + "对应库文件" + termPath + "已被破坏,请选择另外的符号！");
        return false;
    }
    drawsettings::FormatTerminal terminal;
    terminal.path = termPath;
    terminal.name = termName;
    terminal.direction = termDirection;
    terminal.widthText = widthText;
    terminal.length = termLength;
    if (!drawsettings::WriteSettingsFile(PlcDrawSettingFilePath(),
                                         drawsettings::ShortFormText(terminal))) {
        Warn("读写设置文件\\Localdataplcdrawsetting.dat出错！可能是文件设置成了只读。");
        return false;
    }
    return true;
}
