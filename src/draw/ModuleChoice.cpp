// The module choice: the sides named by direction texts, and the value the drawing dialog
// builds from its fields and terminal list.
#include "draw/ModuleChoice.h"

#include "draw/DlgPlcRendal.h"

namespace draw {

std::optional<Side> SideFromDirectionText(std::string_view text) {
    static constexpr std::pair<std::string_view, Side> kSides[] = {
        {"上", Side::Upper}, {"下", Side::Lower}, {"右", Side::Right}, {"左", Side::Left}};
    for (const auto& [mark, side] : kSides) {
        if (text.find(mark) != std::string_view::npos) {
            return side;
        }
    }
    return std::nullopt;
}

}  // namespace draw

draw::ModuleChoice CDlgPlcRendal::CurrentChoice() const {
    draw::ModuleChoice choice;
    choice.manufacturer = manufacturerInfo.manufacturer;
    choice.series = manufacturerInfo.series;
    choice.type = manufacturerInfo.type;
    choice.shortName = editShortName;
    choice.code = editModuleCode;
    choice.description = editModuleDesc;
    choice.tag = editTag;
    choice.frameNo = editFrameNo;
    choice.slotNo = editSlotNo;
    choice.location = editLocation;
    choice.pattern = termDirChoice;
    choice.orientation = orientation;
    choice.terminals.reserve(static_cast<std::size_t>(termList.Count()));
    for (int row = 0; row < termList.Count(); ++row) {
        draw::ChosenTerminal terminal;
        terminal.sequence = termList.Text(row, kColSequence);
        terminal.value = termList.Text(row, kColTermValue);
        terminal.description = termList.Text(row, kColTermDesc);
        terminal.detail = termList.Text(row, kColDetailDesc);
        terminal.marked = IsMarked(termList.StateImage(row));
        terminal.side = draw::SideFromDirectionText(termList.Text(row, kColDirection));
        choice.terminals.push_back(std::move(terminal));
    }
    return choice;
}
