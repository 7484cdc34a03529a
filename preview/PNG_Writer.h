#pragma once

#include "preview/Image_Writer.h"

/// A picture as a PNG of 8 bits a sample, through the PNG library that is bound when the picture is
/// saved.
class PNG_Writer : public Image_Writer {
  public:
    void Create(const AString& name, int width, int height) override;
    void SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) override;
    /// The file's top row is the picture's last. Without the library, or one of its entry points,
    /// a message is shown, the file is empty and the answer 1. 0 when the file cannot be opened
    /// or the library cannot start. Failures while the picture is written are shown and answer 1;
    /// what the library refuses leaves what it has written.
    int Save() override;

  private:
    int WritePicture(const char*& message);
    bool IsDone(bool succeeded);

    std::vector<std::vector<uint8_t>> rows_;
    int rowSize_ = 0;  ///< bytes of a row's buffer, spare ones included
    int rowCount_ = 0;
    int padding_ = 0;
};
