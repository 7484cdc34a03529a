#include "plugin/output/PagePreview.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "host/Text.h"
#include "plugin/output/OutputNames.h"
#include "plugin/output/PreviewLimits.h"
#include "preview/BMP_Writer.h"
#include "preview/PNG_Writer.h"

namespace {

constexpr std::string_view kProcessInks[PreviewScaler::kPlanes] = {"Cyan", "Magenta", "Yellow",
                                                                   "Black"};
constexpr const char* kNoMemory = "there is no memory for the preview";

}  // namespace

AString PreviewFileName(const ModelOutputSettings& model, const AString& jobName) {
    return model.PreviewName.empty() ? "thumbnail.bmp"
                                     : SubstituteJobName(model.PreviewName, jobName);
}

std::vector<int32_t> PreviewPlanes(const std::vector<AString>& separations,
                                   std::span<const uint32_t> printed) {
    std::vector<int32_t> planes(separations.size(), -1);
    bool hasProcess = false;
    for (const uint32_t separation : printed) {
        const auto* const ink = std::find_if(
            std::begin(kProcessInks), std::end(kProcessInks), [&](std::string_view known) {
                return EqualsIgnoringCase(known, separations[separation]);
            });
        if (ink == std::end(kProcessInks)) continue;
        planes[separation] = static_cast<int32_t>(ink - std::begin(kProcessInks));
        hasProcess = true;
    }
    for (std::size_t i = 0; !hasProcess && i < planes.size() && i < PreviewScaler::kPlanes; ++i)
        planes[i] = static_cast<int32_t>(i);
    return planes;
}

void PagePreview::StartPage(const ModelOutputSettings& model, PreviewPage page, AString path) {
    Discard();
    failure_ = {};
    path_ = std::move(path);
    try {
        page_ = std::move(page);
        if (Begin(model)) return;
        Fail("there is no preview of the size that the model asks for");
    } catch (const std::bad_alloc&) {  // the page is worth more than its preview
        Fail(kNoMemory);
    }
    Discard();
}

/// False when there is no preview of the page's size.
bool PagePreview::Begin(const ModelOutputSettings& model) {
    if (!HasPreviewSides(model) || page_.sourceWidth < 1 || page_.sourceRows < 1) return false;
    scaler_ = std::make_unique<PreviewScaler>();
    if (model.PreviewBestFit != 0)
        scaler_->InitBestFit(model.PreviewSizeV, page_.sourceWidth, page_.sourceRows,
                             page_.xResolution, page_.yResolution);
    else
        scaler_->Init(model.PreviewSizeV, model.PreviewSizeH, page_.sourceWidth, page_.sourceRows,
                      page_.xResolution, page_.yResolution);
    const PreviewGeometry& geometry = scaler_->Geometry();
    if (!IsPreviewSize(geometry.previewWidth, geometry.previewHeight)) return false;
    if (model.PreviewType == "PNG")
        writer_ = std::make_unique<PNG_Writer>();
    else
        writer_ = std::make_unique<BMP_Writer>();
    return true;
}

void PagePreview::AddLine(uint32_t separation, int32_t row, const uint8_t* line) {
    if (scaler_ == nullptr || separation >= page_.planes.size()) return;
    try {
        scaler_->AddRow(row, line, page_.lineBytes, page_.bits, page_.planes[separation]);
    } catch (const std::bad_alloc&) {  // likewise
        Fail(kNoMemory);
        Discard();
    }
}

void PagePreview::Save() {
    try {
        if (scaler_ != nullptr) {
            scaler_->Render(path_, writer_.get(), 0);
            failure_ = writer_->Failure();
        }
    } catch (const std::bad_alloc&) {  // likewise
        Fail(kNoMemory);
    }
    Discard();
}

void PagePreview::Discard() {
    scaler_.reset();
    writer_.reset();
}

PreviewFailure PagePreview::Failure() const {
    return {failure_.text, failure_.systemError, failure_.isWriteFailure, path_};
}
