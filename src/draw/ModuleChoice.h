// What a module drawing draws, as one value: which module, the texts of its header and parts
// list, its terminals in order with their marks and sides, the pattern and the orientation.
// The drawing dialog builds it from its fields and lists (CDlgPlcRendal::CurrentChoice); any
// other caller (a library editor, a batch drawing) fills it directly and draws through the
// same functions. How a module is drawn (format, symbol, spacing, labels) stays in
// PlcDrawSettings.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace draw {

// The edge of the module a terminal's lead leaves from.
enum class Side { Upper, Lower, Right, Left };

// The side a direction text names by one of the characters 上, 下, 右 or 左 (looked for in
// that order, so "上下" is the upper side); none when it names no side.
std::optional<Side> SideFromDirectionText(std::string_view text);

struct ChosenTerminal {
    std::string sequence;     // 端点序号
    std::string value;        // 端号, the number drawn at the terminal
    std::string description;  // 端点描述, drawn beside it
    std::string detail;       // 端点详细描述
    bool marked = true;       // chosen for drawing
    std::optional<Side> side;

    bool operator==(const ChosenTerminal&) const = default;
};

struct ModuleChoice {
    // Where the module stands in the library.
    std::string manufacturer;
    std::string series;
    std::string type;
    // The module as drawn (the user may have changed the texts the library gave).
    std::string shortName;    // 厂家简称
    std::string code;         // 模块代号
    std::string description;  // 模块描述
    // The other texts of the header and the parts list.
    std::string tag;       // 标号
    std::string frameNo;   // 框架号
    std::string slotNo;    // 槽号
    std::string location;  // 安装位置

    std::vector<ChosenTerminal> terminals;  // in list order
    int pattern = 0;                        // last terminal pattern chosen, 0..5
    int orientation = 0;                    // 0 horizontal, 1 vertical

    bool operator==(const ModuleChoice&) const = default;
};

}  // namespace draw
