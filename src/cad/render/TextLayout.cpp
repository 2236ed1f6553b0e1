#include "cad/render/TextLayout.h"

#include <cmath>

namespace cad::render {

std::vector<std::string_view> Utf8Chars(std::string_view text) {
    std::vector<std::string_view> chars;
    size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        size_t len = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        if (i + len > text.size()) {
            len = 1;
        }
        chars.push_back(text.substr(i, len));
        i += len;
    }
    return chars;
}

namespace {

char32_t CodePoint(std::string_view c) {
    const auto b = [&](size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(c[i]));
    };
    switch (c.size()) {
        case 2:
            return ((b(0) & 0x1F) << 6) | (b(1) & 0x3F);
        case 3:
            return ((b(0) & 0x0F) << 12) | ((b(1) & 0x3F) << 6) | (b(2) & 0x3F);
        case 4:
            return ((b(0) & 0x07) << 18) | ((b(1) & 0x3F) << 12) | ((b(2) & 0x3F) << 6) |
                   (b(3) & 0x3F);
        default:
            return b(0);
    }
}

}  // namespace

bool IsWideChar(std::string_view utf8Char) {
    const char32_t cp = CodePoint(utf8Char);
    return (cp >= 0x1100 && cp <= 0x115F) || (cp >= 0x2E80 && cp <= 0xA4CF) ||
           (cp >= 0xAC00 && cp <= 0xD7A3) || (cp >= 0xF900 && cp <= 0xFAFF) ||
           (cp >= 0xFE30 && cp <= 0xFE4F) || (cp >= 0xFF00 && cp <= 0xFF60) ||
           (cp >= 0xFFE0 && cp <= 0xFFE6) || (cp >= 0x20000 && cp <= 0x3FFFD);
}

double EstimateAdvance(std::string_view utf8) {
    double advance = 0;
    for (const auto c : Utf8Chars(utf8)) {
        advance += c == " " ? 0.5 : IsWideChar(c) ? 1.4 : 0.75;
    }
    return advance;
}

double TextAdvance(std::string_view utf8, double height, double widthFactor) {
    return EstimateAdvance(utf8) * height * (widthFactor > 0 ? widthFactor : 1.0);
}

double LineAdvance(const TextLine& line) {
    return line.fitLength > 0 ? line.fitLength
                              : TextAdvance(line.text, line.height, line.widthFactor);
}

std::vector<std::string> WrapParagraph(const std::string& paragraph, double width,
                                       const MeasureLine& measure) {
    if (width <= 0 || measure(paragraph) <= width) {
        return {paragraph};
    }
    std::vector<std::string> lines;
    std::string line;
    size_t lastBlank = std::string::npos;  // in `line`, where a break may go
    for (const auto c : Utf8Chars(paragraph)) {
        const std::string candidate = line + std::string(c);
        if (!line.empty() && measure(candidate) > width) {
            if (c == " ") {
                lines.push_back(line);
                line.clear();
                lastBlank = std::string::npos;
                continue;
            }
            if (lastBlank != std::string::npos && !IsWideChar(c)) {
                lines.push_back(line.substr(0, lastBlank));
                line = line.substr(lastBlank + 1) + std::string(c);
            } else {
                lines.push_back(line);
                line = std::string(c);
            }
            lastBlank = std::string::npos;
            continue;
        }
        if (c == " ") {
            lastBlank = line.size();
        }
        line = candidate;
    }
    lines.push_back(line);
    return lines;
}

std::vector<TextLine> LayoutTextBlock(const TextBlock& block, const MeasureLine& measure) {
    std::vector<std::string> lines;
    for (const auto& paragraph : block.paragraphs) {
        for (auto& line : WrapParagraph(paragraph, block.referenceWidth, measure)) {
            lines.push_back(std::move(line));
        }
    }
    if (lines.empty()) {
        return {};
    }
    const int attachment = block.attachment >= 1 && block.attachment <= 9 ? block.attachment : 1;
    const int row = (attachment - 1) / 3, column = (attachment - 1) % 3;
    const double pitch = block.lineSpacing * block.height;
    const double total = block.height + pitch * (lines.size() - 1);
    // Baseline of the first line, measured along the block's own up direction.
    const double firstBaseline = row == 0   ? -block.height
                                 : row == 1 ? total / 2 - block.height
                                            : total - block.height;
    const double c = std::cos(block.rotation), s = std::sin(block.rotation);
    std::vector<TextLine> out;
    for (size_t i = 0; i < lines.size(); ++i) {
        const double up = firstBaseline - pitch * i;
        TextLine line;
        line.text = lines[i];
        line.anchor = {block.anchor.x - s * up, block.anchor.y + c * up};
        line.height = block.height;
        line.rotation = block.rotation;
        line.widthFactor = block.widthFactor;
        line.hAlign = column == 0 ? HAlign::Left : column == 1 ? HAlign::Center : HAlign::Right;
        line.vAlign = VAlign::Baseline;
        out.push_back(std::move(line));
    }
    return out;
}

}  // namespace cad::render

namespace cad::render {

Point2 AlignOffset(const TextLine& line, double advance) {
    Point2 offset;
    offset.x = line.hAlign == HAlign::Center  ? -advance / 2
               : line.hAlign == HAlign::Right ? -advance
                                              : 0;
    switch (line.vAlign) {
        case VAlign::Bottom:
            offset.y = 0.25 * line.height;  // the descenders rest on the anchor
            break;
        case VAlign::Middle:
            offset.y = -line.height / 2;
            break;
        case VAlign::Top:
            offset.y = -line.height;
            break;
        case VAlign::Baseline:
            break;
    }
    return offset;
}

std::vector<Point2> TextLineBox(const TextLine& line, double advance) {
    const Point2 o = AlignOffset(line, advance);
    const double bottom = o.y - 0.25 * line.height, top = o.y + 1.2 * line.height;
    const Point2 local[4] = {
        {o.x, bottom}, {o.x + advance, bottom}, {o.x + advance, top}, {o.x, top}};
    const double c = std::cos(line.rotation), s = std::sin(line.rotation);
    std::vector<Point2> corners;
    for (const auto& p : local) {
        corners.push_back({line.anchor.x + c * p.x - s * p.y, line.anchor.y + s * p.x + c * p.y});
    }
    return corners;
}

}  // namespace cad::render
