#include "cad/render/Colours.h"

#include <cmath>

namespace cad::render {

namespace {

double Luminance(Rgb c) {
    return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b;
}

// Indices 10..249 run through 24 hues, 15 degrees apart; within a hue, even indices are
// full colours and odd ones their half-saturated tints, at five falling brightnesses.
Rgb HueColour(int index) {
    const double hue = ((index / 10) - 1) * 15.0;
    const int shade = (index % 10) / 2;
    static constexpr double kValue[5] = {1.0, 0.65, 0.5, 0.3, 0.15};
    const double v = kValue[shade];
    const double h = hue / 60.0;
    const double x = 1 - std::abs(std::fmod(h, 2.0) - 1);
    Rgb pure;
    switch (static_cast<int>(h) % 6) {
        case 0:
            pure = {1, x, 0};
            break;
        case 1:
            pure = {x, 1, 0};
            break;
        case 2:
            pure = {0, 1, x};
            break;
        case 3:
            pure = {0, x, 1};
            break;
        case 4:
            pure = {x, 0, 1};
            break;
        default:
            pure = {1, 0, x};
            break;
    }
    if (index % 2 == 1) {
        pure = {0.5 + pure.r / 2, 0.5 + pure.g / 2, 0.5 + pure.b / 2};
    }
    return {pure.r * v, pure.g * v, pure.b * v};
}

}  // namespace

bool IsLight(Rgb colour) {
    return Luminance(colour) > 0.5;
}

Rgb IndexColour(int index, Rgb background) {
    static constexpr Rgb kBasic[10] = {{0, 0, 0},       {1, 0, 0},         {1, 1, 0}, {0, 1, 0},
                                       {0, 1, 1},       {0, 0, 1},         {1, 0, 1}, {1, 1, 1},
                                       {0.5, 0.5, 0.5}, {0.75, 0.75, 0.75}};
    static constexpr double kGrey[6] = {0.2, 0.31, 0.41, 0.51, 0.75, 1.0};
    if (index <= 0 || index > 255 || index == 7) {
        return IsLight(background) ? Rgb{0, 0, 0} : Rgb{1, 1, 1};
    }
    if (index < 10) {
        return kBasic[index];
    }
    if (index >= 250) {
        const double g = kGrey[index - 250];
        return {g, g, g};
    }
    return HueColour(index);
}

Rgb PaintColour(int index, Rgb background) {
    Rgb c = IndexColour(index, background);
    const double lum = Luminance(c);
    if (IsLight(background) && lum > 0.5) {
        const double k = 0.5 / lum;
        c = {c.r * k, c.g * k, c.b * k};
    }
    return c;
}

}  // namespace cad::render
