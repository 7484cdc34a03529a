#include "plugin/output/PagePreview.h"

#include <algorithm>
#include <new>
#include <string_view>

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

std::vector<int32_t> PreviewPlanes(const std::vector<AString>& separations) {
    std::vector<int32_t> planes;
    for (const AString& name : separations) {
        const auto* const ink =
            std::find_if(std::begin(kProcessInks), std::end(kProcessInks),
                         [&](std::string_view known) { return EqualsIgnoringCase(known, name); });
        const bool isProcess = ink != std::end(kProcessInks);
        planes.push_back(isProcess ? static_cast<int32_t>(ink - std::begin(kProcessInks)) : -1);
    }
    const bool hasProcess =
        std::any_of(planes.begin(), planes.end(), [](int32_t plane) { return plane >= 0; });
    for (std::size_t i = 0; !hasProcess && i < planes.size(); ++i)
        planes[i] = i < PreviewScaler::kPlanes ? static_cast<int32_t>(i) : -1;
    return planes;
}

void PagePreview::StartPage(const ModelOutputSettings& model, PreviewPage page,
                            const AString& path) {
    Discard();
    const bool bestFit = model.PreviewBestFit != 0;
    failure_ = {};
    path_ = path;
    if (!HasPreviewSides(model) || page.sourceWidth < 1 || page.sourceRows < 1) {
        Fail("there is no preview of the size that the model asks for");
        return;
    }
    page_ = std::move(page);
    scaler_ = std::make_unique<PreviewScaler>();
    if (bestFit)
        scaler_->InitBestFit(model.PreviewSizeV, page_.sourceWidth, page_.sourceRows,
                             page_.xResolution, page_.yResolution);
    else
        scaler_->Init(model.PreviewSizeV, model.PreviewSizeH, page_.sourceWidth, page_.sourceRows,
                      page_.xResolution, page_.yResolution);
    const PreviewGeometry& geometry = scaler_->Geometry();
    if (!IsPreviewSize(geometry.previewWidth, geometry.previewHeight)) {
        Fail("there is no preview of the size that the model asks for");
        Discard();
        return;
    }
    if (model.PreviewType == "PNG")
        writer_ = std::make_unique<PNG_Writer>();
    else
        writer_ = std::make_unique<BMP_Writer>();
}

void PagePreview::AddLine(uint32_t separation, int32_t row, const uint8_t* line) {
    if (scaler_ == nullptr || separation >= page_.planes.size()) return;
    try {
        scaler_->AddRow(row, line, page_.lineBytes, page_.bits, page_.planes[separation]);
    } catch (const std::bad_alloc&) {  // the page is worth more than its preview
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
