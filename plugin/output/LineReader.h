#pragma once

#include <cstdint>
#include <vector>

#include "host/AFilePath.h"
#include "platform/Stream.h"

/// Reads a file of lines, first line first or last line first, a block at a time.
class LineReader {
  public:
    /// Lines of `lineBytes` > 0. False when the file cannot be read.
    bool Open(const AFilePath& path, int64_t lineBytes, bool lastLineFirst);
    /// The next line, valid and changeable until the next call; null after the last. Read first
    /// line first, a file that ends within a line gives that line, ending as the one before did;
    /// read last line first, the lines count from the file's end.
    uint8_t* Next();

  private:
    bool ReadBlock();

    Stream stream_;
    int64_t lineBytes_ = 0;
    bool lastLineFirst_ = false;
    int64_t bytesLeft_ = 0;  ///< of the file, not in a block yet
    std::vector<uint8_t> block_;
    int64_t blockBytes_ = 0;
    int64_t place_ = 0;  ///< of the next line in the block; last line first, the end of it
    std::vector<uint8_t> line_;
};
