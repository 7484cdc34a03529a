#include "preview/convertCMYKtoRGB.h"

#include <algorithm>

namespace {

constexpr double kFull = 255;

/// What an ink and black leave of the paper's white.
unsigned char Light(double ink, double black) {
    const double dark = ink * (1 - black / kFull) + black;
    return static_cast<unsigned char>(255 - static_cast<int>(std::clamp(dark, 0.0, kFull)));
}

}  // namespace

void convertCMYKtoRGB::ConvertCMYK(double c, double m, double y, double k, unsigned char* r,
                                   unsigned char* g, unsigned char* b) {
    *r = Light(c, k);
    *g = Light(m, k);
    *b = Light(y, k);
}

void convertCMYKtoRGB::ConvertCMY(const unsigned char cmy[3], unsigned char rgb[3]) {
    for (int i = 0; i < 3; ++i)
        rgb[i] = static_cast<unsigned char>(255 - cmy[i]);
}

void convertCMYKtoRGB::ConvertCMYKBytes(const unsigned char cmyk[4], unsigned char rgb[3]) {
    for (int i = 0; i < 3; ++i)
        rgb[i] = Light(cmyk[i], cmyk[3]);
}
