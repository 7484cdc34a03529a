#pragma once

#include <cstdint>
#include <vector>

#include "host/AFilePath.h"
#include "platform/Stream.h"
#include "plugin/output/LineReader.h"

/// What the white treatments print. Every other positive treatment prints the lines of a file that
/// stands ready, if one does.
enum WhiteType : int32_t {
    kWhiteUnderNoInk = 1,  ///< the union of the separations, inverted
    kWhiteUnderInk = 2,    ///< the union
    kWhiteEverywhere = 3,
    kWhiteNowhere = 5,
};

/// The union of a page's separations, gathered in a temporary file while the lines stream, and
/// read back as lines of white. One block of the file is in memory at a time; it is written back
/// only where it received ink. The file goes when the page is done or given up.
class WhiteInk {
  public:
    WhiteInk() = default;
    ~WhiteInk() { Discard(); }
    WhiteInk(const WhiteInk&) = delete;
    WhiteInk& operator=(const WhiteInk&) = delete;

    /// Begins a page. For the treatments that gather, a file that an earlier run left is removed.
    void StartPage(int32_t whiteType, int32_t lineBytes, int32_t heightLines);

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
        RemoveFile();
    }

    /// Closes and removes what was gathered.
    void Discard();

  private:
    void Gather(uint32_t separation, int32_t row, const uint8_t* line);
    bool OpenFile();
    bool MoveTo(int64_t block);
    bool WriteBack();
    bool EndGathering();
    void GiveUp();
    bool StartReading(LineReader& reader, bool bottomLineFirst);
    const uint8_t* ReadLine(LineReader& reader) const;
    void RemoveFile();

    AFilePath path_;
    Stream stream_;
    int32_t whiteType_ = 0;
    int64_t lineBytes_ = 0;
    int32_t heightLines_ = 0;
    bool gathers_ = false;
    bool hasFile_ = false;  ///< of this page

    int64_t blockLines_ = 1;
    int64_t block_ = -1;         ///< the one in memory
    int64_t blockFilled_ = 0;    ///< its lines that hold data
    bool isChanged_ = false;     ///< it differs from the file
    int64_t gatheredLines_ = 0;  ///< by separation 0
    std::vector<uint8_t> lines_;
};
