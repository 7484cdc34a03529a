#pragma once

#include <set>
#include <vector>

#include "PrinterDriver/Common/Xsrc/APageBaseRTL.h"
#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "host/WriterId.h"
#include "plugin/output/ChannelFiles.h"
#include "plugin/output/HeaderFields.h"
#include "plugin/output/PageFolder.h"
#include "plugin/output/PagePreview.h"
#include "plugin/output/WhiteInk.h"

/// This plug-in's writer: answers capability queries from the model's description and writes a
/// job's pages to files, one per output channel. Each operation hands its subject to the piece
/// beside this file that knows it.
class RTL : public APageBaseRTL {
  public:
    RTL();
    ~RTL() override;

    int32_t OpenJob(JobContext* job, int32_t reserved, HostOutput* output,
                    DriverOptionBlock* options) override;
    /// Closes the open channel files as they stand and removes the temporary files.
    int32_t AbortJob() override;
    int32_t GetDeviceResolution(int32_t* x, int32_t* y) override;
    int32_t GetDriverId() override;
    int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                               PrintSettings* settings) override;
    int32_t GetColorantList(int32_t position, ColorantInfoList* list) override;
    int32_t FindColorModeID(const char* name) override;
    int32_t GetDefaultColorMode(char* name, PrintSettings* settings) override;
    int32_t GetMediaList(PrintSettings* settings, CapabilityList* list,
                         int32_t* defaultMedia) override;
    int32_t GetPrintModeList(PrintSettings* settings, CapabilityItem* media, CapabilityList* list,
                             int32_t* defaultPosition) override;
    int32_t GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                              CapabilityItem* printMode, ResolutionList* list,
                              HostArgument further) override;
    int32_t ReservedQuery5() override;
    /// Fixes the job name and the output folder. 0 when the host's port is not a file port or
    /// the folder cannot be made.
    int32_t OpenPort(const char* folder, const char* sourceName) override;
    /// By the blocks' first bytes.
    int32_t AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) override;
    int32_t EnsureDriverOptions(DriverOptionBlock* options) override;
    int32_t StartPage() override;
    int32_t EndPage() override;
    int32_t EndJob() override;
    int32_t OutputBand(uint32_t separation, int32_t row, const uint8_t* data) override;
    int32_t BeginChannel(uint32_t separation, int32_t row) override;
    int32_t EndChannel(uint32_t separation, int32_t row) override;
    void InitBandOrder() override;

    /// Reads the model's output rules, for whoever asks what the model offers without a job. 1, or
    /// 0 when they cannot be read.
    int32_t ReadOutputSettings(const PrintSettings& settings);
    const ModelOutputSettings& OutputSettings() const { return model_; }
    /// Who writes the options files, headers and tickets of this writer.
    WriterId Id() const { return id_; }
    /// The white choice that the next write of the options stores; -1 for none.
    void SetSupportWhiteType(int32_t whiteType) { model_.SupportWhiteType = whiteType; }

    /// Reads (`load` 1) or writes (0) the white choice in the block's options file. 1 when it was
    /// read, else 0.
    virtual int32_t LoadDriverOptions(DriverOptionBlock* block, int32_t load);
    virtual int32_t OpenChannelFile(uint32_t separation, int32_t channel, const AString& name);
    virtual int32_t ReservedPageQuery2();
    virtual int32_t ReservedPageQuery3();
    /// Marks the separation's channel as written and opens its file.
    virtual int32_t MarkChannelUsed(uint32_t separation);
    virtual int32_t ReservedPageQuery4();
    virtual int32_t WriteBlankChannel(int32_t channel, const AString& name, int32_t fill);
    /// Colorant count and bit depth of a colour mode, cut to 16 bits.
    virtual int32_t GetColorModeChannelInfo(int16_t colorMode, uint16_t* channelCount,
                                            uint16_t* bitDepth);

    /// 1, or 0 after a message, when the page's job ticket cannot be written.
    virtual int32_t WriteJobTicket();
    /// Writes the page's header, if the model has one. 1 whether or not that succeeds.
    virtual int32_t WriteHeader();

  private:
    PrintSettings JobSettings() const;
    bool LoadDescription(const PrintSettings* settings);
    void FailDescription();
    void SizeLines();
    void ReadWhiteChoice();
    void NotePageDoubts();
    ChannelNaming Naming();
    std::vector<AFilePath> PageFiles();
    void WarnOfEarlierPage();
    std::vector<HeaderKeyword> PageHeaderKeywords() const;
    AFilePath HeaderPath() const;
    void WriteWhiteChannel();
    void StartPreview();
    void SavePreview();
    void CopyThumbnail();
    void CheckDiskSpace();
    [[noreturn]] void RaiseWriteDataError();

    const WriterId id_ = WriterId::Next();
    const WriterId writer_ = WriterId::Next();
    CDynamic description_;
    ModelOutputSettings model_;
    DriverOptionBlock* options_ = nullptr;  ///< of the job, in the driver's JobContext
    AString jobName_;
    PageFolder folder_;
    ChannelFiles channels_;
    WhiteInk white_;
    PagePreview preview_;
    int32_t channelCount_ = 4;  ///< colorants of the job's colour mode
    int32_t lineBytes_ = 0;     ///< of one line of one channel
    bool portIsOpen_ = false;
    std::set<AString> pageFolders_;  ///< that pages of the job have gone into
    std::set<AString> endHeaders_;   ///< that pages of the job have written at their end
};
