// A PNG read back with cairo, for checking where a picture has ink.
#pragma once

#include <cairo.h>

#include <cstdint>
#include <string>

namespace render_test {

struct Pixel {
    int r = 0, g = 0, b = 0;
};

class PixelImage {
public:
    explicit PixelImage(const std::string& path)
        : surface_(cairo_image_surface_create_from_png(path.c_str())) {}
    ~PixelImage() { cairo_surface_destroy(surface_); }
    PixelImage(const PixelImage&) = delete;
    PixelImage& operator=(const PixelImage&) = delete;

    bool Ok() const { return cairo_surface_status(surface_) == CAIRO_STATUS_SUCCESS; }
    int Width() const { return cairo_image_surface_get_width(surface_); }
    int Height() const { return cairo_image_surface_get_height(surface_); }

    Pixel At(int x, int y) const {
        cairo_surface_flush(surface_);
        const unsigned char* data = cairo_image_surface_get_data(surface_);
        const int stride = cairo_image_surface_get_stride(surface_);
        const auto v = *reinterpret_cast<const std::uint32_t*>(data + y * stride + x * 4);
        return {static_cast<int>((v >> 16) & 0xFF), static_cast<int>((v >> 8) & 0xFF),
                static_cast<int>(v & 0xFF)};
    }

    // Pixels in the rectangle [x0, x1) x [y0, y1) that satisfy `test`.
    template <class Test>
    int Count(int x0, int y0, int x1, int y1, Test test) const {
        int n = 0;
        for (int y = std::max(0, y0); y < std::min(Height(), y1); ++y) {
            for (int x = std::max(0, x0); x < std::min(Width(), x1); ++x) {
                n += test(At(x, y)) ? 1 : 0;
            }
        }
        return n;
    }
    template <class Test>
    int Count(Test test) const {
        return Count(0, 0, Width(), Height(), test);
    }

private:
    cairo_surface_t* surface_;
};

inline bool IsRed(Pixel p) {
    return p.r > 180 && p.g < 90 && p.b < 90;
}
inline bool IsDark(Pixel p) {
    return p.r < 100 && p.g < 100 && p.b < 100;
}
inline bool IsInk(Pixel p) {
    return p.r < 230 || p.g < 230 || p.b < 230;
}

}  // namespace render_test
