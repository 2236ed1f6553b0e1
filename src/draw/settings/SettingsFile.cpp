#include "draw/settings/SettingsFile.h"

#include <algorithm>
#include <filesystem>

#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsText.h"
#include "files/TextFile.h"
#include "host/SuiteServices.h"

namespace drawsettings {
namespace {

constexpr const char* kDefaultNames[kFormatCount] = {"SYMB2_S_KTR5", "SYMB2_S_KTR17",
                                                     "SYMB2_S_KTR211"};
constexpr const char* kPreviewFiles[kFormatCount] = {"Data/PLCType_A.dxf", "Data/PLCType_B.dxf",
                                                     "Data/PLCType_C.dxf"};

int FormatIndex(int format) {
    return (format >= 1 && format <= kFormatCount) ? format - 1 : 0;
}

const char* TrueFalse(bool value) {
    return value ? "TRUE" : "FALSE";
}

bool IsInsideFolder(std::string_view path, std::string_view folder) {
    while (!folder.empty() && folder.back() == '/') {
        folder.remove_suffix(1);
    }
    return !folder.empty() && path.size() > folder.size() &&
           path.substr(0, folder.size()) == folder && path[folder.size()] == '/';
}

}  // namespace

const FormatLabels& LabelsOf(int format) {
    static const FormatLabels labels[kFormatCount] = {
        {"端子A路径:", "端子A名称:", "端子A方向:", "类型A宽度:", "端子A长度:"},
        {"端子B路径:", "端子B名称:", "端子B方向:", "类型B宽度:", "端子B长度:"},
        {"端子C路径:", "端子C名称:", "端子C方向:", "类型C宽度:", "端子C长度:"},
    };
    return labels[FormatIndex(format)];
}

const std::array<LabelFlag, 10>& LabelFlags() {
    static const std::array<LabelFlag, 10> flags = {{
        {"标注槽号前缀:", "labelSlotPrefix", &PlcDrawSettings::labelSlotPrefix},
        {"标注框架前缀:", "labelFramePrefix", &PlcDrawSettings::labelFramePrefix},
        {"标注厂家前缀:", "labelManufacturerPrefix", &PlcDrawSettings::labelManufacturerPrefix},
        {"标注模块代号前缀:", "labelModuleCodePrefix", &PlcDrawSettings::labelModuleCodePrefix},
        {"标注模块描述前缀:", "labelModuleDescPrefix", &PlcDrawSettings::labelModuleDescPrefix},
        {"标注厂家:", "labelManufacturer", &PlcDrawSettings::labelManufacturer},
        {"标注框架号:", "labelFrameNo", &PlcDrawSettings::labelFrameNo},
        {"标注槽号:", "labelSlotNo", &PlcDrawSettings::labelSlotNo},
        {"标注模块描述:", "labelModuleDesc", &PlcDrawSettings::labelModuleDesc},
        {"标注模块代号:", "labelModuleCode", &PlcDrawSettings::labelModuleCode},
    }};
    return flags;
}

FormatTerminal DefaultFormatTerminal(int format) {
    FormatTerminal terminal;
    terminal.name = kDefaultNames[FormatIndex(format)];
    terminal.path = SymbolPathFor(terminal.name);
    return terminal;
}

std::string SymbolPathFor(std::string_view name) {
    return suite::PathJoin(suite::GetZandrixCommonResInstallPath(),
                           "SYMB2LIB/" + std::string(name) + ".dxf");
}

std::string FormatPreviewPath(int format) {
    return suite::PathJoin(suite::GetZandrixCommonResInstallPath(),
                           kPreviewFiles[FormatIndex(format)]);
}

std::string ResolveStoredSymbolPath(const std::string& stored) {
    std::error_code ec;
    if (!stored.empty() && std::filesystem::is_regular_file(stored, ec)) {
        return stored;
    }
    // A file written by the Windows suite names its drawings with backslashes and ".dwg";
    // here the same drawing is the ".dxf" of that name.
    std::string path = suite::NativePath(stored);
    constexpr std::string_view kDwg = ".dwg";
    if (path.size() >= kDwg.size()) {
        std::string ext = path.substr(path.size() - kDwg.size());
        std::transform(ext.begin(), ext.end(), ext.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (ext == kDwg) {
            path.replace(path.size() - kDwg.size(), kDwg.size(), ".dxf");
        }
    }
    // A path already inside the common folder stays as it is: joining it again would make it
    // grow by the folder on every save of a settings file whose symbol is missing.
    const std::string common = suite::GetZandrixCommonResInstallPath();
    if (IsInsideFolder(path, common)) {
        return path;
    }
    return suite::PathJoin(common, path);
}

std::optional<std::vector<std::string>> ReadSettingLines() {
    const std::string path = PlcDrawSettingFilePath();
    // A folder standing where the file should be opens on this platform but holds no file.
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
        return std::nullopt;
    }
    RememberSettingsRead(path);
    return files::ReadLines(path);
}

FormatTerminals LoadFormatTerminals(const std::vector<std::string>* lines) {
    FormatTerminals formats;
    for (int format = 1; format <= kFormatCount; ++format) {
        FormatTerminal& terminal = formats[format - 1];
        terminal = DefaultFormatTerminal(format);
        if (!lines) {
            continue;
        }
        const FormatLabels& labels = LabelsOf(format);
        if (std::string name = FindLabelValue(*lines, labels.name); !name.empty()) {
            terminal.name = std::move(name);
        }
        if (std::string path = FindLabelValue(*lines, labels.path); !path.empty()) {
            terminal.path = ResolveStoredSymbolPath(path);
        }
        if (std::string width = FindLabelValue(*lines, labels.width); !width.empty()) {
            terminal.widthText = std::move(width);
        }
        if (std::string length = FindLabelValue(*lines, labels.length); !length.empty()) {
            terminal.length = static_cast<float>(ParseReal(length));
        }
        if (std::string direction = FindLabelValue(*lines, labels.direction); !direction.empty()) {
            terminal.direction = ParseInt(direction);
        }
    }
    return formats;
}

void CheckFormatTerminal(FormatTerminal& terminal, int format) {
    const FormatTerminal fallback = DefaultFormatTerminal(format);
    const std::string path = PlcDrawSettingFilePath();
    auto check = [&path](const char* key, double value, const std::string& text) {
        const SettingRange& range = *FindSettingRange(key);
        if (InSettingRange(range, value)) {
            return true;
        }
        WarnOutOfRange(path, range, text);
        return false;
    };
    if (!IsPlainSymbolName(terminal.name)) {
        WarnOutOfRange(path, *FindSettingRange("termSymbolName"), terminal.name);
        terminal.name = fallback.name;
        terminal.path = fallback.path;
    }
    if (!check("typeWidth", ParseReal(terminal.widthText), terminal.widthText)) {
        terminal.widthText = fallback.widthText;
    }
    if (!check("termLength", terminal.length, FormatFixed(terminal.length, 6))) {
        terminal.length = fallback.length;
    }
    if (!check("termDirection", terminal.direction, std::to_string(terminal.direction))) {
        terminal.direction = fallback.direction;
    }
}

std::string FullFormText(const FormatTerminals& formats, const PlcDrawSettings& settings) {
    const std::string localFolder = suite::GetZandrixLocalInstallPath();
    std::string text;
    auto line = [&text](const char* label, const std::string& value) {
        text += label;
        text += value;
        text += '\n';
    };
    for (int format = 1; format <= kFormatCount; ++format) {
        const FormatTerminal& terminal = formats[format - 1];
        const FormatLabels& labels = LabelsOf(format);
        line(labels.path, RemoveFolder(terminal.path, localFolder));
        line(labels.name, terminal.name);
        line(labels.direction, std::to_string(terminal.direction));
        line(labels.width, terminal.widthText);
        line(labels.length, FormatFixed(terminal.length, 6));
    }
    line(kLabelComponentType, std::to_string(settings.componentType));
    line(kLabelAutoDetail, TrueFalse(settings.autoDetail));
    line(kLabelAutoDetailModel, TrueFalse(settings.autoDetailModel));
    line(kLabelDetailModelType, std::to_string(settings.detailModelType));
    for (const LabelFlag& flag : LabelFlags()) {
        line(flag.label, TrueFalse(settings.*flag.flag));
    }
    line(kLabelSpacing, FormatFixed(settings.termSpacing, 1));
    return text;
}

std::string ShortFormText(const FormatTerminal& terminal) {
    std::string text;
    text += RemoveFolder(terminal.path, suite::GetZandrixLocalInstallPath()) + '\n';
    text += terminal.name + '\n';
    text += std::to_string(terminal.direction) + '\n';
    text += terminal.widthText + '\n';
    text += FormatFixed(terminal.length, 6) + '\n';
    return text;
}

}  // namespace drawsettings
