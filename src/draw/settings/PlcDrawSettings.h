// How a PLC module is drawn: the terminal-symbol format in use, the terminal symbol and its
// lead, the frame width, the terminal spacing, which labels are written (and whether each gets
// a Chinese caption) and how the bill-of-materials detail is filled. The drawing dialog holds
// these as its own members (it derives from PlcDrawSettings); the settings sheet edits them and
// the module drawing reads them. They are kept between runs in LocalData/PlcDrawSetting.dat.
#pragma once

#include <string>
#include <vector>

struct PlcDrawSettings {
    int componentType = 1;       // drawing format 1, 2 or 3 (格式1..格式3)
    std::string termSymbolName;  // block name of the terminal symbol of the format in use
    std::string termSymbolPath;  // full path of that symbol's drawing file
    int termDirection = 2;       // 0 up (+Y), 1 down (-Y), 2 right (+X), 3 left (-X)
    float termLength = 5.0f;     // length of a terminal's lead
    float typeWidth = 10.0f;     // width of the module's outer frame
    float termSpacing = 10.0f;   // distance between neighbouring terminals

    bool labelManufacturer = true;
    bool labelModuleDesc = true;
    bool labelModuleCode = true;
    bool labelFrameNo = true;
    bool labelSlotNo = true;
    bool labelManufacturerPrefix = true;
    bool labelModuleDescPrefix = true;
    bool labelModuleCodePrefix = true;
    bool labelFramePrefix = true;
    bool labelSlotPrefix = true;

    bool autoDetail = true;
    bool autoDetailModel = true;
    int detailModelType = 0;  // 0 module code; 1 manufacturer short name, a blank, module code
};

// What the drawing dialog's constructor does with its settings: preset termSpacing and
// typeWidth to 10, termDirection to 0 and termLength to 2.5, then load the settings file.
// Never fails: a missing or unreadable file gives the defaults.
void InitPlcDrawSettings(PlcDrawSettings& settings);

// Loads the settings file into `settings` (the constructor's load without the presets).
void LoadPlcDrawSettings(PlcDrawSettings& settings);

// Loads from lines already read; `lines` null stands for a file that cannot be opened.
void LoadPlcDrawSettingsFromLines(PlcDrawSettings& settings, const std::vector<std::string>* lines);

// Full path of LocalData/PlcDrawSetting.dat under the local installation folder.
std::string PlcDrawSettingFilePath();
