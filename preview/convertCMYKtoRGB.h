#pragma once

/// Turns ink amounts, 0 to 255, into the colour that they make on white paper.
class convertCMYKtoRGB final {
  public:
    convertCMYKtoRGB() = default;
    convertCMYKtoRGB(const convertCMYKtoRGB&) = delete;
    convertCMYKtoRGB& operator=(const convertCMYKtoRGB&) = delete;

    /// Sums beyond full ink are full ink.
    virtual void ConvertCMYK(double c, double m, double y, double k, unsigned char* r,
                             unsigned char* g, unsigned char* b);
    virtual void ConvertCMY(const unsigned char cmy[3], unsigned char rgb[3]);
    virtual void ConvertCMYKBytes(const unsigned char cmyk[4], unsigned char rgb[3]);
};
