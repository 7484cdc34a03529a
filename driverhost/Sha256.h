#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

/// SHA-256 (FIPS 180-4) of bytes that come piece by piece, as sha256sum prints it.
class Sha256 {
  public:
    /// Throws HostError when the library cannot begin.
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Add(std::span<const uint8_t> bytes);
    /// 64 hexadecimal digits; ends the sum.
    std::string Hex();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The sum of a whole file. Throws HostError when it cannot be read.
std::string Sha256OfFile(const std::filesystem::path& path);
