#pragma once

#include <cstdint>

#include "description/DescriptionLists.h"
#include "host/AFilePath.h"
#include "host/AXMLTree.h"
#include "host/Records.h"

/// A model's description: finds the description file through the model list, reads it once, and
/// answers the host's capability queries from it. Configuration problems are shown with their
/// messages and answered 0 (or -1 where an identifier or number is answered). A null output is
/// skipped, a null text, list or record answers the failure.
class CDynamic {
  public:
    CDynamic();
    virtual ~CDynamic();
    CDynamic(const CDynamic&) = delete;
    CDynamic& operator=(const CDynamic&) = delete;

    /// 1 when a description is loaded; the first one loaded stays, whatever model is asked next.
    virtual int32_t LoadDescription(const char* modelName);
    virtual AEnXMLTree& GetDescriptionTree();
    virtual AXMLTreeNode GetDescriptionRoot();
    /// Item counts of the description's lists; -1 before a load.
    virtual int32_t GetMediaCount();
    virtual int32_t GetPrintModeCount();
    virtual int32_t GetResolutionCount();
    virtual int32_t GetColorModeCount();
    /// Appends every medium to `list`.
    virtual int32_t GetMediaList(const char* modelName, CapabilityList* list,
                                 int32_t* defaultMedia);
    /// Appends the print modes that the medium allows; the default is a position among them.
    virtual int32_t GetPrintModeList(const char* modelName, const int32_t* mediaId,
                                     CapabilityList* list, int32_t* defaultPosition);
    /// Appends every resolution of the description.
    virtual int32_t GetResolutionList(const char* modelName, const int32_t* mediaId,
                                      const int32_t* printModeId, ResolutionList* list);
    /// `name` has room for 256 bytes here and below.
    virtual int32_t GetColorModeName(int32_t position, char* name);
    virtual int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                       const PrintSettings* settings);
    virtual int32_t FindColorModeID(const char* name);
    virtual int32_t GetDefaultColorMode(char* name, const PrintSettings* settings);
    virtual int32_t GetColorantList(int32_t position, ColorantInfoList* list);
    /// The number just below the first string resource that names the items of a list.
    virtual int32_t GetBaseResourceNumber(const char* listName);
    /// An only child whatever its `ID`, else the first whose `ID` attribute is `identifier`.
    virtual int32_t FindChildByID(const AXMLTreeNode& parent, int32_t identifier,
                                  AXMLTreeNode* child);

    /// The file at which the last load failed: the model list or the description.
    const AFilePath& FailedFile() const { return failedFile_; }
    /// The system's number for why that file could not be read; 0 where what it holds is at fault.
    int FailedReason() const { return failedReason_; }
    /// The model name with which the description was loaded; "" before a load.
    const AString& LoadedModelName() const { return modelName_; }
    /// Whether those who go by identifiers and those who go by positions mean the same: the colour
    /// mode at this position is the first one whose `ID` is that position, and for each of its
    /// colorants the first colour whose `ID` is the colorant's stands at that position. Otherwise a
    /// job's channels get the names of other colours. True for a position without a colour mode.
    bool LeadIdentifiersToPositions(int32_t colorMode) const;

  private:
    bool ReadDescription(const char* modelName);
    void ForgetDescription();
    /// The media item of the allowed combinations.
    bool FindAllowedMedia(int32_t mediaId, AXMLTreeNode& media);
    /// The resolution item that the settings' combination leads to.
    bool FindAllowedResolution(const PrintSettings& settings, AXMLTreeNode& resolution);
    bool IsColorMode(int32_t position) const;
    void CopyColorModeName(int32_t position, char* name) const;

    int32_t loaded_ = 0;
    AFilePath failedFile_;
    int failedReason_ = 0;
    AString modelName_;
    AEnXMLTree document_{"RootElement"};
    AXMLTreeNode root_;
    DescriptionLists lists_;
};
