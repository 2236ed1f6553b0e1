// Texts cross the Qt boundary here: the core holds UTF-8, Qt holds UTF-16.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace ui {

inline QString Q(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string U(const QString& text) {
    return text.toStdString();
}

}  // namespace ui
