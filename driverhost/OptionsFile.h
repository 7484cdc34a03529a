#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "host/Records.h"

/// The option block of a job file, or of a file that holds nothing but one.
class OptionsFile {
  public:
    /// Throws HostError for a file that is neither.
    explicit OptionsFile(const std::filesystem::path& path);

    DriverOptionBlock Block = {};
    bool IsJob() const { return isJob_; }
    /// Model and colour mode of a job file; empty and 0 for a block file.
    const std::string& Model() const { return model_; }
    int32_t ColorMode() const { return colorMode_; }

    /// Writes the block back: complete, or the file stays as it was. Throws HostError.
    void Save() const;

  private:
    std::filesystem::path path_;
    std::string bytes_;
    bool isJob_ = false;
    std::string model_;
    int32_t colorMode_ = 0;
};

/// Whether a file holds nothing but a block, as far as its bytes tell.
bool IsBlockFile(const std::filesystem::path& path);

/// A block in the host's text form, and back. Throws HostError for a text that holds none.
std::string EncodeBlock(const DriverOptionBlock& block);
DriverOptionBlock DecodeBlock(const std::string& text);
