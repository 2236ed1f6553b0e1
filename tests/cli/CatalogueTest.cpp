// The English catalogue: the compiled en.po as the program reads it, formatted messages
// matched against their format strings, and the locale that asks for it.
#include <gtest/gtest.h>

#include <filesystem>

#include "Catalogue.h"
#include "TestPaths.h"

namespace {

using testing_support::ScopedEnv;

cli::Catalogue Compiled(const std::string& msgfmtOptions = "") {
    cli::Catalogue catalogue;
    EXPECT_TRUE(catalogue.Load(QV_ENGLISH_MO));
    if (!msgfmtOptions.empty()) {
        testing_support::TempDir dir;
        const std::string mo = (dir / "other.mo").string();
        EXPECT_EQ(testing_support::RunCommand("msgfmt " + msgfmtOptions + " -o '" + mo + "' '" +
                                              QV_ENGLISH_PO + "'"),
                  0);
        cli::Catalogue other;
        EXPECT_TRUE(other.Load(mo));
        return other;
    }
    return catalogue;
}

TEST(CatalogueTest, TranslatesPlainAndFormattedMessages) {
    const cli::Catalogue catalogue = Compiled();
    EXPECT_GT(catalogue.Size(), 20u);
    EXPECT_EQ(catalogue.Translate("请输入标号"), "Please enter a tag");
    // One value, at the end of the message and in its middle.
    EXPECT_EQ(catalogue.Translate("无法写入文件/tmp/a b/x.dat"),
              "Cannot write the file /tmp/a b/x.dat");
    EXPECT_EQ(catalogue.Translate("错误：PLC元件数据库文件/l/PLC/QvPLC.db不存在！"),
              "Error: the PLC component library file /l/PLC/QvPLC.db does not exist!");
    // Two values, the second running to the end (an error text with its own colons).
    EXPECT_EQ(catalogue.Translate("文件</d/x.dxf>写入失败：open: Permission denied"),
              "Writing the file </d/x.dxf> failed: open: Permission denied");
    // The translation puts the values in its own order.
    EXPECT_EQ(catalogue.Translate("符号KTR5对应库文件/s/KTR5.dxf已被破坏！"),
              "The library file /s/KTR5.dxf of the symbol KTR5 is damaged!");
    // Only whole messages match: a text around a known one, or a value left empty, is not it.
    EXPECT_EQ(catalogue.Translate("请输入标号!"), "");
    EXPECT_EQ(catalogue.Translate("注意：请输入标号"), "");
    EXPECT_EQ(catalogue.Translate("无法写入文件"), "");
    EXPECT_EQ(catalogue.Translate("文件<x>打开失败！more"), "");
}

TEST(CatalogueTest, ReadsBothByteOrdersAndRefusesBrokenFiles) {
    const cli::Catalogue big = Compiled("--endianness=big");
    EXPECT_EQ(big.Size(), Compiled().Size());
    EXPECT_EQ(big.Translate("设置"), "Settings");

    testing_support::TempDir dir;
    const std::string whole = testing_support::ReadFile(QV_ENGLISH_MO);
    const std::pair<const char*, std::string> broken[] = {
        {"empty", ""},
        {"truncated header", whole.substr(0, 20)},
        {"truncated strings", whole.substr(0, whole.size() / 2)},
        {"not a catalogue", std::string(whole.size(), 'x')},
    };
    for (const auto& [name, bytes] : broken) {
        testing_support::WriteFile(dir / "bad.mo", bytes);
        cli::Catalogue catalogue;
        EXPECT_FALSE(catalogue.Load((dir / "bad.mo").string())) << name;
        EXPECT_EQ(catalogue.Size(), 0u) << name;
    }
    cli::Catalogue missing;
    EXPECT_FALSE(missing.Load((dir / "none.mo").string()));
}

TEST(CatalogueTest, TheFirstLocaleVariableSetDecides) {
    struct Case {
        const char* all;
        const char* messages;
        const char* lang;
        bool english;
    };
    const Case cases[] = {
        {"", "", "en_US.UTF-8", true},
        {"", "", "zh_CN.UTF-8", false},
        {"C", "", "en_US.UTF-8", false},
        {"", "en_GB.UTF-8", "zh_CN.UTF-8", true},
        {"", "zh_CN.UTF-8", "en_US", false},
        {"en", "", "", true},
        {"", "", "", false},
    };
    for (const Case& c : cases) {
        ScopedEnv all("LC_ALL", c.all);
        ScopedEnv messages("LC_MESSAGES", c.messages);
        ScopedEnv lang("LANG", c.lang);
        EXPECT_EQ(cli::WantsEnglish(), c.english)
            << "LC_ALL=" << c.all << " LC_MESSAGES=" << c.messages << " LANG=" << c.lang;
    }
}

}  // namespace
