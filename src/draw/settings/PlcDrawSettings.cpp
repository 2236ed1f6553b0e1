#include "draw/settings/PlcDrawSettings.h"

#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsFile.h"
#include "draw/settings/SettingsText.h"
#include "host/SuiteServices.h"

using drawsettings::FindLabelValue;

namespace {

// Format 1's symbol and lead, used when the file is missing or names no valid format.
void ApplyFormatOneDefaults(PlcDrawSettings& settings) {
    const drawsettings::FormatTerminal terminal = drawsettings::DefaultFormatTerminal(1);
    settings.termSymbolPath = terminal.path;
    settings.termSymbolName = terminal.name;
    settings.typeWidth = 10.0f;
    settings.termDirection = 2;
    settings.termLength = 5.0f;
}

void ApplyMissingFileDefaults(PlcDrawSettings& settings) {
    settings.componentType = 1;
    for (const drawsettings::LabelFlag& flag : drawsettings::LabelFlags()) {
        settings.*flag.flag = true;
    }
    settings.autoDetail = true;
    settings.autoDetailModel = true;
    settings.detailModelType = 0;
    ApplyFormatOneDefaults(settings);
}

// A number the file holds for `key`, as it was read: kept when it lies in the setting's range,
// otherwise warned about and replaced by the setting's default. Empty texts keep the loading
// rules' own defaults and are not checked. A replaced value's text is cleared: the value
// no longer comes from the file.
template <class T>
void CheckLoaded(T& member, double read, const char* key, std::string& text) {
    const drawsettings::SettingRange* range = drawsettings::FindSettingRange(key);
    if (text.empty() || range == nullptr || drawsettings::InSettingRange(*range, read)) {
        return;
    }
    drawsettings::WarnOutOfRange(PlcDrawSettingFilePath(), *range, text);
    member = static_cast<T>(range->fallback);
    text.clear();
}

void Mark(std::set<std::string>* fromFile, const char* member) {
    if (fromFile) {
        fromFile->insert(member);
    }
}

void LoadFlags(PlcDrawSettings& settings, const std::vector<std::string>& lines,
               std::set<std::string>* fromFile) {
    const std::string autoDetail = FindLabelValue(lines, drawsettings::kLabelAutoDetail);
    settings.autoDetail = autoDetail.empty() || autoDetail.find("TRUE") != std::string::npos;
    const std::string autoModel = FindLabelValue(lines, drawsettings::kLabelAutoDetailModel);
    settings.autoDetailModel = autoModel.empty() || autoModel.find("TRUE") != std::string::npos;
    std::string modelType = FindLabelValue(lines, drawsettings::kLabelDetailModelType);
    settings.detailModelType = modelType.empty() ? 0 : drawsettings::ParseInt(modelType);
    CheckLoaded(settings.detailModelType, settings.detailModelType, "detailModelType", modelType);
    if (!autoDetail.empty()) {
        Mark(fromFile, "autoDetail");
    }
    if (!autoModel.empty()) {
        Mark(fromFile, "autoDetailModel");
    }
    if (!modelType.empty()) {
        Mark(fromFile, "detailModelType");
    }
    for (const drawsettings::LabelFlag& flag : drawsettings::LabelFlags()) {
        const std::string value = FindLabelValue(lines, flag.label);
        // The module-code caption alone is off when its line is missing.
        const bool whenMissing = flag.flag != &PlcDrawSettings::labelModuleCodePrefix;
        settings.*flag.flag = value.empty() ? whenMissing : value.find("TRUE") != std::string::npos;
        if (!value.empty()) {
            Mark(fromFile, flag.member);
        }
    }
}

void LoadFormat(PlcDrawSettings& settings, const std::vector<std::string>& lines,
                std::set<std::string>* fromFile) {
    const drawsettings::FormatLabels& labels = drawsettings::LabelsOf(settings.componentType);
    const std::string path = FindLabelValue(lines, labels.path);
    std::string name = FindLabelValue(lines, labels.name);
    std::string direction = FindLabelValue(lines, labels.direction);
    std::string width = FindLabelValue(lines, labels.width);
    std::string length = FindLabelValue(lines, labels.length);
    settings.termSymbolPath = drawsettings::ResolveStoredSymbolPath(path);
    settings.termSymbolName = name;
    // The name also names the symbol's drawing, SYMB2LIB/<name>: it must stay in that folder.
    if (!name.empty() && !drawsettings::IsPlainSymbolName(name)) {
        drawsettings::WarnOutOfRange(PlcDrawSettingFilePath(),
                                     *drawsettings::FindSettingRange("termSymbolName"), name);
        const drawsettings::FormatTerminal fallback =
            drawsettings::DefaultFormatTerminal(settings.componentType);
        settings.termSymbolName = fallback.name;
        settings.termSymbolPath = fallback.path;
        name.clear();
    }
    settings.termDirection = drawsettings::ParseInt(direction);
    CheckLoaded(settings.termDirection, settings.termDirection, "termDirection", direction);
    const double widthRead = drawsettings::ParseReal(width);
    settings.typeWidth = width.empty() ? 10.0f : static_cast<float>(widthRead);
    CheckLoaded(settings.typeWidth, widthRead, "typeWidth", width);
    const double lengthRead = drawsettings::ParseReal(length);
    settings.termLength = static_cast<float>(lengthRead);
    CheckLoaded(settings.termLength, lengthRead, "termLength", length);
    const std::pair<const std::string*, const char*> found[] = {
        {&path, "termSymbolPath"}, {&name, "termSymbolName"}, {&direction, "termDirection"},
        {&width, "typeWidth"},     {&length, "termLength"},
    };
    for (const auto& [value, member] : found) {
        if (!value->empty()) {
            Mark(fromFile, member);
        }
    }
}

}  // namespace

namespace drawsettings {

void PresetPlcDrawSettings(PlcDrawSettings& settings) {
    settings.termSpacing = 10.0f;
    settings.typeWidth = 10.0f;
    settings.termDirection = 0;
    settings.termLength = 2.5f;
}

void LoadPlcDrawSettingsFromLines(PlcDrawSettings& settings, const std::vector<std::string>* lines,
                                  std::set<std::string>* fromFile) {
    if (!lines) {
        ApplyMissingFileDefaults(settings);
        return;
    }
    if (std::string spacing = FindLabelValue(*lines, kLabelSpacing); !spacing.empty()) {
        const double read = ParseReal(spacing);
        settings.termSpacing = static_cast<float>(read);
        CheckLoaded(settings.termSpacing, read, "termSpacing", spacing);
        if (!spacing.empty()) {
            Mark(fromFile, "termSpacing");
        }
    }
    LoadFlags(settings, *lines, fromFile);
    const std::string type = FindLabelValue(*lines, kLabelComponentType);
    settings.componentType = ParseInt(type);
    if (const SettingRange* range = FindSettingRange("componentType");
        !type.empty() && !InSettingRange(*range, settings.componentType)) {
        WarnOutOfRange(PlcDrawSettingFilePath(), *range, type);
    }
    if (settings.componentType >= 1 && settings.componentType <= kFormatCount) {
        Mark(fromFile, "componentType");
        LoadFormat(settings, *lines, fromFile);
        return;
    }
    // No valid format: format 1 with its defaults, and the detail settings as if unset.
    settings.componentType = 1;
    ApplyFormatOneDefaults(settings);
    settings.autoDetail = true;
    settings.autoDetailModel = true;
    settings.detailModelType = 0;
    if (fromFile) {
        fromFile->erase("autoDetail");
        fromFile->erase("autoDetailModel");
        fromFile->erase("detailModelType");
    }
}

}  // namespace drawsettings

void LoadPlcDrawSettingsFromLines(PlcDrawSettings& settings,
                                  const std::vector<std::string>* lines) {
    drawsettings::LoadPlcDrawSettingsFromLines(settings, lines, nullptr);
}

void LoadPlcDrawSettings(PlcDrawSettings& settings) {
    const auto lines = drawsettings::ReadSettingLines();
    LoadPlcDrawSettingsFromLines(settings, lines ? &*lines : nullptr);
}

void InitPlcDrawSettings(PlcDrawSettings& settings) {
    drawsettings::PresetPlcDrawSettings(settings);
    LoadPlcDrawSettings(settings);
}

std::string PlcDrawSettingFilePath() {
    return suite::PathJoin(suite::GetZandrixLocalInstallPath(), "LocalData/PlcDrawSetting.dat");
}
