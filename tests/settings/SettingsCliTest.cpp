// qvplc settings show / set, run as the user runs them.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "SettingsFixture.h"

namespace {

std::string Qvplc() {
    return (testing_support::BinaryDir() / "bin/qvplc").string();
}

}  // namespace

class SettingsCliTest : public SettingsFixture {
protected:
    SettingsCliTest() {
        for (const char* name : {"SYMB2_S_KTR5", "SYMB2_S_KTR17", "SYMB2_S_20"}) {
            WriteSymbolDrawing(commonDir / "SYMB2LIB" / (std::string(name) + ".dxf"), 4, 0);
        }
    }
    int Run(const std::string& args, std::string* output = nullptr) {
        std::string out;
        const int status = testing_support::RunCommand(Qvplc() + " settings " + args, &out);
        if (output) {
            *output = out;
        }
        return status;
    }
};

TEST_F(SettingsCliTest, ShowTellsDefaultsFromStoredValues) {
    std::string out;
    ASSERT_EQ(Run("show", &out), 0) << out;
    EXPECT_NE(out.find("missing or unreadable"), std::string::npos) << out;
    EXPECT_NE(out.find("componentType = 1  (default)"), std::string::npos) << out;
    EXPECT_NE(out.find("labelModuleCodePrefix = true  (default)"), std::string::npos) << out;
    EXPECT_EQ(out.find("(file)"), std::string::npos) << out;

    WriteSettings("元件类型:2\n标注槽号:FALSE\n端子间隔距离:7.5\n");
    ASSERT_EQ(Run("show", &out), 0) << out;
    EXPECT_NE(out.find("componentType = 2  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("labelSlotNo = false  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("termSpacing = 7.5  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("labelModuleCodePrefix = false  (default)"), std::string::npos) << out;
    EXPECT_NE(out.find("termSymbolName =   (default)"), std::string::npos) << out;
}

TEST_F(SettingsCliTest, SetGoesThroughTheSheetAndStoresTheFullForm) {
    std::string out;
    ASSERT_EQ(Run("set componentType=2 termSpacing=7.5 labelSlotNo=false detailModelType=1", &out),
              0)
        << out;
    const std::string stored = ReadSettings();
    EXPECT_EQ(std::count(stored.begin(), stored.end(), '\n'), 30) << stored;
    EXPECT_NE(stored.find("元件类型:2\n"), std::string::npos);
    EXPECT_NE(stored.find("端子间隔距离:7.5\n"), std::string::npos);
    EXPECT_NE(stored.find("标注槽号:FALSE\n"), std::string::npos);
    EXPECT_NE(stored.find("明细型号类型:1\n"), std::string::npos);
    EXPECT_NE(stored.find("端子B名称:SYMB2_S_KTR17\n"), std::string::npos);

    ASSERT_EQ(Run("set termSymbolName=SYMB2_S_20 typeWidth=12", &out), 0) << out;
    EXPECT_NE(out.find("termLength = 3.75"), std::string::npos) << out;
    EXPECT_NE(out.find("termSymbolPath = " + Common() + "SYMB2LIB/SYMB2_S_20.dxf"),
              std::string::npos)
        << out;
    ASSERT_EQ(Run("show", &out), 0);
    EXPECT_NE(out.find("termSymbolName = SYMB2_S_20  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("typeWidth = 12  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("termDirection = 2  (file)"), std::string::npos) << out;
    EXPECT_NE(out.find("componentType = 2  (file)"), std::string::npos) << out;
}

TEST_F(SettingsCliTest, BadKeysAndValuesAreUsageErrorsThatLeaveTheFile) {
    WriteSettings("元件类型:1\n");
    const struct {
        const char* args;
        const char* named;
    } cases[] = {
        {"set colour=1", "colour"},
        {"set componentType=4", "componentType=4"},
        {"set termSpacing=abc", "termSpacing=abc"},
        {"set typeWidth=-3", "typeWidth=-3"},
        {"set labelSlotNo=maybe", "labelSlotNo=maybe"},
        {"set termDirection=1", "termDirection"},
        {"set termSymbolName=NoSuchSymbol", "NoSuchSymbol"},
        // Values that would collapse or overflow the drawing, and names leaving SYMB2LIB.
        {"set termSpacing=0", "termSpacing=0: termSpacing must be a real number above 0"},
        {"set typeWidth=0", "typeWidth=0"},
        {"set termSpacing=1e300", "at most 1000000"},
        {"set typeWidth=1000000.5", "typeWidth=1000000.5"},
        {"set termSymbolName=../x", "without '/'"},
        {"set termSymbolName=..", "without '/'"},
        {"set componentType", "componentType"},
        {"set labelSlotNo=true labelSlotNo=false", "labelSlotNo"},
        {"set", "nothing to set"},
        {"frobnicate", "frobnicate"},
    };
    for (const auto& c : cases) {
        std::string out;
        EXPECT_EQ(Run(c.args, &out), 2) << c.args << "\n" << out;
        EXPECT_NE(out.find(c.named), std::string::npos) << c.args << "\n" << out;
    }
    EXPECT_EQ(ReadSettings(), "元件类型:1\n");
}

TEST_F(SettingsCliTest, ReadOnlyFileFailsTheSet) {
    WriteSettings("元件类型:1\n");
    ::chmod(SettingFile().c_str(), 0444);
    std::string out;
    EXPECT_EQ(Run("set labelSlotNo=false", &out), 7) << out;
    EXPECT_NE(out.find("read-only"), std::string::npos) << out;
    EXPECT_EQ(Run("set termSpacing=5", &out), 1) << out;
    EXPECT_NE(out.find("只读"), std::string::npos) << out;
    EXPECT_EQ(ReadSettings(), "元件类型:1\n");
}

TEST_F(SettingsCliTest, HelpTeachesTheKeys) {
    std::string out;
    ASSERT_EQ(Run("set --help", &out), 0);
    for (const char* key : {"componentType", "termSymbolName", "typeWidth", "termSpacing",
                            "labelModuleCodePrefix", "detailModelType", "Exit codes"}) {
        EXPECT_NE(out.find(key), std::string::npos) << key;
    }
    // The group's help lists every setting with its kind and range.
    ASSERT_EQ(Run("--help", &out), 0);
    EXPECT_NE(out.find("termSpacing              real     above 0, at most 1000000"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("termDirection            integer  0 to 3"), std::string::npos) << out;
}

TEST_F(SettingsCliTest, ShowWarnsAboutAFileValueOutOfRangeAndShowsTheDefault) {
    WriteSettings("元件类型:1\n端子间隔距离:0.0\n类型A宽度:nan\n");
    std::string out;
    ASSERT_EQ(Run("show", &out), 0) << out;
    EXPECT_NE(out.find(SettingFile().string() + ": termSpacing=0.0 is outside its range"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("typeWidth=nan is outside its range"), std::string::npos) << out;
    EXPECT_NE(out.find("termSpacing = 10  (default)"), std::string::npos) << out;
    EXPECT_NE(out.find("typeWidth = 10  (default)"), std::string::npos) << out;
}
