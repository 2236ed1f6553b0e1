// Feeds arbitrary bytes to the settings-file reader as if they were
// LocalData/PlcDrawSetting.dat. Whatever is read must be written in the file's full form and
// read back to the same text: a settings file the system writes is always one it reads.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "draw/settings/PlcDrawSettings.h"
#include "draw/settings/SettingsFile.h"
#include "host/TextFile.h"

namespace {

std::vector<std::string> SplitLines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.emplace_back(line);
        start = end + 1;
    }
    return lines;
}

std::string LoadAndWrite(const std::vector<std::string>& lines) {
    PlcDrawSettings settings;
    drawsettings::PresetPlcDrawSettings(settings);
    drawsettings::LoadPlcDrawSettingsFromLines(settings, &lines, nullptr);
    return drawsettings::FullFormText(drawsettings::LoadFormatTerminals(&lines), settings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text =
        textfile::ToUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string written = LoadAndWrite(SplitLines(text));
    if (LoadAndWrite(SplitLines(written)) != written) {
        __builtin_trap();
    }
    return 0;
}
