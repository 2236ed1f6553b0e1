#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <random>

#include "cad/Encoding.h"
#include "cad/NumberText.h"

namespace cad {
namespace {

TEST(TextAndNumbers, RealsAreShortestCLocaleTextThatReadsBack) {
    // A process locale with a decimal comma must not leak into files.
    const char* old = std::setlocale(LC_NUMERIC, nullptr);
    const std::string saved = old != nullptr ? old : "C";
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    for (double v : {0.0, 1.0, -2.5, 1.5707963, 0.1, 1e-12, 123456789.125, -0.000001}) {
        const std::string text = FormatReal(v);
        EXPECT_EQ(text.find(','), std::string::npos) << text;
        double back = 0;
        ASSERT_TRUE(ParseReal(text, back)) << text;
        EXPECT_EQ(back, v) << text;
    }
    std::setlocale(LC_NUMERIC, saved.c_str());
    EXPECT_EQ(FormatReal(10), "10.0");
    EXPECT_EQ(FormatReal(std::nan("")), "0.0");  // never "nan" in a file
}

// Values with few decimals take a short path; every written value must read back as the
// same double, and a short decimal must be written as that decimal.
TEST(TextAndNumbers, RealsReadBackExactlyOnEveryPath) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<long long> whole(-2000000000LL, 2000000000LL);
    std::uniform_int_distribution<int> decimals(0, 8);
    std::uniform_int_distribution<std::uint64_t> bits;
    for (int i = 0; i < 200000; ++i) {
        const int k = decimals(random);
        const double v = i % 4 == 3 ? std::bit_cast<double>(bits(random))
                                    : static_cast<double>(whole(random)) / std::pow(10.0, k);
        if (!std::isfinite(v)) {
            continue;
        }
        const std::string text = FormatReal(v);
        double back = 0;
        ASSERT_TRUE(ParseReal(text, back)) << text;
        ASSERT_EQ(back, v) << text;
    }
    EXPECT_EQ(FormatReal(3.5), "3.5");
    EXPECT_EQ(FormatReal(-0.25), "-0.25");
    EXPECT_EQ(FormatReal(0.001), "0.001");
    EXPECT_EQ(FormatReal(-0.0105), "-0.0105");
    EXPECT_EQ(FormatReal(12345.678), "12345.678");
    EXPECT_EQ(FormatReal(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(FormatReal(1.5707963), "1.5707963");
}

TEST(TextAndNumbers, ParsingRejectsWhatIsNotANumber) {
    double d = 0;
    long long i = 0;
    Handle h = 0;
    EXPECT_TRUE(ParseReal("  -1.5e3 ", d));
    EXPECT_EQ(d, -1500);
    EXPECT_FALSE(ParseReal("1,5", d));
    EXPECT_FALSE(ParseReal("", d));
    EXPECT_FALSE(ParseReal("1e999", d));  // infinite
    EXPECT_FALSE(ParseInt("12x", i));
    EXPECT_TRUE(ParseHandle("1F", h));
    EXPECT_EQ(h, 0x1Fu);
    EXPECT_FALSE(ParseHandle("1G", h));
    EXPECT_TRUE(ParseHandle(" 1f ", h));
    EXPECT_EQ(h, 0x1Fu);
    EXPECT_TRUE(ParseHandle("FFFFFFFFFFFFFFFF", h));
    EXPECT_EQ(h, ~Handle{0});
    EXPECT_FALSE(ParseHandle("-1", h));
    EXPECT_FALSE(ParseHandle("12345678901234567", h));  // longer than 64 bits
    EXPECT_EQ(FormatHandle(0xABC), "ABC");
}

TEST(TextAndNumbers, GbkEncodingEscapesWhatGbkCannotHold) {
    const std::string text = "端子 X1 ☃ é";  // ☃ is not in GBK; é is
    const std::string gbk = EncodeText(text, "GBK");
    EXPECT_NE(gbk.find("\\U+2603"), std::string::npos);
    EXPECT_EQ(gbk.find("\xE2\x98\x83"), std::string::npos);  // no UTF-8 bytes left
    EXPECT_EQ(DecodeText(gbk, "GBK"), text);
    // Beyond the basic plane: a surrogate pair of escapes, decoded back to one character.
    const std::string emoji = "\xF0\x9F\x94\x8C";
    EXPECT_EQ(EncodeText(emoji, "GBK"), "\\U+D83D\\U+DD0C");
    EXPECT_EQ(DecodeText(EncodeText(emoji, "GBK"), "GBK"), emoji);
}

TEST(TextAndNumbers, DecodingFallsBackToUtf8AndKeepsBadBytesVisible) {
    // A file that claims a code page but holds UTF-8 (common in files from other programs).
    EXPECT_EQ(DecodeText("\xE7\xAB\xAF", "CP1252"), "\xC3\xA7\xC2\xAB\xC2\xAF");  // valid CP1252
    EXPECT_EQ(DecodeText("a\x81", "GBK"), "a\xEF\xBF\xBD");  // a lone lead byte
    EXPECT_EQ(CodepageCharset("ansi_936"), "GBK");
    EXPECT_EQ(CodepageCharset("ANSI_1251"), "CP1251");
    EXPECT_EQ(CodepageCharset("nonsense"), "CP1252");
}

}  // namespace
}  // namespace cad
