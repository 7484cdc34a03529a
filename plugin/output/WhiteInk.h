#pragma once

#include <cstdint>
#include <vector>

#include "PrinterDriver/Common/Xsrc/JobReport.h"
#include "host/AFilePath.h"
#include "platform/RandomAccessFile.h"
#include "platform/ScratchFile.h"
#include "plugin/output/LineReader.h"

/// What the white treatments print. Every other positive treatment prints the lines of a file that
/// stands ready, if one does.
enum WhiteType : int32_t {
    kWhiteUnderNoInk = 1,  ///< the union of the separations, inverted
    kWhiteUnderInk = 2,    ///< the union
    kWhiteEverywhere = 3,
    kWhiteNowhere = 5,
};

/// Whether the treatment prints a plane of one value.
inline bool IsPlainWhite(int32_t whiteType) {
    return whiteType == kWhiteEverywhere || whiteType == kWhiteNowhere;
}
/// Whether the treatment prints the union of the page's separations.
inline bool IsWhiteUnion(int32_t whiteType) {
    return whiteType == kWhiteUnderNoInk || whiteType == kWhiteUnderInk;
}

/// The union of a page's separations, gathered in a temporary file while the lines stream, and
/// read back as lines of white. One block of the file is in memory at a time; it is written back
/// only where it received ink. For the treatments that print what stands ready, the reader of that
/// file. Either file goes when the page is done or given up.
class WhiteInk {
  public:
    WhiteInk() = default;
    ~WhiteInk() { Discard(); }
    WhiteInk(const WhiteInk&) = delete;
    WhiteInk& operator=(const WhiteInk&) = delete;

    /// Begins a page, whose doubts go to `report`, borrowed for the page. For the treatments that
    /// gather, a file that an earlier run left is removed.
    void StartPage(JobReport& report, int32_t whiteType, int32_t lineBytes, int32_t heightLines);

    /// Adds a line of a separation to the union; of every other separation, those lines count
    /// whose row separation 0 has delivered before. Does nothing for a treatment that does not
    /// gather, and after the file has failed.
    void AddLine(uint32_t separation, int32_t row, const uint8_t* line) {
        if (gathers_) Gather(separation, row, line);
    }

    /// Ends the gathering and hands the lines of white, in output order and at most the page's
    /// height of them, to `take(const uint8_t* line)`; none when the file failed or there is
    /// none. The file is removed.
    template <class Take>
    void TakeLines(bool bottomLineFirst, Take&& take) {
        LineReader reader;
        if (StartReading(reader, bottomLineFirst)) {
            for (int32_t line = 0; line < heightLines_; ++line) {
                const uint8_t* const data = ReadLine(reader);
                if (data == nullptr) break;
                take(data);
            }
        }
        EndReading(reader);
    }

    /// Closes and removes what was gathered, and what stands ready for a page that was set up and
    /// has not read it. Allocates nothing.
    void Discard() noexcept;

  private:
    void Gather(uint32_t separation, int32_t row, const uint8_t* line);
    bool OpenFile();
    bool MoveTo(int64_t block);
    bool WriteBack();
    void GiveUp();
    bool StartReading(LineReader& reader, bool bottomLineFirst);
    bool OpenReady();
    const uint8_t* ReadLine(LineReader& reader) const;
    void EndReading(const LineReader& reader);

    JobReport* report_ = nullptr;
    AFilePath path_;
    int32_t whiteType_ = 0;
    int64_t lineBytes_ = 0;
    int32_t heightLines_ = 0;
    bool gathers_ = false;
    ScratchFile union_;
    bool readsReady_ = false;  ///< the page is to read what stands ready, and has not done so
    RandomAccessFile ready_;
    int readError_ = 0;  ///< the system's number for why ready_ could not be read

    int64_t blockLines_ = 1;
    int64_t block_ = -1;         ///< the one in memory
    int64_t blockFilled_ = 0;    ///< its lines that hold data
    bool isChanged_ = false;     ///< it differs from the file
    int64_t gatheredLines_ = 0;  ///< by separation 0
    std::vector<uint8_t> lines_;
};
