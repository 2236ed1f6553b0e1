// Laying out texts the same way for every back-end: how wide a line is without a font at
// hand, how paragraphs wrap at a reference width, and where each line of a text block
// stands for its attachment point.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cad/render/Canvas.h"

namespace cad::render {

// Advance of `text` for a capital height of 1 and width factor 1, without a font: Latin
// letters and digits count 0.75, blanks 0.5, and characters from the CJK blocks (and
// other wide characters) 1.4, about what the CJK sans fonts give.
double EstimateAdvance(std::string_view utf8);

// The one width metric every canvas lays text out by (alignment, wrapping, extents): the
// estimate above for the line's capital height and width factor. A canvas with a real font
// stretches its glyphs to this advance, so that a text covers the same ground in a picture,
// on screen and in the drawing's extents.
double TextAdvance(std::string_view utf8, double height, double widthFactor);
// The line's drawn length: its fit length when it has one, else its advance.
double LineAdvance(const TextLine& line);

// Measures a line's advance in drawing units, for the block's height and width factor.
using MeasureLine = std::function<double(const std::string&)>;

// Breaks one paragraph into lines no longer than `width` (unlimited when width <= 0).
// Breaks at blanks where it can and between any two wide characters.
std::vector<std::string> WrapParagraph(const std::string& paragraph, double width,
                                       const MeasureLine& measure);

// The lines of `block`, each anchored where its aligned point stands in world coordinates.
std::vector<TextLine> LayoutTextBlock(const TextBlock& block, const MeasureLine& measure);

// Splits UTF-8 text into its characters (invalid bytes stand alone).
std::vector<std::string_view> Utf8Chars(std::string_view text);
// True for characters drawn full width (CJK ideographs, kana, hangul, full-width forms).
bool IsWideChar(std::string_view utf8Char);

}  // namespace cad::render

namespace cad::render {

// Where the left end of a line's baseline stands relative to its anchor, in the line's own
// axes (x along the text, y up), for a line `advance` long.
Point2 AlignOffset(const TextLine& line, double advance);

// The four corners of the box a line covers (descenders and CJK glyphs included), world
// coordinates, counter-clockwise from the lower left.
std::vector<Point2> TextLineBox(const TextLine& line, double advance);

}  // namespace cad::render
