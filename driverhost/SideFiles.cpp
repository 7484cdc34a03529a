#include "driverhost/SideFiles.h"

#include <fmt/format.h>

#include <string_view>
#include <system_error>

#include "host/FileBytes.h"
#include "plugin/output/HeaderFile.h"
#include "plugin/output/JobTicket.h"
#include "plugin/output/PreviewLimits.h"
#include "preview/PreviewGeometry.h"

namespace fs = std::filesystem;

namespace {

const char* NameOf(SideKind kind) {
    switch (kind) {
        case SideKind::kHeader:
            return "header";
        case SideKind::kTicket:
            return "job ticket";
        case SideKind::kPreview:
            return "preview";
        case SideKind::kThumbnail:
            break;
    }
    return "thumbnail";
}

/// Notes whether a header ends before its template does.
class CutListener final : public HeaderLineListener {
  public:
    void OnLine(const HeaderLine& line) override {
        IsCut = IsCut || line.Result == HeaderLineResult::kDoesNotFit;
    }
    bool IsCut = false;
};

/// Size and format of a picture as the driver writes them: BMP of 24 bits, or PNG.
bool IsWholePicture(const std::string& bytes, int32_t width, int32_t height) {
    const auto number = [&bytes](std::size_t offset, bool isBigEndian) {
        int64_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8 | static_cast<uint8_t>(bytes[offset + (isBigEndian ? i : 3 - i)]);
        return value;
    };
    constexpr std::size_t kBmpHeaderBytes = 54;
    if (bytes.size() >= kBmpHeaderBytes && bytes.starts_with("BM"))
        return number(2, false) == static_cast<int64_t>(bytes.size()) &&
               number(18, false) == width && number(22, false) == height;
    constexpr std::size_t kPngHeaderBytes = 33;
    return bytes.size() > kPngHeaderBytes && bytes.starts_with("\x89PNG\r\n") &&
           number(16, true) == width && number(20, true) == height &&
           std::string_view(bytes).substr(bytes.size() - 8).starts_with("IEND");
}

/// What is wrong with a ticket or preview that is there; "" for nothing.
std::string FaultIn(const std::string& bytes, const SideFile& file) {
    if (file.Kind == SideKind::kPreview)
        return IsWholePicture(bytes, file.Width, file.Height)
                   ? ""
                   : fmt::format("is no whole picture of {} x {} pixels", file.Width, file.Height);
    if (bytes == file.Filled) return "";
    if (bytes == file.Template) return "is not filled in";
    return bytes.size() < file.Filled.size() ? "is short" : "";
}

}  // namespace

std::optional<SideFile> PromiseHeader(const ModelOutputSettings& model, const HeaderFacts& facts) {
    if (model.HeaderTemplateName.empty() || model.HeaderOutputName.empty()) return std::nullopt;
    SideFile header(SideKind::kHeader);
    const std::optional<std::string> text = ReadFileText(HeaderTemplatePath(model));
    if (!text) return header;  // it is missed
    HeaderBuffer buffer;
    CutListener listener;
    try {
        header.Bytes = static_cast<std::uintmax_t>(
            ProcessHeaderTemplate(*text, HeaderKeywords(facts, model), buffer, &listener));
    } catch (int) {
        return header;  // of a malformed template, with which no page begins
    }
    header.IsCut = listener.IsCut;
    if (header.Bytes == 0) return std::nullopt;
    return header;
}

std::optional<SideFile> PromiseTicket(const ModelOutputSettings& model, const TicketFacts& facts) {
    if (model.HasJobTicket == 0) return std::nullopt;
    SideFile ticket(SideKind::kTicket);
    const AFilePath path = AFilePath()
                               .Append("OutputDrivers")
                               .Append("JobTicketTemplates")
                               .Append(model.JobTicketName);
    if (const std::optional<std::string> text = ReadFileBytes(path)) {
        ticket.Template = *text;
        ticket.Filled = FillTicket(*text, facts);
    }
    return ticket;
}

std::optional<SideFile> PromisePreview(const ModelOutputSettings& model, const ContainerPage& page,
                                       int32_t xResolution, int32_t yResolution) {
    const bool bestFit = model.PreviewBestFit != 0;
    const int32_t width = model.PreviewSizeV;
    const int32_t height = model.PreviewSizeH;
    if (!HasPreviewSides(model)) return std::nullopt;
    if (page.WidthPixels < 1 || page.WidthPixels > INT32_MAX) return std::nullopt;
    if (page.Rows < 1 || page.Rows > INT32_MAX) return std::nullopt;
    const auto sourceWidth = static_cast<int32_t>(page.WidthPixels);
    const auto sourceRows = static_cast<int32_t>(page.Rows);
    const PreviewGeometry geometry =
        bestFit ? FitBest(width, sourceWidth, sourceRows, xResolution, yResolution)
                : FitIntoBox(width, height, sourceWidth, sourceRows, xResolution, yResolution);
    if (!IsPreviewSize(geometry.previewWidth, geometry.previewHeight)) return std::nullopt;
    SideFile preview(SideKind::kPreview);
    preview.Width = geometry.previewWidth;
    preview.Height = geometry.previewHeight;
    return preview;
}

std::string FaultOf(const fs::path& folder, const std::string& jobFolder, const SideFile& file) {
    if (file.Path.empty())
        return fmt::format("the {} has a name that leads out of the job's folder",
                           NameOf(file.Kind));
    const fs::path place = fs::path(jobFolder) / file.Path;
    const std::string name = fmt::format("the {} {}", NameOf(file.Kind), place.string());
    const fs::path path = folder / place;
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) return name + " is missing";
    if (file.IsCut) return name + " is cut: its template gives more than a header holds";
    if (file.Kind == SideKind::kHeader || file.Kind == SideKind::kThumbnail)
        return file.Bytes == 0 || size == file.Bytes
                   ? ""
                   : fmt::format("{} has {} bytes instead of {}", name, size, file.Bytes);
    const std::optional<std::string> bytes = ReadFileBytes(AFilePath(path.string()));
    if (!bytes) return name + " cannot be read";
    const std::string fault = FaultIn(*bytes, file);
    return fault.empty() ? "" : fmt::format("{} {}", name, fault);
}
