#pragma once

// The records that cross the boundary between host and plug-in. Their layout is the host's:
// little-endian, packed, with the offsets and sizes asserted below. Fields that the plug-in does
// not use stand as reserved bytes.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

/// The host's output object; the writer hands it bytes through its second operation.
class HostOutput {
  public:
    virtual int32_t Reserved() = 0;
    /// Takes `count` bytes; `value` is the 8-byte value of the job status record. Answers the
    /// count taken.
    virtual int32_t Write(const void* data, int32_t count, int64_t value) = 0;

  protected:
    ~HostOutput() = default;  // the host owns it
};

#pragma pack(push, 1)

/// A driver's private options as the host stores them with a setting or a job.
struct DriverOptionBlock {
    uint8_t Kind;        ///< kNamesOptionsFile once FileName names an options file
    char FileName[255];  ///< NUL-terminated; the last byte is not part of it

    static constexpr uint8_t kNamesOptionsFile = 3;
};

/// Status of one job, owned by the host. A host may allocate more than is listed here.
struct JobStatusRecord {
    char JobFilePath[512];
    char ThumbnailPath[256];
    uint8_t Reserved768[1280];
    void* OwnerWindow;
    uint8_t Reserved2056[4];
    int32_t JobState;  ///< the port kind at job start, -1 once the job has ended
    char StatusText[256];
    int32_t StatusKind;
    uint8_t Reserved2324[4];
    int32_t Copies;
    uint8_t Reserved2332[16];
    int32_t RecordVersion;
    uint8_t Reserved2352[8];
    int64_t OutputValue;
    int32_t MediaIndex;
    int32_t PrintModeIndex;
    int32_t ResolutionIndex;
    uint8_t Reserved2380[4];
    int32_t TileCount;  ///< the tile fields exist from RecordVersion kTileRecordVersion on
    uint8_t Reserved2388[4];
    const int32_t* TilePageNumbers;
    const int32_t* TileColumnNumbers;
    const int32_t* TileRowNumbers;
    uint8_t Reserved2416[24];
    const char* CustomColorModeXml;

    static constexpr int32_t kJobEnded = -1;
    static constexpr int32_t kTileRecordVersion = 3;
};

/// The host's print settings. Copies are deep: the owned string is duplicated and freed with
/// the copy.
struct PrintSettings {
    char ModelName[64];
    uint8_t Reserved64[144];
    int32_t ColorModeIndex;
    int32_t MediaIndex;
    int32_t PrintModeIndex;
    int32_t ResolutionIndex;
    uint8_t Reserved224[32];
    char ManufacturerName[64];
    uint8_t Reserved320[260];
    char* OwnedText;  ///< NUL-terminated, may be null
    uint8_t Reserved588[8];

    PrintSettings() { std::memset(static_cast<void*>(this), 0, sizeof *this); }
    PrintSettings(const PrintSettings& other) : PrintSettings() { *this = other; }
    PrintSettings& operator=(const PrintSettings& other) {
        if (this == &other) return *this;
        char* const duplicate = Duplicate(other.OwnedText);
        delete[] OwnedText;
        std::memcpy(static_cast<void*>(this), static_cast<const void*>(&other), sizeof *this);
        OwnedText = duplicate;
        return *this;
    }
    ~PrintSettings() { delete[] OwnedText; }

  private:
    /// The host's own allocations leave this much room behind the text.
    static constexpr std::size_t kOwnedTextSlack = 10;

    static char* Duplicate(const char* text) {
        if (text == nullptr) return nullptr;
        const std::size_t length = std::strlen(text);
        char* const copy = new char[length + kOwnedTextSlack]();
        std::memcpy(copy, text, length);
        return copy;
    }
};

/// One medium or print mode that a model offers.
struct CapabilityItem {
    int32_t ID;
    char DisplayName[256];
    char InternalName[256];
};

struct ResolutionItem {
    double XResolution;  ///< dots per inch
    double YResolution;
    int32_t ID;
    char DisplayName[256];
};

struct ColorantInfo {
    char InternalName[64] = {};
    char DisplayName[64] = {};
    uint32_t IsSpot = 0;
    uint32_t IsPresent = 1;
    uint32_t ColorDepth = 1;  ///< bits per pixel
    uint32_t ColorValue = 0;  ///< display colour, 0x00BBGGRR
};

/// The caller's array of colorants. `Items` has room for `Capacity` records.
struct ColorantInfoList {
    int32_t Count;
    uint8_t Reserved4[4];
    ColorantInfo* Items;
    int32_t Capacity;
};

/// The output levels that a printer can place per ink.
struct DitherParams {
    static constexpr int32_t kMostLevels = 64;
    static constexpr int32_t kMostInks = 16;

    int32_t LevelCount;  ///< the level without ink included
    /// Ink amount per ink and position; position p stands for level p + 1, up to LevelCount - 1.
    float Values[kMostInks][kMostLevels];
    int32_t AntiClogLevel;
    float NoiseLevel;
    int32_t InkCount;
};

/// The screen of one ink.
struct ScreenEntry {
    char ShapeName[128];
    float Frequency;  ///< lines per inch
    float Angle;      ///< degrees
    char ColorName[64];
};

/// The screens of a colour mode's inks, in order; `Count` of the entries are valid.
struct ScreeningParams {
    static constexpr int32_t kMostEntries = 256;

    int32_t Count;
    ScreenEntry Entries[kMostEntries];
};

/// What the plug-in reads of the first bytes of the host's job file.
struct JobFileHeader {
    uint8_t Reserved0[264];
    char OriginalFileName[256];
    uint8_t Reserved520[64];
    char PrinterName[64];
    uint8_t Reserved648[64];
    float XResolution;  ///< dots per inch
    float YResolution;
    uint8_t Reserved720[136];
    int16_t XResolutionWhole;
    int16_t YResolutionWhole;
    uint8_t Reserved860[1692];
    DriverOptionBlock Options;
    uint8_t Reserved2808[1026];
    int16_t ColorModeIndex;
    uint8_t Reserved3836[104];
};

#pragma pack(pop)

static_assert(sizeof(DriverOptionBlock) == 256);
static_assert(offsetof(JobStatusRecord, ThumbnailPath) == 512);
static_assert(offsetof(JobStatusRecord, OwnerWindow) == 2048);
static_assert(offsetof(JobStatusRecord, JobState) == 2060);
static_assert(offsetof(JobStatusRecord, StatusText) == 2064);
static_assert(offsetof(JobStatusRecord, StatusKind) == 2320);
static_assert(offsetof(JobStatusRecord, Copies) == 2328);
static_assert(offsetof(JobStatusRecord, RecordVersion) == 2348);
static_assert(offsetof(JobStatusRecord, OutputValue) == 2360);
static_assert(offsetof(JobStatusRecord, MediaIndex) == 2368);
static_assert(offsetof(JobStatusRecord, PrintModeIndex) == 2372);
static_assert(offsetof(JobStatusRecord, ResolutionIndex) == 2376);
static_assert(offsetof(JobStatusRecord, TileCount) == 2384);
static_assert(offsetof(JobStatusRecord, TilePageNumbers) == 2392);
static_assert(offsetof(JobStatusRecord, TileColumnNumbers) == 2400);
static_assert(offsetof(JobStatusRecord, TileRowNumbers) == 2408);
static_assert(offsetof(JobStatusRecord, CustomColorModeXml) == 2440);
static_assert(sizeof(PrintSettings) == 596);
static_assert(offsetof(PrintSettings, ColorModeIndex) == 208);
static_assert(offsetof(PrintSettings, ManufacturerName) == 256);
static_assert(offsetof(PrintSettings, OwnedText) == 580);
static_assert(sizeof(CapabilityItem) == 516);
static_assert(offsetof(CapabilityItem, DisplayName) == 4);
static_assert(offsetof(CapabilityItem, InternalName) == 260);
static_assert(sizeof(ResolutionItem) == 276);
static_assert(offsetof(ResolutionItem, DisplayName) == 20);
static_assert(sizeof(ColorantInfo) == 144);
static_assert(offsetof(ColorantInfo, IsSpot) == 128);
static_assert(offsetof(ColorantInfoList, Items) == 8);
static_assert(offsetof(ColorantInfoList, Capacity) == 16);
static_assert(sizeof(DitherParams) == 4112);
static_assert(offsetof(DitherParams, Values) == 4);
static_assert(offsetof(DitherParams, AntiClogLevel) == 4100);
static_assert(offsetof(DitherParams, InkCount) == 4108);
static_assert(sizeof(ScreenEntry) == 200);
static_assert(offsetof(ScreenEntry, Frequency) == 128);
static_assert(offsetof(ScreenEntry, Angle) == 132);
static_assert(offsetof(ScreenEntry, ColorName) == 136);
static_assert(offsetof(ScreeningParams, Entries) == 4);
static_assert(sizeof(JobFileHeader) == 3940);
static_assert(offsetof(JobFileHeader, PrinterName) == 584);
static_assert(offsetof(JobFileHeader, XResolution) == 712);
static_assert(offsetof(JobFileHeader, XResolutionWhole) == 856);
static_assert(offsetof(JobFileHeader, Options) == 2552);
static_assert(offsetof(JobFileHeader, ColorModeIndex) == 3834);

/// The host's growable lists: three pointers (begin, end, capacity), storage from operator new,
/// which is how the standard library lays a vector out.
using CapabilityList = std::vector<CapabilityItem>;
using ResolutionList = std::vector<ResolutionItem>;
static_assert(sizeof(CapabilityList) == 3 * sizeof(void*));

/// Room for the colorants of one colour mode, in the lists that the writer and a host build.
inline constexpr int32_t kColorantCapacity = 4096;
