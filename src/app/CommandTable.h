// The plug-in's commands, laid down at build time and walked at load and unload.
#pragma once

#include <cstdint>
#include <span>

namespace app {

// ACRX_CMD_TRANSPARENT: the commands may run inside another command.
inline constexpr int kCmdTransparent = 1;
inline constexpr std::uint32_t kNoResourceId = 0xFFFFFFFF;

struct CommandEntry {
    const char* groupName;
    const char* globalName;
    const char* localName;  // null: loaded from the string resource localNameId
    int flags;
    void (*handler)();
    void* uiContext;  // none of the commands has one
    std::uint32_t localNameId;
};

std::span<const CommandEntry> CommandTable();

}  // namespace app
