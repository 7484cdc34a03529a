#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "description/ModelOutputSettings.h"
#include "host/AString.h"
#include "preview/Image_Writer.h"
#include "preview/PreviewScaler.h"

/// File name of a page's preview and of the host's thumbnail.
AString PreviewFileName(const ModelOutputSettings& model, const AString& jobName);

/// The plane that each separation of a page feeds, by their internal names; -1 for none. `printed`
/// are the positions of those that are output. The process inks among them feed their own; where
/// none is, the page's first four separations do, in order.
std::vector<int32_t> PreviewPlanes(const std::vector<AString>& separations,
                                   std::span<const uint32_t> printed);

/// What a page is to its preview.
struct PreviewPage {
    int32_t sourceWidth = 0;  ///< pixels
    int32_t sourceRows = 0;
    int32_t xResolution = 0;  ///< of the target, in whole dots per inch
    int32_t yResolution = 0;
    int32_t lineBytes = 0;
    int32_t bits = 1;             ///< per pixel
    std::vector<int32_t> planes;  ///< see PreviewPlanes
};

/// Why a page has no preview.
struct PreviewFailure {
    const char* text;       ///< a constant; null when nothing failed
    int systemError;        ///< the system's number for the reason; 0 where it gave none
    bool isWriteFailure;    ///< a write or the close failed at the system
    std::string_view path;  ///< of the preview; valid until the next StartPage
};

/// The preview of one page, from its first line to its file. An optional output: where it cannot be
/// made, the page goes on without, and Failure tells.
class PagePreview {
  public:
    /// Begins a page whose preview goes to `path`. A size that no preview has gives none.
    void StartPage(const ModelOutputSettings& model, PreviewPage page, AString path);
    void AddLine(uint32_t separation, int32_t row, const uint8_t* line);
    /// Whether the page begun last is to have a preview, as far as can be told so far.
    bool IsWanted() const { return scaler_ != nullptr; }
    /// Saves the picture and ends the page.
    void Save();
    /// Ends the page without.
    void Discard();
    /// Of the page that StartPage began last; complete after Save.
    PreviewFailure Failure() const;

  private:
    bool Begin(const ModelOutputSettings& model);
    void Fail(const char* text) { failure_ = {text}; }

    AString path_;
    ImageFailure failure_;
    PreviewPage page_;
    std::unique_ptr<Image_Writer> writer_;
    std::unique_ptr<PreviewScaler> scaler_;
};
