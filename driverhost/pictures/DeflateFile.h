#pragma once

#include <zlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

/// A file of plain text with compressed parts. Throws HostError when a write fails.
class DeflateFile {
  public:
    explicit DeflateFile(const std::filesystem::path& path);
    ~DeflateFile();
    DeflateFile(const DeflateFile&) = delete;
    DeflateFile& operator=(const DeflateFile&) = delete;

    /// Bytes written so far.
    int64_t Position() const { return position_; }
    void Write(std::string_view text);
    void BeginCompressed();
    void WriteCompressed(std::span<const uint8_t> bytes);
    void EndCompressed();
    /// Everything is on its way to the disk when this returns.
    void Close();

  private:
    void Deflate(int flush);
    [[noreturn]] void Fail() const;

    std::filesystem::path path_;
    std::ofstream file_;
    int64_t position_ = 0;
    z_stream stream_ = {};
    std::vector<uint8_t> block_;
};
