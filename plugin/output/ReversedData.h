#pragma once

#include <cstdint>
#include <vector>

#include "host/AFilePath.h"
#include "platform/Stream.h"

/// The temporary file that holds a channel's lines until they can be written bottom line first.
/// Its name is fixed, so that a file that an earlier run left behind is replaced.
class ReversedData {
  public:
    ReversedData() = default;
    ~ReversedData() { Discard(); }
    ReversedData(const ReversedData&) = delete;
    ReversedData& operator=(const ReversedData&) = delete;

    /// Starts an empty file, which is going to have about `bytes` bytes. False, with nothing left
    /// behind, when it cannot be created.
    bool Start(const AFilePath& path, int64_t bytes);
    bool IsOpen() const { return stream_ != nullptr; }
    /// Appends bytes; false when the file does not take them.
    bool Append(const uint8_t* data, std::size_t count);

    /// Ends the gathering and hands every record of `recordBytes` bytes to
    /// `take(const uint8_t* record)`, last one first. False when the gathered data did not all
    /// reach the file; nothing is handed out then. A record that cannot be read back ends the
    /// hand-out. The file is deleted in every case.
    template <class Take>
    bool TakeBackwards(int64_t recordBytes, Take&& take) {
        const bool complete = StartReading(recordBytes);
        while (complete && ReadBlockBefore()) {
            for (int64_t record = blockRecords_; record-- > 0;) {
                take(block_.data() + record * recordBytes);
            }
        }
        Discard();
        return complete;
    }

    /// Closes and deletes the file.
    void Discard();

  private:
    bool StartReading(int64_t recordBytes);
    bool ReadBlockBefore();

    bool hasFile_ = false;
    AFilePath path_;
    std::vector<char> streamBuffer_;  // outlives the stream that uses it
    Stream stream_;
    int64_t recordBytes_ = 0;
    int64_t recordsLeft_ = 0;
    int64_t blockRecords_ = 0;
    std::vector<uint8_t> block_;
};
