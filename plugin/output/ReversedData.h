#pragma once

#include <cstdint>
#include <vector>

#include "host/AFilePath.h"
#include "platform/ScratchFile.h"

/// What became of gathered data.
enum class GatheredData {
    kTaken,        ///< all of it was handed out
    kNotWritten,   ///< the file did not take all of it; nothing was handed out
    kNotReadable,  ///< the file did not give all of it back; what it gave was handed out
};

/// The temporary file that holds a channel's lines until they can be written bottom line first.
/// Its name is fixed, and each job's data is its own: see ScratchFile.
class ReversedData {
  public:
    /// Starts an empty file, which is going to have about `bytes` bytes. False, with nothing left
    /// behind, when it cannot be created.
    [[nodiscard]] bool Start(const AFilePath& path, int64_t bytes);
    bool IsOpen() const { return file_.IsOpen(); }
    /// Appends bytes; false when the file does not take them.
    [[nodiscard]] bool Append(const uint8_t* data, std::size_t count);

    /// Ends the gathering and hands every record of `recordBytes` bytes to
    /// `take(const uint8_t* record)`, last one first. The file is removed in every case.
    template <class Take>
    [[nodiscard]] GatheredData TakeBackwards(int64_t recordBytes, Take&& take) {
        GatheredData outcome = StartReading(recordBytes);
        while (outcome == GatheredData::kTaken && recordsLeft_ > 0) {
            if (!ReadBlockBefore()) {
                outcome = GatheredData::kNotReadable;
                break;
            }
            for (int64_t record = blockRecords_; record-- > 0;) {
                take(block_.data() + record * recordBytes);
            }
        }
        Discard();
        return outcome;
    }

    /// Closes and removes the file. Allocates nothing.
    void Discard() noexcept;
    /// The system's number for why the last call failed; 0 when it gave none.
    int SystemError() const { return file_.SystemError(); }

  private:
    bool WriteBlock();
    GatheredData StartReading(int64_t recordBytes);
    bool ReadBlockBefore();

    ScratchFile file_;
    int64_t fileBytes_ = 0;     ///< written so far
    std::size_t gathered_ = 0;  ///< bytes at the block's front, not written yet
    bool isComplete_ = true;    ///< every byte has been taken
    int64_t recordBytes_ = 0;
    int64_t recordsLeft_ = 0;
    int64_t blockRecords_ = 0;
    std::vector<uint8_t> block_;
};
