#include "EntityTags.h"

#include <map>

#include "cad/Dxf.h"

namespace desktop_test {
namespace {

bool IsHandleCode(int code) {
    return code == 5 || code == 330 || code == 1005 || code == 340 || code == 360;
}

}  // namespace

std::vector<std::string> EntityTags(const cad::Database& db) {
    cad::TagCollector sink;
    cad::WriteDxf(db, cad::DxfVersion::R2010, sink);
    std::vector<std::string> out;
    std::map<std::string, int> handles;
    auto handleName = [&](const std::string& value) {
        const auto [it, added] = handles.emplace(value, static_cast<int>(handles.size()));
        return "#" + std::to_string(it->second);
    };
    bool inEntities = false;
    std::string previous;
    for (const auto& tag : sink.tags) {
        const bool sectionName = tag.code == 2 && previous == "SECTION";
        previous = tag.code == 0 ? tag.value : std::string();
        if (sectionName) {
            inEntities = tag.value == "ENTITIES";
            continue;
        }
        if (tag.code == 0 && tag.value == "ENDSEC") {
            inEntities = false;
        }
        if (!inEntities) {
            continue;
        }
        const std::string value = IsHandleCode(tag.code) ? handleName(tag.value) : tag.value;
        out.push_back(std::to_string(tag.code) + "=" + value);
    }
    return out;
}

std::string EntityCounts(const std::vector<std::string>& tags) {
    std::map<std::string, int> counts;
    for (const auto& tag : tags) {
        if (tag.starts_with("0=")) {
            ++counts[tag.substr(2)];
        }
    }
    std::string text;
    for (const auto& [type, count] : counts) {
        text += (text.empty() ? "" : ", ") + type + " x" + std::to_string(count);
    }
    return text;
}

}  // namespace desktop_test
