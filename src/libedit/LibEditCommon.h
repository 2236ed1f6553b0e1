// Small helpers shared by the editor's operations (not part of the editor's interface).
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

#include "host/Host.h"
#include "libedit/LibEditDialogs.h"
#include "plclib/Engine.h"
#include "plclib/PlcLib.h"

namespace libedit {

// A confirmation: OK/Cancel, question icon; true only on OK.
inline bool Confirm(std::string_view text) {
    return host::ShowMessage(text, kEditorCaption, host::MsgIcon::Question,
                             host::MsgButtons::OkCancel) == host::MsgResult::Ok;
}

// A plain message box with the application's caption (duplicates, failed statements).
inline void Tell(std::string_view text) {
    host::ShowMessage(text, plcdb::kMessageCaption, host::MsgIcon::None);
}

inline bool SameName(std::string_view a, std::string_view b) {
    return plcdb::EqualsIgnoreCase(a, b);
}

// A terminal sequence as a number; text that is no number counts as 0.
inline int SequenceNumber(const std::string& text) {
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

// `format` with its two "%s" replaced by `first` and `second`, in that order.
inline std::string Format2(std::string format, const std::string& first,
                           const std::string& second) {
    size_t at = format.find("%s");
    if (at != std::string::npos) {
        format.replace(at, 2, first);
        at = format.find("%s", at + first.size());
        if (at != std::string::npos) {
            format.replace(at, 2, second);
        }
    }
    return format;
}

// The module table of a new type (LibEditType.cpp).
std::string NewTableName(const std::string& manufacturer, const std::string& series,
                         const std::string& type);

// Runs a modal sub-dialog; without a runner it counts as cancelled.
template <class Dialog, class Runner>
bool RunModal(const Runner& runner, Dialog& dlg) {
    return runner && runner(dlg);
}

}  // namespace libedit
