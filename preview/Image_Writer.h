#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/AString.h"
#include "platform/Stream.h"

/// Why a picture is not there whole.
struct ImageFailure {
    const char* text = nullptr;  ///< a constant; null when nothing failed
    int systemError = 0;         ///< the system's number for the reason; 0 where it gave none
    bool isWriteFailure =
        false;  ///< a write or the close failed at the system: the file is removed
};

/// Holds a picture and writes it to a file in one step. This one knows no format: its file holds a
/// 32-bit word a pixel, 0x00RRGGBB, row after row.
class Image_Writer {
  public:
    Image_Writer() = default;
    virtual ~Image_Writer();
    Image_Writer(const Image_Writer&) = delete;
    Image_Writer& operator=(const Image_Writer&) = delete;

    /// Makes a black picture of `width` x `height` pixels, to be saved as the file `name`.
    virtual void Create(const AString& name, int width, int height);
    /// Does nothing outside the picture.
    virtual void SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b);
    /// Writes the file. 0 when it cannot be opened, else 1, also when it had to be removed again.
    virtual int Save();
    /// What Save met.
    const ImageFailure& Failure() const { return failure_; }

  protected:
    void SetSize(const AString& name, int width, int height);
    bool IsInside(int x, int y) const { return x >= 0 && x < width_ && y >= 0 && y < height_; }
    /// Opens the file anew; false, with a failure, when the system does not.
    bool OpenFile();
    /// Hands bytes to the file; none behind a write that has failed.
    void Write(const void* bytes, std::size_t count);
    /// Closes the file, and removes it when a write or the close has failed at the system.
    void CloseFile();
    void Fail(const char* text) { failure_.text = text; }
    /// To be called at once when a write has failed.
    void FailWrite();

    AString name_;
    Stream file_;  ///< open only while the picture is saved
    int width_ = 0;
    int height_ = 0;

  private:
    ImageFailure failure_;
    std::vector<std::vector<uint32_t>> rows_;
};
