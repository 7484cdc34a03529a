#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/Stream.h"

/// What a channel file is to hold.
struct ChannelFormat {
    uint32_t widthPixels;
    uint32_t height;     ///< lines
    double xResolution;  ///< dots per inch
    double yResolution;
    int bits;             ///< per pixel: 1, 2, 4 or 8
    uint64_t lineBytes;   ///< of one line, at most 2^31 - 1
    uint32_t blockLines;  ///< lines that arrive in one Write but for the last, at least 1
};

/// Puts blocks of lines into an open, empty file. What its stream still holds back shows when it is
/// closed.
class ChannelWriter {
  public:
    virtual ~ChannelWriter() = default;
    /// Writes `lineCount` lines at the end, at most blockLines. False when the stream refuses.
    [[nodiscard]] virtual bool Write(const void* lines, uint32_t lineCount) = 0;
    /// Writes what a file needs behind its lines. Called once, after at least one Write.
    [[nodiscard]] virtual bool Complete() = 0;
};

/// The lines one after another and nothing else. `file` is borrowed.
std::unique_ptr<ChannelWriter> MakeRawWriter(std::FILE* file, const ChannelFormat& format);

/// A TIFF with one uncompressed strip a block: white is zero, resolution per inch, BigTIFF when
/// the data would pass 4 GiB. `file` is borrowed. Nothing is written before the
/// first block.
std::unique_ptr<ChannelWriter> MakeTiffWriter(std::FILE* file, const ChannelFormat& format);
