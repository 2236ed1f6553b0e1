// Feeds arbitrary bytes to the settings-file reader as if they were
// LocalData/PlcDrawSetting.dat. Whatever is read is written in the file's full form, and
// reading and saving again must settle on one text within a few saves, so that a settings
// file never drifts or grows from one save to the next. (Early saves may still change it: a
// value that holds another line's label is also found by that label, and each save resolves
// one more such overlap.)
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "draw/settings/PlcDrawSettings.h"
#include "draw/settings/SettingsFile.h"
#include "files/TextFile.h"

namespace {

std::string LoadAndWrite(const std::vector<std::string>& lines) {
    PlcDrawSettings settings;
    drawsettings::PresetPlcDrawSettings(settings);
    drawsettings::LoadPlcDrawSettingsFromLines(settings, &lines, nullptr);
    return drawsettings::FullFormText(drawsettings::LoadFormatTerminals(&lines), settings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text =
        files::ToUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    constexpr int kSaves = 12;
    std::string written = LoadAndWrite(files::SplitLines(text));
    for (int save = 0; save < kSaves; ++save) {
        std::string again = LoadAndWrite(files::SplitLines(written));
        if (again == written) {
            return 0;
        }
        written = std::move(again);
    }
    __builtin_trap();
    return 0;
}
