#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
/// An owned C stream. Its destructor only tidies up; where a failed close matters, release it and
/// look at fclose's answer.
using Stream = std::unique_ptr<std::FILE, CloseStream>;

/// Opens a file; null on failure. Never blocks on a pipe.
Stream OpenStream(const char* path, const char* mode);

/// fseek and ftell with 64-bit offsets. False / -1 on failure.
bool SeekStream(std::FILE* stream, std::int64_t offset, int origin);
std::int64_t TellStream(std::FILE* stream);

/// Has the file system find room for a file of so many bytes at once, which costs less than a block
/// at a time as it grows; the file's size stays. Where there is no room, or no such call, nothing
/// happens, and the write that does not fit fails as ever.
void ReserveSpace(std::FILE* stream, std::int64_t bytes);
/// Gives back what is reserved behind the file's end. What the stream still holds back finds room
/// as any write does.
void ReleaseSpace(std::FILE* stream);
