// qvplc settings: shows the drawing settings and changes them through the settings sheet, so
// that a change made here is checked and stored exactly as one made in the sheet.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Args.h"
#include "Commands.h"
#include "ExitCodes.h"
#include "FileErrors.h"
#include "draw/settings/PLCSettingSheetDlg.h"
#include "draw/settings/SettingRanges.h"
#include "draw/settings/SettingsFile.h"
#include "draw/settings/SettingsText.h"
#include "files/FileIdentity.h"
#include "files/UpdateLock.h"

namespace cli {
namespace {

enum class KeyKind {
    Format,
    Symbol,
    Width,
    Spacing,
    LabelBox,
    AutoDetail,
    AutoModel,
    ModelType,
    Measured
};

struct KeyInfo {
    const char* name;
    KeyKind kind;
    int box;  // the label page's box for KeyKind::LabelBox
};

const std::vector<KeyInfo>& Keys() {
    static const std::vector<KeyInfo> keys = {
        {"componentType", KeyKind::Format, 0},
        {"termSymbolName", KeyKind::Symbol, 0},
        {"termSymbolPath", KeyKind::Measured, 0},
        {"termDirection", KeyKind::Measured, 0},
        {"termLength", KeyKind::Measured, 0},
        {"typeWidth", KeyKind::Width, 0},
        {"termSpacing", KeyKind::Spacing, 0},
        {"labelManufacturer", KeyKind::LabelBox, CLabelSettingDlg::Manufacturer},
        {"labelModuleDesc", KeyKind::LabelBox, CLabelSettingDlg::ModuleDesc},
        {"labelModuleCode", KeyKind::LabelBox, CLabelSettingDlg::ModuleCode},
        {"labelFrameNo", KeyKind::LabelBox, CLabelSettingDlg::FrameNo},
        {"labelSlotNo", KeyKind::LabelBox, CLabelSettingDlg::SlotNo},
        {"labelManufacturerPrefix", KeyKind::LabelBox, CLabelSettingDlg::ManufacturerPrefix},
        {"labelModuleDescPrefix", KeyKind::LabelBox, CLabelSettingDlg::ModuleDescPrefix},
        {"labelModuleCodePrefix", KeyKind::LabelBox, CLabelSettingDlg::ModuleCodePrefix},
        {"labelFramePrefix", KeyKind::LabelBox, CLabelSettingDlg::FramePrefix},
        {"labelSlotPrefix", KeyKind::LabelBox, CLabelSettingDlg::SlotPrefix},
        {"autoDetail", KeyKind::AutoDetail, 0},
        {"autoDetailModel", KeyKind::AutoModel, 0},
        {"detailModelType", KeyKind::ModelType, 0},
    };
    return keys;
}

const char* kGroupHelp =
    "usage: qvplc settings <command> [options]\n\n"
    "Commands:\n"
    "  show   every drawing setting, and whether it came from the settings file\n"
    "  set    change settings as the settings sheet does, and store them\n\n"
    "The settings live in LocalData/PlcDrawSetting.dat below the local installation folder\n"
    "(ZANDRIX_LOCAL_DIR). Every command takes --help.\n";

const CommandSpec kShowSpec{
    "qvplc settings show",
    "Prints the drawing settings as the drawing dialog loads them, one KEY = VALUE line each,\n"
    "marked (file) when the value was read from the settings file and (default) otherwise,\n"
    "after a line that names the file and says what shape it is in.",
    {},
    "A file left in the five-line short form (the terminal settings were confirmed but the\n"
    "sheet was cancelled) has no labels and reads as defaults.\n\n"
    "Example:\n  qvplc settings show"};

const CommandSpec kSetSpec{
    "qvplc settings set KEY=VALUE ...",
    "Changes drawing settings through the settings sheet and confirms it, which rewrites the\n"
    "settings file in full. The keys are the settings' names:\n"
    "  componentType=1|2|3         the drawing format in use\n"
    "  termSymbolName=NAME         terminal symbol of that format: SYMB2LIB/NAME.dxf in the\n"
    "                              common resource folder; its direction and lead length are\n"
    "                              measured from the drawing\n"
    "  typeWidth=W                 frame width of that format, a real number above 0\n"
    "  termSpacing=S               distance between terminals (all formats), above 0\n"
    "  labelManufacturer, labelModuleDesc, labelModuleCode, labelFrameNo, labelSlotNo,\n"
    "  labelManufacturerPrefix, labelModuleDescPrefix, labelModuleCodePrefix,\n"
    "  labelFramePrefix, labelSlotPrefix, autoDetail, autoDetailModel=true|false\n"
    "  detailModelType=0|1         detail model: 0 module code, 1 maker's short name and code\n"
    "termSymbolPath, termDirection and termLength follow from termSymbolName and cannot be\n"
    "set. termSymbolName, typeWidth and termSpacing go through the terminal settings of the\n"
    "format, which check them (and that the format's symbol drawing exists) as the dialog\n"
    "does; the symbols SYMB2_S_01..04 get a lead of 5.0, SYMB2_S_20 and SYMB2_S_210 of 3.75.",
    {},
    "Examples:\n"
    "  qvplc settings set componentType=2 termSpacing=7.5\n"
    "  qvplc settings set labelSlotNo=false termSymbolName=SYMB2_S_20\n\n"
    "A bad key or value is a usage error naming it, and the file is left untouched."};

const KeyInfo* FindKey(const std::string& name) {
    for (const KeyInfo& key : Keys()) {
        if (name == key.name) {
            return &key;
        }
    }
    return nullptr;
}

bool ParseBool(const std::string& text, bool& value) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "true" || lower == "1" || lower == "yes") {
        value = true;
        return true;
    }
    if (lower == "false" || lower == "0" || lower == "no") {
        value = false;
        return true;
    }
    return false;
}

bool ParseWholeInt(const std::string& text, int& value) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

std::string ShortestText(float value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

// One KEY=VALUE checked on its own; an empty result means it is good.
std::string CheckValue(const KeyInfo& key, const std::string& value) {
    int number = 0;
    bool flag = false;
    switch (key.kind) {
        case KeyKind::Format:
            return ParseWholeInt(value, number) && number >= 1 && number <= 3 ? ""
                                                                              : "must be 1, 2 or 3";
        case KeyKind::ModelType:
            return ParseWholeInt(value, number) && (number == 0 || number == 1) ? ""
                                                                                : "must be 0 or 1";
        case KeyKind::LabelBox:
        case KeyKind::AutoDetail:
        case KeyKind::AutoModel:
            return ParseBool(value, flag) ? "" : "must be true or false";
        case KeyKind::Width:
        case KeyKind::Spacing: {
            const std::string text =
                key.kind == KeyKind::Width ? drawsettings::RemoveBlanks(value) : value;
            const drawsettings::SettingRange& range = *drawsettings::FindSettingRange(key.name);
            return drawsettings::IsUnsignedRealText(text) &&
                           drawsettings::InSettingRange(range, drawsettings::ParseReal(text))
                       ? ""
                       : "must be a real number " + drawsettings::SettingRangeText(range);
        }
        case KeyKind::Symbol: {
            if (!drawsettings::IsPlainSymbolName(value)) {
                return "must be a file name in SYMB2LIB, without '/'";
            }
            const std::string path = drawsettings::SymbolPathFor(value);
            std::error_code ec;
            if (!std::filesystem::is_regular_file(path, ec)) {
                return "names no symbol drawing (" + path + ")";
            }
            return "";
        }
        case KeyKind::Measured:
            return "cannot be set: it follows from termSymbolName";
    }
    return "";
}

using Changes = std::map<std::string, std::string>;

// Reads KEY=VALUE arguments; false, after a usage error naming the culprit, on any fault.
bool ReadChanges(const std::vector<std::string>& args, Changes& changes) {
    for (const std::string& arg : args) {
        const auto eq = arg.find('=');
        const std::string name = arg.substr(0, eq);
        const KeyInfo* key = FindKey(name);
        std::string problem;
        if (eq == std::string::npos) {
            problem = "'" + arg + "' is not KEY=VALUE";
        } else if (!key) {
            problem = "unknown key '" + name + "'";
        } else if (changes.count(name)) {
            problem = "key '" + name + "' given twice";
        } else if (std::string bad = CheckValue(*key, arg.substr(eq + 1)); !bad.empty()) {
            problem = name + "=" + arg.substr(eq + 1) + ": " + name + " " + bad;
        }
        if (!problem.empty()) {
            std::fprintf(
                stderr,
                "qvplc settings: %s\nusage: %s\nTry 'qvplc settings set --help' for the keys.\n",
                problem.c_str(), kSetSpec.usage.c_str());
            return false;
        }
        changes[name] = arg.substr(eq + 1);
    }
    if (changes.empty()) {
        std::fprintf(stderr, "qvplc settings: nothing to set\nusage: %s\n", kSetSpec.usage.c_str());
        return false;
    }
    return true;
}

// The format page's terminal settings, as a user confirms them after changing the symbol,
// the width or the spacing.
bool ApplyTerminalChanges(CPLCSettingSheetDlg& sheet, const Changes& changes) {
    if (!changes.count("termSymbolName") && !changes.count("typeWidth") &&
        !changes.count("termSpacing")) {
        return true;
    }
    return sheet.drawPage.OnTermSetting(sheet.drawPage.selectedFormat, [&](CDlgDrawSet& dialog) {
        dialog.OnInitDialog();
        if (const auto it = changes.find("termSymbolName"); it != changes.end()) {
            dialog.TakeSymbol(drawsettings::SymbolPathFor(it->second), it->second);
        }
        if (const auto it = changes.find("typeWidth"); it != changes.end()) {
            dialog.widthText = it->second;
        }
        if (const auto it = changes.find("termSpacing"); it != changes.end()) {
            dialog.spacingText = it->second;
        }
        return dialog.OnOK();
    });
}

// The sheet's pages as the user leaves them; false when the terminal settings refused.
bool ApplyChanges(CPLCSettingSheetDlg& sheet, const Changes& changes) {
    sheet.drawPage.OnInitDialog();
    sheet.labelPage.OnInitDialog();
    sheet.bomPage.OnInitDialog();
    for (const auto& [name, value] : changes) {
        const KeyInfo& key = *FindKey(name);
        bool flag = false;
        int number = 0;
        ParseBool(value, flag);
        ParseWholeInt(value, number);
        if (key.kind == KeyKind::Format) {
            sheet.drawPage.OnClickFormat(number);
        } else if (key.kind == KeyKind::LabelBox) {
            const auto box = static_cast<CLabelSettingDlg::Box>(key.box);
            if (sheet.labelPage.checked[box] != flag) {
                sheet.labelPage.OnClick(box);
            }
        } else if (key.kind == KeyKind::AutoDetail && sheet.bomPage.autoDetailChecked != flag) {
            sheet.bomPage.OnClickAutoDetail();
        } else if (key.kind == KeyKind::AutoModel && sheet.bomPage.autoDetailModelChecked != flag) {
            sheet.bomPage.OnClickAutoDetailModel();
        } else if (key.kind == KeyKind::ModelType) {
            sheet.bomPage.OnSelectModel(number);
        }
    }
    return ApplyTerminalChanges(sheet, changes);
}

std::string FileShape(const std::optional<std::vector<std::string>>& lines) {
    if (!lines) {
        return "missing or unreadable: every value is a default";
    }
    if (!drawsettings::FindLabelValue(*lines, drawsettings::kLabelComponentType).empty()) {
        return std::to_string(lines->size()) + " lines, labelled";
    }
    return std::to_string(lines->size()) + " lines without the format label: read as defaults";
}

void PrintSettings(const PlcDrawSettings& s, const std::set<std::string>* fromFile) {
    auto line = [&](const char* name, const std::string& value) {
        const char* origin = "";
        if (fromFile) {
            origin = fromFile->count(name) ? "  (file)" : "  (default)";
        }
        std::printf("%s = %s%s\n", name, value.c_str(), origin);
    };
    auto yes = [](bool value) { return std::string(value ? "true" : "false"); };
    line("componentType", std::to_string(s.componentType));
    line("termSymbolName", s.termSymbolName);
    line("termSymbolPath", s.termSymbolPath);
    line("termDirection", std::to_string(s.termDirection));
    line("termLength", ShortestText(s.termLength));
    line("typeWidth", ShortestText(s.typeWidth));
    line("termSpacing", ShortestText(s.termSpacing));
    for (const KeyInfo& key : Keys()) {
        if (key.kind == KeyKind::LabelBox) {
            for (const auto& flag : drawsettings::LabelFlags()) {
                if (std::string(flag.member) == key.name) {
                    line(key.name, yes(s.*flag.flag));
                }
            }
        }
    }
    line("autoDetail", yes(s.autoDetail));
    line("autoDetailModel", yes(s.autoDetailModel));
    line("detailModelType", std::to_string(s.detailModelType));
}

int RunShow(const Arguments& args) {
    const auto parsed = Parse(kShowSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kShowSpec).c_str(), stdout);
        return kExitOk;
    }
    if (!parsed->positional.empty()) {
        std::fprintf(stderr, "qvplc settings: unexpected argument '%s'\nusage: %s\n",
                     parsed->positional.front().c_str(), kShowSpec.usage.c_str());
        return kExitUsage;
    }
    const auto lines = drawsettings::ReadSettingLines();
    PlcDrawSettings settings;
    drawsettings::PresetPlcDrawSettings(settings);
    std::set<std::string> fromFile;
    drawsettings::LoadPlcDrawSettingsFromLines(settings, lines ? &*lines : nullptr, &fromFile);
    std::printf("settings file: %s (%s)\n", PlcDrawSettingFilePath().c_str(),
                FileShape(lines).c_str());
    PrintSettings(settings, &fromFile);
    return kExitOk;
}

int SetUnderLock(const Changes& changes);

int RunSet(const Arguments& args) {
    const auto parsed = Parse(kSetSpec, args);
    if (!parsed) {
        return kExitUsage;
    }
    if (parsed->help) {
        std::fputs(HelpText(kSetSpec).c_str(), stdout);
        std::fputs("\nEvery setting, its kind and its valid range:\n", stdout);
        std::fputs(drawsettings::SettingRangeTable().c_str(), stdout);
        return kExitOk;
    }
    Changes changes;
    if (!ReadChanges(parsed->positional, changes)) {
        return kExitUsage;
    }
    // LocalData is the suite's own folder. The whole change runs under the file's update
    // lock, so that two changes at once never lose one of them.
    const std::string path = PlcDrawSettingFilePath();
    std::error_code ec;
    std::filesystem::create_directories(files::FolderOf(path), ec);
    try {
        files::RefuseNonRegular(path);
        const files::UpdateLock lock(path);
        return SetUnderLock(changes);
    } catch (const files::FileError& e) {
        return ReportFileError("qvplc settings set", e);
    }
}

int SetUnderLock(const Changes& changes) {
    PlcDrawSettings settings;
    InitPlcDrawSettings(settings);
    bool written = false;
    const bool confirmed = RunPlcSettingSheet(
        settings, [&](CPLCSettingSheetDlg& sheet) { return ApplyChanges(sheet, changes); },
        &written);
    if (!confirmed) {
        std::fprintf(
            stderr,
            "qvplc settings: the terminal settings refused the change; nothing was stored\n");
        return kExitFailure;
    }
    if (!written) {
        std::fprintf(stderr, "qvplc settings: cannot write the settings: %s; nothing was stored\n",
                     drawsettings::LastSettingsWriteError().c_str());
        return kExitCannotWrite;
    }
    std::printf("settings stored in %s\n", PlcDrawSettingFilePath().c_str());
    PrintSettings(settings, nullptr);
    return kExitOk;
}

}  // namespace

int RunSettings(const Arguments& args, CliHost& host) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
        std::fputs(kGroupHelp, args.empty() ? stderr : stdout);
        if (!args.empty()) {
            std::fputs("\nEvery setting, its kind and its valid range:\n", stdout);
            std::fputs(drawsettings::SettingRangeTable().c_str(), stdout);
        }
        return args.empty() ? kExitUsage : kExitOk;
    }
    const Arguments rest(args.begin() + 1, args.end());
    if (args[0] == "show") {
        return RunShow(rest);
    }
    if (args[0] == "set") {
        return RunSet(rest);
    }
    std::fprintf(stderr, "qvplc settings: unknown settings command '%s'\n\n%s", args[0].c_str(),
                 kGroupHelp);
    return kExitUsage;
}

}  // namespace cli
