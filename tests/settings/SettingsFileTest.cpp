// The settings file: label lookup, number rules, the two written shapes byte for byte, and
// loading with every default, including files that are damaged or were written on Windows.
#include <gtest/gtest.h>

#include <iconv.h>
#include <sys/stat.h>

#include "SettingsFixture.h"
#include "draw/settings/PlcDrawSettings.h"
#include "draw/settings/SettingsFile.h"
#include "draw/settings/SettingsText.h"

using drawsettings::FindLabelValue;

namespace {

std::string ToGb18030(const std::string& utf8) {
    iconv_t cd = iconv_open("GB18030", "UTF-8");
    std::string out(utf8.size() * 2, '\0');
    char* in = const_cast<char*>(utf8.data());
    size_t inLeft = utf8.size();
    char* outPtr = out.data();
    size_t outLeft = out.size();
    iconv(cd, &in, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    out.resize(outPtr - out.data());
    return out;
}

std::string WithCrLf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') {
            out += '\r';
        }
        out += c;
    }
    return out;
}

PlcDrawSettings Loaded() {
    PlcDrawSettings settings;
    InitPlcDrawSettings(settings);
    return settings;
}

}  // namespace

TEST(SettingsLabelLookup, FirstContainingLineWinsAndValueIsCountedInCharacters) {
    const std::vector<std::string> lines = {"端子A名称:SYMB2_S_01", "端子A名称:SYMB2_S_02",
                                            "端子B名称:端子甲"};
    EXPECT_EQ(FindLabelValue(lines, "端子A名称:"), "SYMB2_S_01");
    // Chinese characters in the value: three bytes each, one character each.
    EXPECT_EQ(FindLabelValue(lines, "端子B名称:"), "端子甲");
    EXPECT_EQ(FindLabelValue(lines, "端子C名称:"), "");
    EXPECT_EQ(FindLabelValue({"端子A名称:"}, "端子A名称:"), "");
}

TEST(SettingsLabelLookup, LabelAfterOtherTextGivesTheLineTail) {
    // Two characters before the label: the value is the last (line - label) characters, so
    // two characters of the label itself come with it.
    EXPECT_EQ(FindLabelValue({"前缀端子A方向:3"}, "端子A方向:"), "向:3");
    EXPECT_EQ(FindLabelValue({"xx元件类型:2"}, "元件类型:"), "型:2");
    // A UTF-8 byte-order mark counts as one character before the label.
    EXPECT_EQ(FindLabelValue({"\xEF\xBB\xBF端子A方向:3"}, "端子A方向:"), ":3");
}

TEST(SettingsNumbers, ReadLikeAtofAndAtoi) {
    using drawsettings::ParseInt;
    using drawsettings::ParseReal;
    EXPECT_DOUBLE_EQ(ParseReal("  7.5mm"), 7.5);
    EXPECT_DOUBLE_EQ(ParseReal("abc"), 0.0);
    EXPECT_DOUBLE_EQ(ParseReal(""), 0.0);
    EXPECT_DOUBLE_EQ(ParseReal("-2e1"), -20.0);
    EXPECT_EQ(ParseInt(" 3x"), 3);
    EXPECT_EQ(ParseInt("x3"), 0);
    EXPECT_EQ(ParseInt("99999999999"), 2147483647);
    EXPECT_EQ(drawsettings::FormatFixed(5.0f, 6), "5.000000");
    EXPECT_EQ(drawsettings::FormatFixed(7.25f, 1), "7.2");  // round half to even, as printf
    EXPECT_EQ(drawsettings::FormatFixed(3.75f, 6), "3.750000");
}

TEST(SettingsNumbers, TypedNumberCheck) {
    using drawsettings::IsUnsignedRealText;
    for (const char* good : {"10", "10.0", " 7.5 ", "0", ".5", "+2", "1e3"}) {
        EXPECT_TRUE(IsUnsignedRealText(good)) << good;
    }
    for (const char* bad : {"", "  ", "-1", "abc", "10mm", "1.2.3", "+-1", "inf", "nan", "0x10"}) {
        EXPECT_FALSE(IsUnsignedRealText(bad)) << bad;
    }
}

class SettingsFileTest : public SettingsFixture {};

TEST_F(SettingsFileTest, FullFormIsWrittenByteForByte) {
    drawsettings::FormatTerminals formats;
    formats[0] = {Local() + "SYMB2LIB/My.dxf", "My", 2, "12.5", 5.0f};
    formats[1] = {"/elsewhere/SYMB2_S_KTR17.dxf", "SYMB2_S_KTR17", 1, "10.0", 3.75f};
    formats[2] = {Local() + "a/" + Local() + "b.dxf", "C名", 0, " 8 ", 0.123456789f};
    PlcDrawSettings s;
    s.componentType = 2;
    s.autoDetail = false;
    s.autoDetailModel = true;
    s.detailModelType = 1;
    s.labelSlotPrefix = false;
    s.labelManufacturer = false;
    s.labelModuleCode = false;
    s.termSpacing = 7.5f;
    const std::string expected =
        "端子A路径:SYMB2LIB/My.dxf\n端子A名称:My\n端子A方向:2\n类型A宽度:12.5\n"
        "端子A长度:5.000000\n"
        "端子B路径:/elsewhere/SYMB2_S_KTR17.dxf\n端子B名称:SYMB2_S_KTR17\n端子B方向:1\n"
        "类型B宽度:10.0\n端子B长度:3.750000\n"
        "端子C路径:a/b.dxf\n端子C名称:C名\n端子C方向:0\n类型C宽度: 8 \n端子C长度:0.123457\n"
        "元件类型:2\n自动标注明细:FALSE\n自动标注明细型号:TRUE\n明细型号类型:1\n"
        "标注槽号前缀:FALSE\n标注框架前缀:TRUE\n标注厂家前缀:TRUE\n标注模块代号前缀:TRUE\n"
        "标注模块描述前缀:TRUE\n标注厂家:FALSE\n标注框架号:TRUE\n标注槽号:TRUE\n"
        "标注模块描述:TRUE\n标注模块代号:FALSE\n端子间隔距离:7.5\n";
    EXPECT_EQ(drawsettings::FullFormText(formats, s), expected);
}

TEST_F(SettingsFileTest, ShortFormIsFiveUnlabelledLines) {
    const drawsettings::FormatTerminal terminal{Local() + "SYMB2LIB/X.dxf", "X", 3, "9", 2.5f};
    EXPECT_EQ(drawsettings::ShortFormText(terminal), "SYMB2LIB/X.dxf\nX\n3\n9\n2.500000\n");
}

TEST_F(SettingsFileTest, MissingFileGivesEveryDefault) {
    const PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 1);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR5");
    EXPECT_EQ(s.termSymbolPath, Common() + "SYMB2LIB/SYMB2_S_KTR5.dxf");
    EXPECT_EQ(s.termDirection, 2);
    EXPECT_FLOAT_EQ(s.termLength, 5.0f);
    EXPECT_FLOAT_EQ(s.typeWidth, 10.0f);
    EXPECT_FLOAT_EQ(s.termSpacing, 10.0f);
    EXPECT_TRUE(s.labelModuleCodePrefix);  // true only when the whole file is missing
    EXPECT_TRUE(s.labelManufacturer && s.labelSlotNo && s.labelFramePrefix && s.autoDetail &&
                s.autoDetailModel);
    EXPECT_EQ(s.detailModelType, 0);
}

TEST_F(SettingsFileTest, EmptyFileGivesFormatOneAndModuleCodeCaptionOff) {
    WriteSettings("");
    const PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 1);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR5");
    EXPECT_EQ(s.termDirection, 2);
    EXPECT_FLOAT_EQ(s.termLength, 5.0f);
    EXPECT_FALSE(s.labelModuleCodePrefix);
    EXPECT_TRUE(s.labelManufacturer && s.labelModuleDesc && s.labelModuleCode && s.labelFrameNo &&
                s.labelSlotNo && s.labelManufacturerPrefix && s.labelModuleDescPrefix &&
                s.labelFramePrefix && s.labelSlotPrefix);
}

TEST_F(SettingsFileTest, OnlyTheFormatLineReadsFormatTwoWithEmptySymbol) {
    WriteSettings("元件类型:2\n");
    const PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 2);
    EXPECT_EQ(s.termSymbolName, "");
    EXPECT_EQ(s.termSymbolPath, Common());  // the empty path joined below the common folder
    EXPECT_FLOAT_EQ(s.typeWidth, 10.0f);
    EXPECT_FLOAT_EQ(s.termLength, 0.0f);
    EXPECT_EQ(s.termDirection, 0);
}

TEST_F(SettingsFileTest, FormatThreeReadsItsOwnLinesAndFlags) {
    const std::string existing = TouchSymbol("SYMB2_S_20");
    WriteSettings("端子A名称:AAA\n端子C路径:" + existing +
                  "\n端子C名称:SYMB2_S_20\n端子C方向:3\n类型C宽度:12.5\n端子C长度:3.75\n"
                  "元件类型:3\n自动标注明细:FALSE\n明细型号类型:1\n标注模块代号前缀:TRUE\n"
                  "标注槽号:FALSE\n端子间隔距离:7.5\n端子间隔距离:9.0\n");
    const PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 3);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_20");
    EXPECT_EQ(s.termSymbolPath, existing);  // an existing file is used as it stands
    EXPECT_EQ(s.termDirection, 3);
    EXPECT_FLOAT_EQ(s.typeWidth, 12.5f);
    EXPECT_FLOAT_EQ(s.termLength, 3.75f);
    EXPECT_FLOAT_EQ(s.termSpacing, 7.5f);  // the first of two lines wins
    EXPECT_FALSE(s.autoDetail);
    EXPECT_TRUE(s.autoDetailModel);
    EXPECT_EQ(s.detailModelType, 1);
    EXPECT_TRUE(s.labelModuleCodePrefix);
    EXPECT_FALSE(s.labelSlotNo);
}

TEST_F(SettingsFileTest, InvalidFormatFallsBackToFormatOneButKeepsLabelFlags) {
    WriteSettings(
        "元件类型:7\n端子A名称:Mine\n自动标注明细:FALSE\n明细型号类型:1\n"
        "标注厂家:FALSE\n端子间隔距离:abc\n");
    std::set<std::string> fromFile;
    PlcDrawSettings s;
    const auto lines = drawsettings::ReadSettingLines();
    ASSERT_TRUE(lines);
    drawsettings::LoadPlcDrawSettingsFromLines(s, &*lines, &fromFile);
    EXPECT_EQ(s.componentType, 1);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR5");  // not the stored name: format defaults
    EXPECT_TRUE(s.autoDetail);
    EXPECT_EQ(s.detailModelType, 0);
    EXPECT_FALSE(s.labelManufacturer);
    // An unparsable number reads as 0, which no spacing may be: the default is used.
    EXPECT_FLOAT_EQ(s.termSpacing, 10.0f);
    EXPECT_EQ(fromFile, (std::set<std::string>{"labelManufacturer"}));
}

// Every number the drawing uses is checked against its range as the file is read: a value
// outside it is named on standard error (through the host) with its file, and the default is
// drawn with. Values inside the range, and empty ones, pass without a word.
TEST_F(SettingsFileTest, OutOfRangeValuesAreWarnedAboutAndReplacedByDefaults) {
    struct Case {
        std::string line;
        std::string key;
        std::string value;
        float PlcDrawSettings::*real;
        float expected;
    };
    const std::vector<Case> reals = {
        {"端子间隔距离:0.0", "termSpacing", "0.0", &PlcDrawSettings::termSpacing, 10},
        {"端子间隔距离:nan", "termSpacing", "nan", &PlcDrawSettings::termSpacing, 10},
        {"端子间隔距离:-inf", "termSpacing", "-inf", &PlcDrawSettings::termSpacing, 10},
        {"类型A宽度:1e309", "typeWidth", "1e309", &PlcDrawSettings::typeWidth, 10},
        {"类型A宽度:-3", "typeWidth", "-3", &PlcDrawSettings::typeWidth, 10},
        {"类型A宽度:1e40", "typeWidth", "1e40", &PlcDrawSettings::typeWidth, 10},
        {"端子A长度:-0.5", "termLength", "-0.5", &PlcDrawSettings::termLength, 5},
        {"端子A长度:inf", "termLength", "inf", &PlcDrawSettings::termLength, 5},
    };
    for (const Case& c : reals) {
        SCOPED_TRACE(c.line);
        recorder.messages.clear();
        WriteSettings("元件类型:1\n端子A名称:SYMB2_S_KTR5\n" + c.line + "\n");
        const PlcDrawSettings s = Loaded();
        EXPECT_FLOAT_EQ(s.*c.real, c.expected);
        ASSERT_EQ(recorder.messages.size(), 1u);
        const std::string& text = recorder.messages[0].text;
        EXPECT_NE(text.find(SettingFile().string()), std::string::npos) << text;
        EXPECT_NE(text.find(c.key + "=" + c.value + " is outside its range"), std::string::npos)
            << text;
    }
    recorder.messages.clear();
    WriteSettings("元件类型:1\n端子A方向:9\n明细型号类型:-1\n");
    PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.termDirection, 2);
    EXPECT_EQ(s.detailModelType, 0);
    EXPECT_EQ(recorder.messages.size(), 2u);

    // A symbol name is also a file name in SYMB2LIB and may not leave it.
    recorder.messages.clear();
    WriteSettings("元件类型:2\n端子B名称:../../etc/passwd\n");
    s = Loaded();
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR17");
    EXPECT_EQ(s.termSymbolPath, drawsettings::SymbolPathFor("SYMB2_S_KTR17"));
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_NE(recorder.messages[0].text.find("termSymbolName=../../etc/passwd"), std::string::npos);

    recorder.messages.clear();
    WriteSettings("元件类型:1\n端子间隔距离:0.1\n类型A宽度:1000000\n端子A长度:0\n端子A方向:\n");
    s = Loaded();
    EXPECT_FLOAT_EQ(s.termSpacing, 0.1f);
    EXPECT_FLOAT_EQ(s.typeWidth, 1e6f);
    EXPECT_FLOAT_EQ(s.termLength, 0.0f);
    EXPECT_TRUE(recorder.messages.empty()) << recorder.messages[0].text;
}

TEST_F(SettingsFileTest, StoredPathsBelowTheLocalFolderAreRelative) {
    // A path that names no file is taken below the common folder; one that does is kept.
    WriteSettings("元件类型:1\n端子A路径:SYMB2LIB/Gone.dxf\n");
    EXPECT_EQ(Loaded().termSymbolPath, Common() + "SYMB2LIB/Gone.dxf");
}

TEST_F(SettingsFileTest, MissingSymbolPathStaysTheSameOverSavesAndLoads) {
    // Each save writes what the load resolved; a missing symbol must not gain the common
    // folder again on every round.
    WriteSettings("元件类型:1\n端子A路径:/elsewhere/SYMB2LIB/Gone.dxf\n");
    const std::string first = Loaded().termSymbolPath;
    for (int round = 0; round < 3; ++round) {
        const std::vector<std::string> lines = *drawsettings::ReadSettingLines();
        const PlcDrawSettings settings = Loaded();
        WriteSettings(
            drawsettings::FullFormText(drawsettings::LoadFormatTerminals(&lines), settings));
        EXPECT_EQ(Loaded().termSymbolPath, first) << "round " << round;
    }
}

TEST_F(SettingsFileTest, ShortFormReadsAsAFileWithoutLabels) {
    WriteSettings(drawsettings::ShortFormText({Common() + "SYMB2LIB/X.dxf", "X", 1, "9", 2.0f}));
    const PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 1);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_KTR5");
    EXPECT_EQ(s.termDirection, 2);
    EXPECT_FALSE(s.labelModuleCodePrefix);
}

TEST_F(SettingsFileTest, WindowsFileInGb18030WithCrLfReadsTheSame) {
    const std::string text =
        "端子B路径:\\SYMB2LIB\\符号乙.DWG\n端子B名称:符号乙\n端子B方向:1\n类型B宽度:15\n端子B长度:"
        "2.5\n元件类型:2\n"
        "标注框架号:FALSE\n端子间隔距离:12.5\n";
    WriteSettings(text);
    const PlcDrawSettings fromUtf8 = Loaded();
    WriteSettings(WithCrLf(ToGb18030(text)));
    const PlcDrawSettings fromWindows = Loaded();
    EXPECT_EQ(fromWindows.termSymbolName, "符号乙");
    EXPECT_EQ(fromWindows.termSymbolName, fromUtf8.termSymbolName);
    EXPECT_EQ(fromWindows.termSymbolPath, Common() + "SYMB2LIB/符号乙.dxf");
    EXPECT_EQ(fromWindows.componentType, 2);
    EXPECT_EQ(fromWindows.termDirection, 1);
    EXPECT_FLOAT_EQ(fromWindows.typeWidth, 15.0f);
    EXPECT_FLOAT_EQ(fromWindows.termLength, 2.5f);
    EXPECT_FLOAT_EQ(fromWindows.termSpacing, 12.5f);
    EXPECT_FALSE(fromWindows.labelFrameNo);
}

TEST_F(SettingsFileTest, DamagedFilesNeverFailTheLoad) {
    // Binary bytes: no label is found.
    std::string binary;
    for (int i = 0; i < 512; ++i) {
        binary += static_cast<char>((i * 37) & 0xFF);
    }
    WriteSettings(binary);
    PlcDrawSettings s = Loaded();
    EXPECT_EQ(s.componentType, 1);
    EXPECT_FALSE(s.labelModuleCodePrefix);

    // Truncated in the middle of a line: the lines before it still count.
    WriteSettings("元件类型:2\n端子B名称:SYMB2_S_0");
    s = Loaded();
    EXPECT_EQ(s.componentType, 2);
    EXPECT_EQ(s.termSymbolName, "SYMB2_S_0");

    // A folder where the file should be is a file that cannot be opened.
    std::filesystem::remove(SettingFile());
    std::filesystem::create_directory(SettingFile());
    s = Loaded();
    EXPECT_TRUE(s.labelModuleCodePrefix);
    EXPECT_EQ(s.componentType, 1);
}

TEST_F(SettingsFileTest, FormatPageLoadsEveryFormatWithItsDefaults) {
    const std::string existing = TouchSymbol("Exists");
    WriteSettings("端子A名称:OnlyName\n端子B路径:" + existing +
                  "\n端子B方向:\n类型C宽度:7\n端子C长度:1.5\n端子C路径:rel/Missing.dxf\n");
    const auto lines = drawsettings::ReadSettingLines();
    ASSERT_TRUE(lines);
    const auto formats = drawsettings::LoadFormatTerminals(&*lines);
    EXPECT_EQ(formats[0].name, "OnlyName");
    EXPECT_EQ(formats[0].path, Common() + "SYMB2LIB/SYMB2_S_KTR5.dxf");
    EXPECT_EQ(formats[0].widthText, "10.0");
    EXPECT_EQ(formats[1].name, "SYMB2_S_KTR17");
    EXPECT_EQ(formats[1].path, existing);
    EXPECT_EQ(formats[1].direction, 2);
    EXPECT_FLOAT_EQ(formats[1].length, 5.0f);
    EXPECT_EQ(formats[2].name, "SYMB2_S_KTR211");
    EXPECT_EQ(formats[2].path, Common() + "rel/Missing.dxf");
    EXPECT_EQ(formats[2].widthText, "7");
    EXPECT_FLOAT_EQ(formats[2].length, 1.5f);
}

TEST_F(SettingsFileTest, ReadOnlyFileRefusesTheWriteAndKeepsItsBytes) {
    WriteSettings("元件类型:3\n");
    ::chmod(SettingFile().c_str(), 0444);
    EXPECT_FALSE(drawsettings::WriteSettingsFile(SettingFile().string(), "元件类型:1\n"));
    EXPECT_EQ(ReadSettings(), "元件类型:3\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(localDir / "LocalData"),
                            std::filesystem::directory_iterator()),
              1);  // no temporary file left behind
}

// Another program saving its own settings between our read and our write: ours is refused
// with the reason, theirs is kept. A write after a fresh read goes through.
TEST_F(SettingsFileTest, AFileChangedSinceItWasReadIsNotOverwritten) {
    WriteSettings("元件类型:3\n");
    ASSERT_TRUE(drawsettings::ReadSettingLines());
    const auto other = SettingFile().string() + ".other";
    testing_support::WriteFile(other, "元件类型:2\n");
    std::filesystem::rename(other, SettingFile());
    std::string error;
    EXPECT_FALSE(drawsettings::WriteSettingsFile(SettingFile().string(), "元件类型:1\n", &error));
    EXPECT_NE(error.find("changed on disk"), std::string::npos) << error;
    EXPECT_EQ(drawsettings::LastSettingsWriteError(), error);
    EXPECT_EQ(ReadSettings(), "元件类型:2\n");

    ASSERT_TRUE(drawsettings::ReadSettingLines());
    EXPECT_TRUE(drawsettings::WriteSettingsFile(SettingFile().string(), "元件类型:1\n", &error))
        << error;
    // Our own write is what we last saw: a second write needs no new read.
    EXPECT_TRUE(drawsettings::WriteSettingsFile(SettingFile().string(), "元件类型:3\n", &error))
        << error;
    EXPECT_EQ(ReadSettings(), "元件类型:3\n");
}
