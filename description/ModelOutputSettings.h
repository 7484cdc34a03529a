#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "description/CDynamic.h"
#include "host/Arrays.h"
#include "host/Records.h"

/// How a model's output files are shaped, read from the description's entry for the model. The
/// initial values are those before any read.
struct ModelOutputSettings {
    bool HasModelList = false;   ///< the description that was last read has a `ModelList`
    bool HasModelEntry = false;  ///< and in it an entry of the model's

    int32_t LineByLine = 0;
    int32_t PrinterDirection = 0;  ///< 1: pages are written bottom line first
    int32_t CreateFolder = 1;

    int32_t SupportWhiteType = -1;  ///< the user's choice; -1 is none
    /// Whether the entry that was last read offers white. The lists below can be an earlier one's.
    bool OffersWhite = false;
    int32_t DefaultWhiteType = -1;
    AStringArray WhiteTypeNames;
    std::vector<int32_t> WhiteTypeCodes;
    std::vector<int32_t> WhiteHeaderCodes;

    /// The user's choice where there is one, else the model's default; -1 for a model that offers
    /// no white, whatever was chosen for another.
    int32_t EffectiveWhiteType() const {
        if (!OffersWhite) return -1;
        return SupportWhiteType >= 0 ? SupportWhiteType : DefaultWhiteType;
    }

    int32_t HasJobTicket = 0;
    AString JobTicketName = "jobTicket.txt";
    AString JobTicketCode = "utf-8";

    AString HeaderTemplateName;
    AString HeaderOutputName;
    int32_t HeaderAtEndRip = 0;

    AString PreviewType = "BMP";
    int32_t PreviewSizeH = 500;  ///< the preview's height
    int32_t PreviewSizeV = 500;  ///< the preview's width
    int32_t PreviewBestFit = 1;
    AString PreviewName;

    AStringArray ChannelNames;                  ///< of the colour mode's colorants, in order
    std::map<AString, AString> ChannelNameMap;  ///< colour's internal name -> channel name
};

/// Reads the output rules of the settings' model and colour mode into `output`. 1, or 0 with
/// `output` as far as it was read.
int32_t ReadModelOutputSettings(CDynamic& description, const PrintSettings& settings,
                                ModelOutputSettings& output);

/// The channel name of the first colour whose internal name is `colorName`; "" when there is
/// none or the description cannot be read.
AString GetChannelName(CDynamic& description, const AString& colorName, const char* modelName);

/// Reads a white-ink offer, the text of `SupportWhite`, into `output`: default type, bar, names;
/// type codes; header codes. An empty one offers nothing: it takes the default type away and leaves
/// the lists.
void ReadWhiteOffer(std::string_view offer, ModelOutputSettings& output);

/// Splits `text` at the first occurrence of the first of `separators` that occurs in it: `head`
/// receives what stands before, the rest is answered. Without any, `head` is the whole text. Both
/// are parts of `text`, which the caller keeps.
std::string_view SplitAtSeparator(std::string_view text, std::string_view separators,
                                  std::string_view& head);
