#pragma once

#include "preview/Image_Writer.h"

/// A picture as a Windows bitmap of 24 bits a pixel.
class BMP_Writer : public Image_Writer {
  public:
    void Create(const AString& name, int width, int height) override;
    void SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) override;
    /// The file holds the rows from the last to the first, so that row 0 is the picture's top.
    int Save() override;

  private:
    std::vector<std::vector<uint8_t>> rows_;
    int rowSize_ = 0;  ///< bytes of a row with its padding
    int rowCount_ = 0;
    int padding_ = 0;  ///< bytes that make a row a multiple of 4
};
