#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// What one TIFF handle of ours reads, writes and complains to. It outlives the handle. The calls
/// come through libtiff's C frames: nothing can be thrown from them, and what cannot be had is
/// answered as a failed read or write.
class TiffClient {
  public:
    virtual ~TiffClient() = default;
    virtual tmsize_t Read(void* data, tmsize_t count) noexcept = 0;
    virtual tmsize_t Write(void* data, tmsize_t count) noexcept = 0;
    /// The new position, or all bits set.
    virtual toff_t Seek(toff_t offset, int origin) noexcept = 0;
    virtual toff_t Size() noexcept = 0;

    /// Whether libtiff has reported an error or a warning since the last ForgetComplaints.
    bool HasComplained() const { return hasComplained_; }
    void ForgetComplaints() { hasComplained_ = false; }

  private:
    friend int NoteComplaint(TIFF* tiff, void* client, const char* module, const char* format,
                             va_list arguments) noexcept;
    bool hasComplained_ = false;
};

/// Opens a handle over `client` with libtiff's `mode` letters; null on failure. The file is never
/// mapped, a single allocation never exceeds `mostAllocation` bytes, and what libtiff has to say
/// goes to the client alone: no global handler is called and nothing is printed.
TiffHandle OpenTiff(TiffClient& client, const char* mode, std::uint64_t mostAllocation);
