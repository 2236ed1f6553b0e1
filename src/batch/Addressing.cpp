#include "batch/Addressing.h"

namespace batch {

std::string InBase(long long value, int base, int digits) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string text;
    do {
        text.insert(text.begin(), kDigits[value % base]);
        value /= base;
    } while (value > 0);
    if (static_cast<int>(text.size()) < digits) {
        text.insert(0, digits - text.size(), '0');
    }
    return text;
}

std::string FormatAddress(const Project& project, Kind kind, long long start, long long index) {
    const std::string prefix = project.PrefixOf(kind);
    if (project.form == AddressForm::Counter) {
        return prefix + InBase(start + index, project.base, project.digits);
    }
    if (IsAnalog(kind)) {
        return prefix + std::to_string(start + 2 * index);
    }
    return prefix + std::to_string(start + index / 8) + "." + std::to_string(index % 8);
}

long long BlockSize(const Project& project, Kind kind, long long channels) {
    if (project.form == AddressForm::Counter) {
        return channels;
    }
    return IsAnalog(kind) ? 2 * channels : (channels + 7) / 8;
}

}  // namespace batch
