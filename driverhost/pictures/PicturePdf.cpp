#include "driverhost/pictures/PicturePdf.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "driverhost/pictures/DeflateFile.h"

namespace fs = std::filesystem;

namespace {

constexpr double kPointsPerInch = 72;

/// What a picture's own resolution may be; the rest is a damaged note.
constexpr double kLeastDpi = 1;
constexpr double kMostDpi = 100'000;

/// A table of places in a PDF has ten digits for each.
constexpr int64_t kMostPdfBytes = 9'999'999'999;

double UsableDpi(double wanted, double own) {
    if (wanted > 0) return wanted;
    return std::isfinite(own) && own >= kLeastDpi && own <= kMostDpi ? own : kDefaultPictureDpi;
}

PdfPage PageOf(const PictureHeader& picture, double dpi) {
    PdfPage page;
    const double xDpi = UsableDpi(dpi, picture.XDotsPerInch);
    const double yDpi = UsableDpi(dpi, picture.YDotsPerInch);
    page.WidthPoints = static_cast<double>(picture.Width) * kPointsPerInch / xDpi;
    page.HeightPoints = static_cast<double>(picture.Rows) * kPointsPerInch / yDpi;
    if (picture.Orientation >= 5) std::swap(page.WidthPoints, page.HeightPoints);
    page.SpoolBytes =
        picture.Width * picture.Rows * static_cast<int64_t>(SamplesOf(picture.Colors));
    return page;
}

/// Where the corners of a picture go: from the unit square, its first row at the top, onto the
/// page, for each orientation from 1 on, as shares of the page's sides.
std::string Placement(int orientation, double width, double height) {
    constexpr int kTurns[8][6] = {{1, 0, 0, 1, 0, 0},  {-1, 0, 0, 1, 1, 0},  {-1, 0, 0, -1, 1, 1},
                                  {1, 0, 0, -1, 0, 1}, {0, -1, -1, 0, 1, 1}, {0, -1, 1, 0, 0, 1},
                                  {0, 1, 1, 0, 0, 0},  {0, 1, -1, 0, 1, 0}};
    std::string text;
    for (int i = 0; i < 6; ++i)
        text += fmt::format("{:.6f} ", kTurns[orientation - 1][i] * (i % 2 == 0 ? width : height));
    return text;
}

/// Whether an ICC profile describes such samples (ICC.1: the signature at byte 36, the colour
/// space at 16). One that does not is a mistake of the program that wrote it.
bool Fits(const std::vector<uint8_t>& profile, PictureColors colors) {
    constexpr std::size_t kHeaderBytes = 128;
    if (profile.size() < kHeaderBytes) return false;
    const std::string_view text(reinterpret_cast<const char*>(profile.data()), kHeaderBytes);
    const std::string_view space = colors == PictureColors::kGray   ? "GRAY"
                                   : colors == PictureColors::kCmyk ? "CMYK"
                                                                    : "RGB ";
    return text.substr(36, 4) == "acsp" && text.substr(16, 4) == space &&
           colors != PictureColors::kLab;
}

/// A PDF whose objects are numbered as they come. Objects 1 and 2 are the catalogue and the list of
/// pages.
class PicturePdf {
  public:
    PicturePdf(const fs::path& path, std::size_t pageCount) : file_(path), places_(2) {
        file_.Write("%PDF-1.5\n");
        Begin(1, "<< /Type /Catalog /Pages 2 0 R >>\nendobj\n");
        std::string kids;
        for (std::size_t i = 0; i < pageCount; ++i)
            kids += fmt::format("{} 0 R\n", FirstObjectOf(i));
        Begin(2,
              fmt::format("<< /Type /Pages /Count {} /Kids [\n{}] >>\nendobj\n", pageCount, kids));
    }

    void AddPage(PictureReader& picture, const PdfPage& page) {
        const PictureHeader& header = picture.Header();
        const std::size_t first = places_.size() + 1;
        const std::string content = fmt::format(
            "{}cm /Picture Do", Placement(header.Orientation, page.WidthPoints, page.HeightPoints));
        Begin(first, fmt::format("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {:.6f} {:.6f}]\n"
                                 "/Resources << /XObject << /Picture {} 0 R >> >> /Contents {} 0 R "
                                 ">>\nendobj\n",
                                 page.WidthPoints, page.HeightPoints, first + 2, first + 1));
        Begin(first + 1, fmt::format("<< /Length {} >>\nstream\n{}\nendstream\nendobj\n",
                                     content.size(), content));
        const bool hasProfile = Fits(header.Profile, header.Colors);
        Begin(first + 2,
              fmt::format("<< /Type /XObject /Subtype /Image /Width {} /Height {}\n"
                          "/BitsPerComponent 8 /ColorSpace {} /Filter /FlateDecode /Length {} 0 R "
                          ">>\nstream\n",
                          header.Width, header.Rows,
                          hasProfile ? fmt::format("[/ICCBased {} 0 R]", first + 4)
                                     : ColorSpaceOf(header.Colors),
                          first + 3));
        WriteStream(first + 3, [&] { WriteRows(picture); });
        // Every page has the same number of objects, so that the list of pages can come first.
        Begin(first + 4, fmt::format("<< /N {} /Filter /FlateDecode /Length {} 0 R >>\nstream\n",
                                     SamplesOf(header.Colors), first + 5));
        WriteStream(first + 5, [&] { file_.WriteCompressed(header.Profile); });
    }

    void Close() {
        const int64_t table = file_.Position();
        if (table > kMostPdfBytes) throw HostError(kFailed, "the pictures are too large");
        file_.Write(fmt::format("xref\n0 {}\n0000000000 65535 f \n", places_.size() + 1));
        for (const int64_t place : places_)
            file_.Write(fmt::format("{:010} 00000 n \n", place));
        file_.Write(fmt::format("trailer\n<< /Size {} /Root 1 0 R >>\nstartxref\n{}\n%%EOF\n",
                                places_.size() + 1, table));
        file_.Close();
    }

  private:
    static constexpr std::size_t kObjectsPerPage = 6;
    static constexpr std::size_t FirstObjectOf(std::size_t page) {
        return 3 + page * kObjectsPerPage;
    }

    static std::string ColorSpaceOf(PictureColors colors) {
        switch (colors) {
            case PictureColors::kGray:
                return "/DeviceGray";
            case PictureColors::kRgb:
                return "/DeviceRGB";
            case PictureColors::kCmyk:
                return "/DeviceCMYK";
            case PictureColors::kLab:
                break;
        }
        // The white of the connection space, ICC.1.
        return "[/Lab << /WhitePoint [0.9642 1 0.8249] /Range [-128 127 -128 127] >>]";
    }

    void Begin(std::size_t number, const std::string& body) {
        if (places_.size() < number) places_.resize(number);
        places_[number - 1] = file_.Position();
        file_.Write(fmt::format("{} 0 obj\n{}", number, body));
    }

    /// A stream's compressed bytes, then its length as an object of its own.
    template <class Content>
    void WriteStream(std::size_t lengthObject, Content&& write) {
        const int64_t start = file_.Position();
        file_.BeginCompressed();
        write();
        file_.EndCompressed();
        const int64_t length = file_.Position() - start;
        file_.Write("\nendstream\nendobj\n");
        Begin(lengthObject, fmt::format("{}\nendobj\n", length));
    }

    void WriteRows(PictureReader& picture) {
        const PictureHeader& header = picture.Header();
        std::vector<uint8_t> row(static_cast<std::size_t>(header.Width) * SamplesOf(header.Colors));
        for (int64_t y = 0; y < header.Rows; ++y) {
            StopWhenInterrupted();
            picture.ReadRow(row);
            file_.WriteCompressed(row);
        }
    }

    DeflateFile file_;
    std::vector<int64_t> places_;  ///< of each object, from number 1 on
};

}  // namespace

PictureDocument ReadPictures(const fs::path& path, DocumentKind kind, const fs::path& workFolder,
                             double dpi) {
    const std::unique_ptr<PictureReader> picture = OpenPicture(path, kind, workFolder);
    PictureDocument document;
    int64_t spoolBytes = 0;
    do {
        StopWhenInterrupted();
        document.Pages.push_back(PageOf(picture->Header(), dpi));
        document.MostBytes += document.Pages.back().SpoolBytes;
        spoolBytes += picture->Header().SpoolBytes;
    } while (picture->NextPicture());
    document.MostBytes = std::min(document.MostBytes, kMostPdfBytes) + spoolBytes;
    return document;
}

void WritePicturePdf(const fs::path& path, DocumentKind kind, const std::vector<PdfPage>& pages,
                     const fs::path& pdf) {
    const std::unique_ptr<PictureReader> picture = OpenPicture(path, kind, pdf.parent_path());
    PicturePdf document(pdf, pages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (i > 0 && !picture->NextPicture())
            throw HostError(kFailed, fmt::format("{} has changed", path.string()));
        document.AddPage(*picture, pages[i]);
    }
    document.Close();
}
