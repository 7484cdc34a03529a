#pragma once

#include <cstdint>
#include <memory>

#include "host/AColorant.h"
#include "host/AString.h"
#include "host/Arrays.h"
#include "host/Records.h"

/// One job, from OpenJob to the next OpenJob. The driver owns it; the writer reads it.
struct JobContext {
    int32_t PageCount = 0;
    int32_t Reserved = 0;
    double XResolution = 0;  ///< dots per inch
    double YResolution = 0;
    JobStatusRecord* Status = nullptr;  ///< the host's; never null once the job header is read
    char PrinterName[64] = {};
    char OriginalFileName[256] = {};
    DriverOptionBlock Options = {};
    int32_t ColorModeIndex = 0;
    int16_t XResolutionWhole = 0;
    int16_t YResolutionWhole = 0;
    /// 1 once the job has been aborted or a step of it has failed: no step does anything more.
    uint8_t Aborted = 0;
};

/// A list with room for the colorants of any colour mode, for the operation that fills it.
struct ColorantQuery {
    std::unique_ptr<ColorantInfo[]> items = std::make_unique<ColorantInfo[]>(kColorantCapacity);
    ColorantInfoList list = {0, {}, items.get(), kColorantCapacity};
};

/// What the writer keeps of the job besides its raster.
struct PageInfo {
    int32_t ColorModeIndex = 0;
    double XResolution = 0;  ///< dots per inch
    double YResolution = 0;
    char PrinterDisplayName[256] = {};
    char OriginalFileName[256] = {};
    char ThumbnailPath[256] = {};
    int32_t PortKind = 0;  ///< the job state as it was when the job was opened
    AString OutputFolderText;
};

/// The order in which the rows of a page are output.
enum BandOrder : int32_t {
    kPlaneOrder = 1,       ///< separation after separation
    kLineInterleaved = 2,  ///< row after row, each through all separations
};

/// Stands in the maps between separations and colorants for "has no counterpart".
inline constexpr uint32_t kUnmatched = 0xFFFFFF;

/// Where a job stands: its page, separation and row, and the shape of the page.
class JobTrackRecord {
  public:
    JobTrackRecord() = default;
    /// Deletes the job's colorants, last to first.
    virtual ~JobTrackRecord();
    JobTrackRecord(const JobTrackRecord&) = delete;
    JobTrackRecord& operator=(const JobTrackRecord&) = delete;

    void DeleteColorants();

    int32_t PageCount = 0;
    int32_t PageIndex = -1;
    int32_t SeparationCount = -1;
    int32_t Separation = -1;
    int32_t ChannelPosition = 0;  ///< in PageChannelOrder
    int32_t SourceRows = -1;
    int32_t SourceWidth = -1;  ///< pixels
    int32_t OutputWidth = -1;
    int32_t OutputRows = 0;
    int32_t SourceRow = -1;
    int32_t OutputRow = -1;
    int32_t FirstOutputRow = -1;
    int32_t LastOutputRow = -1;
    int32_t Order = -1;  ///< a BandOrder
    int32_t MaximumBits = -1;
    int32_t ColorantCount = -1;
    int32_t TargetXResolution = 0;
    int32_t TargetYResolution = 0;
    int32_t XRepeat = 1;
    int32_t YRepeat = 1;
    int32_t BytesPerOutputRow = 0;
    int32_t BytesPerSourceRow = 0;
    double EffectiveXResolution = 0;
    double EffectiveYResolution = 0;
    AByteArray SeparationBits;
    ADWordArray ChannelOrder;          ///< over the job's colorants
    ADWordArray SeparationToColorant;  ///< one entry a separation
    ADWordArray ColorantToSeparation;  ///< one entry a colorant
    ADWordArray PageChannelOrder;      ///< the page's separations in colorant order
    AObList<AColorant> Separations;    ///< of the current page; the page image owns them
    APtrArray<AColorant> Colorants;
    int32_t PageFinished = 1;
    int32_t PageOpen = 0;                ///< all bands of the page are output, its end is due
    int32_t CustomColorModeDamaged = 0;  ///< the host sends one with the page that cannot be read
};
