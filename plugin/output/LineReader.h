#pragma once

#include <cstdint>
#include <functional>
#include <vector>

/// Reads `count` bytes at `offset` into `data`; false when not all of them can be read.
using ReadBytesAt = std::function<bool(int64_t offset, void* data, std::size_t count)>;

/// Reads lines out of a file, first line first or last line first, a block at a time.
class LineReader {
  public:
    /// Lines of `lineBytes` > 0 out of `fileBytes` bytes that `read` gives.
    void Start(ReadBytesAt read, int64_t fileBytes, int64_t lineBytes, bool lastLineFirst);
    /// The next line, valid and changeable until the next call; null after the last and when it
    /// cannot be read. Read first line first, a file that ends within a line gives that line,
    /// ending as the one before did; read last line first, the lines count from the file's end.
    uint8_t* Next();
    /// Whether a line could not be read.
    bool HasFailed() const { return hasFailed_; }

  private:
    bool ReadBlock();

    ReadBytesAt read_;
    int64_t lineBytes_ = 0;
    bool lastLineFirst_ = false;
    bool hasFailed_ = false;
    int64_t fileBytes_ = 0;
    int64_t bytesLeft_ = 0;  ///< of the file, not in a block yet
    std::vector<uint8_t> block_;
    int64_t blockBytes_ = 0;
    int64_t place_ = 0;  ///< of the next line in the block; last line first, the end of it
    std::vector<uint8_t> line_;
};
