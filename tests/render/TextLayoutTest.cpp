#include "cad/render/TextLayout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace cad::render;

namespace {

// One unit per character: easy widths to reason about.
const MeasureLine kPerChar = [](const std::string& s) {
    return static_cast<double>(Utf8Chars(s).size());
};

}  // namespace

TEST(Utf8, CharactersAndWidths) {
    const auto chars = Utf8Chars("A端子1");
    ASSERT_EQ(chars.size(), 4u);
    EXPECT_EQ(chars[1], "端");
    EXPECT_FALSE(IsWideChar(chars[0]));
    EXPECT_TRUE(IsWideChar(chars[1]));
    EXPECT_TRUE(IsWideChar("，"));  // full-width comma
    EXPECT_GT(EstimateAdvance("端子"), EstimateAdvance("AB"));
    // A truncated multi-byte sequence stands alone instead of reading past the end.
    EXPECT_EQ(Utf8Chars(std::string("A\xE7\xAB", 3)).size(), 3u);
}

TEST(Wrap, BreaksAtBlanksAndBetweenWideCharacters) {
    EXPECT_EQ(WrapParagraph("aaa bbb ccc", 7, kPerChar),
              (std::vector<std::string>{"aaa bbb", "ccc"}));
    EXPECT_EQ(WrapParagraph("模块描述文字", 4, kPerChar),
              (std::vector<std::string>{"模块描述", "文字"}));
    // A word longer than the width is cut rather than looping or dropping it.
    EXPECT_EQ(WrapParagraph("abcdefgh", 3, kPerChar),
              (std::vector<std::string>{"abc", "def", "gh"}));
    EXPECT_EQ(WrapParagraph("no wrap", 0, kPerChar), (std::vector<std::string>{"no wrap"}));
}

TEST(TextBlockLayout, AttachmentPlacesTheBlockAroundItsAnchor) {
    TextBlock block;
    block.paragraphs = {"one", "two"};
    block.anchor = {10, 20};
    block.height = 2;
    block.lineSpacing = 1.5;  // baselines 3 apart

    block.attachment = 1;  // top left: the first line's capitals hang from the anchor
    auto lines = LayoutTextBlock(block, kPerChar);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_DOUBLE_EQ(lines[0].anchor.y, 18);
    EXPECT_DOUBLE_EQ(lines[1].anchor.y, 15);
    EXPECT_EQ(lines[0].hAlign, HAlign::Left);

    block.attachment = 9;  // bottom right: the last baseline on the anchor
    lines = LayoutTextBlock(block, kPerChar);
    EXPECT_DOUBLE_EQ(lines[1].anchor.y, 20);
    EXPECT_EQ(lines[1].hAlign, HAlign::Right);

    block.attachment = 5;  // middle centre: the block's middle on the anchor
    lines = LayoutTextBlock(block, kPerChar);
    const double top = lines[0].anchor.y + 2, bottom = lines[1].anchor.y;
    EXPECT_DOUBLE_EQ((top + bottom) / 2, 20);
}

TEST(TextBlockLayout, RotatedBlockStacksLinesAlongItsOwnDownDirection) {
    TextBlock block;
    block.paragraphs = {"a", "", "b"};  // an empty paragraph still takes a line
    block.height = 1;
    block.lineSpacing = 2;
    block.rotation = std::numbers::pi / 2;
    const auto lines = LayoutTextBlock(block, kPerChar);
    ASSERT_EQ(lines.size(), 3u);
    // Turned a quarter left, "down" the block is +X.
    EXPECT_NEAR(lines[0].anchor.x, 1, 1e-12);
    EXPECT_NEAR(lines[2].anchor.x, 5, 1e-12);
    EXPECT_NEAR(lines[2].anchor.y, 0, 1e-12);
    EXPECT_DOUBLE_EQ(lines[2].rotation, block.rotation);
}

TEST(TextAlignment, OffsetsAndBoxFollowTheModes) {
    TextLine line;
    line.height = 2;
    line.hAlign = HAlign::Right;
    line.vAlign = VAlign::Top;
    Point2 o = AlignOffset(line, 8);
    EXPECT_DOUBLE_EQ(o.x, -8);
    EXPECT_DOUBLE_EQ(o.y, -2);
    line.hAlign = HAlign::Center;
    line.vAlign = VAlign::Middle;
    o = AlignOffset(line, 8);
    EXPECT_DOUBLE_EQ(o.x, -4);
    EXPECT_DOUBLE_EQ(o.y, -1);

    line.anchor = {100, 0};
    line.rotation = std::numbers::pi / 2;  // reads upwards: the box stands on end
    const auto box = TextLineBox(line, 8);
    double minY = 1e9, maxY = -1e9;
    for (const auto& p : box) {
        minY = std::min(minY, p.y);
        maxY = std::max(maxY, p.y);
    }
    EXPECT_NEAR(minY, -4, 1e-9);
    EXPECT_NEAR(maxY, 4, 1e-9);
}
