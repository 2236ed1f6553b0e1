// The plug-in's one entry, as a host finds it in the shared library: the host passes itself
// and an application message (app::AppMessage as an int); the answer is an app::AppResult.
#pragma once

namespace host {
class IHost;
}

namespace ui {

inline constexpr const char* kPluginEntryName = "QvPlcRendalEntry";
inline constexpr const char* kPluginFileName = "qvplc_plugin.so";
using PluginEntryFunction = int (*)(host::IHost* host, int message);
// Script lines acting on the plug-in's dialog views live in the plug-in with the views: the
// answer is "" when the line was done, else what was wrong (valid until the next call).
inline constexpr const char* kDialogLineEntryName = "QvPlcRendalDialogLine";
inline constexpr const char* kDialogHelpEntryName = "QvPlcRendalDialogHelp";

}  // namespace ui

extern "C" {
int QvPlcRendalEntry(host::IHost* host, int message);
const char* QvPlcRendalDialogLine(const char* line);
const char* QvPlcRendalDialogHelp();
}
