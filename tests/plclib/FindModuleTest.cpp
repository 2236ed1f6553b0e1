// A module is found by its four names exactly as stored; a placeholder entry is no module.
#include <gtest/gtest.h>

#include "plclib/PlcLib.h"

namespace plclib_test {
namespace {

TEST(FindModuleTest, MatchesTheFourNamesAsStored) {
    std::vector<std::unique_ptr<CPlcPartData>> entries;
    const auto add = [&](const char* m, const char* s, const char* t, const char* code) {
        auto e = std::make_unique<CPlcPartData>(m, s, t);
        e->code = code;
        entries.push_back(std::move(e));
    };
    add("Beta", "B1", "DI", "B-16DI");
    add("Alpha", "", "", "");
    add("Beta", "B1", "DI", "B-8DI");
    EXPECT_EQ(plcdb::FindModule(entries, "Beta", "B1", "DI", "B-8DI"), entries[2].get());
    EXPECT_EQ(plcdb::FindModule(entries, "Beta", "B1", "DI", "b-8di"), nullptr);
    EXPECT_EQ(plcdb::FindModule(entries, "Alpha", "", "", ""), nullptr);
}

}  // namespace
}  // namespace plclib_test
