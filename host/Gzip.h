#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Whether the bytes start as a gzip file does.
bool IsGzip(std::string_view bytes);

/// What a gzip file of one or more members holds, at most `mostBytes` bytes. Nothing when it is
/// damaged: a wrong checksum or length, a cut, anything behind the last member.
std::optional<std::string> InflateGzip(std::string_view bytes, std::uint64_t mostBytes);
