// Messages are written whole, with placeholders, so that each can be looked up in a message
// catalogue as one text; the values are put in when the message is made.
#pragma once

#include <initializer_list>
#include <string>

namespace cad {

// The text with its "%s" and "%d" placeholders replaced by the values, in order.
inline std::string FillMessage(const char* text, std::initializer_list<std::string> values) {
    std::string out;
    auto value = values.begin();
    for (const char* p = text; *p != '\0'; ++p) {
        if (p[0] == '%' && (p[1] == 's' || p[1] == 'd') && value != values.end()) {
            out += *value++;
            ++p;
        } else {
            out += *p;
        }
    }
    return out;
}

}  // namespace cad
