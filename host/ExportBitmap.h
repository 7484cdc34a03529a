#pragma once

#include <cstdint>
#include <memory>

/// Writes one raster channel to one file, line by line. The format goes by the name's extension:
/// ".tif" and ".tiff" in any case are TIFF, anything else raw lines.
class ExportBitmap {
  public:
    /// Creates the file, empty, replacing an older one. `width` is in pixels and a multiple of
    /// 32, the resolutions are in dots per inch, `bits` is 1, 2, 4 or 8 per pixel. The trailing
    /// arguments are the host's and always 0 or null.
    ExportBitmap(const char* path, uint32_t width, uint32_t height, double xResolution,
                 double yResolution, int bits, int reserved1, int reserved2, void* reserved3,
                 void* reserved4, int reserved5);
    /// Closes the file as Close does, and says nothing.
    virtual ~ExportBitmap();
    ExportBitmap(const ExportBitmap&) = delete;
    ExportBitmap& operator=(const ExportBitmap&) = delete;

    /// Whether the file could be created.
    bool IsOpen() const;

    /// Takes `lineCount` lines of `bytesPerLine` bytes, top line first. With the last line of the
    /// height everything is handed to the system. 0 once a write has failed and for
    /// lines beyond the height. Never throws.
    virtual int WriteBand(int lineCount, int bytesPerLine, const void* data);

    /// Completes and closes the file, which then holds the lines received. 0 when it lacks any of
    /// them, as when a write has failed before.
    int Close() noexcept;
    /// The system's number for why the file could not be created, or the first failed write or the
    /// close; 0 when it gave none.
    int SystemError() const;

  private:
    struct File;
    std::unique_ptr<File> file_;
    int systemError_ = 0;  ///< of the creation
};
