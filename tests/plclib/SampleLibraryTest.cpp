// The sample library built with the program: loads through CPlcLib and holds what the
// dialogs and the drawing need to show a full tree (with empty nodes at every level).
#include <filesystem>
#include <map>
#include <set>

#include "LibraryFixture.h"

namespace plclib_test {
namespace {

class SampleLibraryTest : public LibraryTest {
protected:
    std::string SamplePath() const {
        return (testing_support::BinaryDir() / "local" / "PLC" / "QvPLC.db").string();
    }
};

TEST_F(SampleLibraryTest, HoldsAFullTreeWithEmptyNodesAtEveryLevel) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SamplePath())) << host_.AllPrinted();
    ASSERT_TRUE(lib.LoadLibrary());
    std::set<std::string> makers, series, types, bareMakers, bareSeries, bareTypes;
    size_t modules = 0;
    for (const auto& e : lib.Entries()) {
        makers.insert(e->manufacturer);
        const std::string s = e->manufacturer + "/" + e->series;
        const std::string t = s + "/" + e->type;
        if (e->series.empty()) {
            bareMakers.insert(e->manufacturer);
        } else if (e->type.empty()) {
            series.insert(s);
            bareSeries.insert(s);
        } else {
            series.insert(s);
            types.insert(t);
            if (e->code.empty()) {
                bareTypes.insert(t);
            } else {
                ++modules;
            }
        }
    }
    EXPECT_GE(makers.size(), 4u);
    EXPECT_GE(series.size(), 8u);
    EXPECT_GE(types.size(), 20u);
    EXPECT_GE(modules, 150u);
    EXPECT_EQ(bareMakers.size(), 1u);
    EXPECT_EQ(bareSeries.size(), 1u);
    EXPECT_EQ(bareTypes.size(), 1u);
    for (const auto& maker : makers) {
        EXPECT_FALSE(lib.GetShortName(maker).empty()) << maker;
    }
    EXPECT_TRUE(host_.messages.empty());
}

// Every module: 8 to 64 channels, terminal rows numbered 1..n without gaps, at least one
// row per channel, supply or common terminals, and no terminal number used twice.
TEST_F(SampleLibraryTest, EveryModuleHasConsistentTerminalRows) {
    CPlcLib lib;
    ASSERT_TRUE(lib.Open(SamplePath()));
    ASSERT_TRUE(lib.LoadLibrary());
    std::map<std::string, int> kinds;
    for (const auto& e : lib.Entries()) {
        if (e->code.empty()) {
            continue;
        }
        SCOPED_TRACE(e->code);
        const int points = std::stoi(e->points);
        EXPECT_GE(points, 8);
        EXPECT_LE(points, 64);
        ++kinds[e->moduleType];
        ASSERT_TRUE(lib.LoadTerminals(e->manufacturer, e->series, e->type, e->code, *e));
        ASSERT_GE(e->terminals.size(), static_cast<size_t>(points));
        std::set<std::string> numbers;
        bool supplyOrCommon = false;
        std::vector<int> sequences;
        for (const auto& row : e->terminals) {
            sequences.push_back(std::stoi(row->sequence));
            EXPECT_TRUE(numbers.insert(row->termValue).second) << row->termValue;
            EXPECT_FALSE(row->termDesc.empty());
            EXPECT_FALSE(row->detailTermDesc.empty());
            const auto& v = row->termDesc;  // the signal name: 1M, L+, C1, COM0
            supplyOrCommon = supplyOrCommon || v.find('M') != std::string::npos ||
                             v.find("L+") != std::string::npos || v.rfind("C", 0) == 0;
        }
        std::sort(sequences.begin(), sequences.end());
        for (size_t i = 0; i < sequences.size(); ++i) {
            ASSERT_EQ(sequences[i], static_cast<int>(i + 1));
        }
        EXPECT_TRUE(supplyOrCommon);
    }
    for (const char* kind : {"DI", "DO", "RO", "AI", "AO", "DI/DO"}) {
        EXPECT_GE(kinds[kind], 5) << kind;
    }
}

}  // namespace
}  // namespace plclib_test
