#include "driverhost/PdfContent.h"

#include <algorithm>
#include <exception>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <string_view>

#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "platform/MemoryLimit.h"

namespace {

/// For a document's objects and the content of one page, which may be packed beyond all measure.
constexpr uint64_t kMostMemoryBytes = uint64_t{1} << 30;

/// ISO 32000-1, table A.1.
constexpr std::string_view kOperators[] = {
    "\"", "'",  "B",  "B*", "BDC", "BI", "BMC", "BT", "BX",  "CS", "DP", "Do", "EI",  "EMC", "ET",
    "EX", "F",  "G",  "ID", "J",   "K",  "M",   "MP", "Q",   "RG", "S",  "SC", "SCN", "T*",  "TD",
    "TJ", "TL", "Tc", "Td", "Tf",  "Tj", "Tm",  "Tr", "Ts",  "Tw", "Tz", "W",  "W*",  "b",   "b*",
    "c",  "cm", "cs", "d",  "d0",  "d1", "f",   "f*", "g",   "gs", "h",  "i",  "j",   "k",   "l",
    "m",  "n",  "q",  "re", "rg",  "ri", "s",   "sc", "scn", "sh", "v",  "w",  "y"};
static_assert(std::is_sorted(std::begin(kOperators), std::end(kOperators)));

/// Gathers what stands for an operator and is none.
class OperatorCheck final : public QPDFObjectHandle::ParserCallbacks {
  public:
    explicit OperatorCheck(std::set<std::string>& unknown) : unknown_(unknown) {}

    /// Bytes of the content that was looked through.
    int64_t ContentBytes() const { return contentBytes_; }

    void contentSize(std::size_t bytes) override { contentBytes_ += static_cast<int64_t>(bytes); }

    void handleObject(QPDFObjectHandle object, std::size_t /*offset*/,
                      std::size_t /*length*/) override {
        constexpr std::size_t kMostUnknown = 5;  // of a page: more say no more
        StopWhenInterrupted();
        if (!object.isOperator()) return;
        const std::string name = object.getOperatorValue();
        // Between these, words that a reader does not know are to be passed over.
        if (name == "BX") ++tolerance_;
        if (name == "EX" && tolerance_ > 0) --tolerance_;
        const bool isKnown = std::binary_search(std::begin(kOperators), std::end(kOperators), name);
        if (!isKnown && tolerance_ == 0 && unknown_.size() < kMostUnknown) unknown_.insert(name);
    }
    void handleEOF() override {}

  private:
    std::set<std::string>& unknown_;
    int tolerance_ = 0;
    int64_t contentBytes_ = 0;
};

int64_t NumberIn(QPDFObjectHandle dictionary, const std::string& key, int64_t otherwise) {
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isInteger() ? std::max<int64_t>(value.getIntValue(), 0) : otherwise;
}

/// Samples of a pixel in a colour space; the most that there are usually where it does not say.
int64_t SamplesOf(QPDFObjectHandle space) {
    constexpr int64_t kUsualMost = 4;
    if (space.isArray() && space.getArrayNItems() > 1) {
        QPDFObjectHandle detail = space.getArrayItem(1);
        const std::string kind =
            space.getArrayItem(0).isName() ? space.getArrayItem(0).getName() : "";
        if (kind == "/Indexed" || kind == "/Separation" || kind == "/CalGray") return 1;
        if (kind == "/DeviceN" && detail.isArray()) return detail.getArrayNItems();
        if (kind == "/ICCBased" && detail.isStream())
            return NumberIn(detail.getDict(), "/N", kUsualMost);
        return kind == "/CalRGB" || kind == "/Lab" ? 3 : kUsualMost;
    }
    const std::string name = space.isName() ? space.getName() : "";
    return name == "/DeviceGray" ? 1 : name == "/DeviceRGB" ? 3 : kUsualMost;
}

int64_t BytesOf(QPDFObjectHandle picture) {
    constexpr int64_t kMostSide = 1 << 24;  // that a product of sides stays far below 64 bits
    QPDFObjectHandle header = picture.getDict();
    QPDFObjectHandle mask = header.getKey("/ImageMask");
    const bool isMask = mask.isBool() && mask.getBoolValue();
    const int64_t bits = isMask
                             ? 1
                             : std::min<int64_t>(NumberIn(header, "/BitsPerComponent", 8), 16) *
                                   std::min<int64_t>(SamplesOf(header.getKey("/ColorSpace")), 32);
    return std::min(NumberIn(header, "/Width", 0), kMostSide) * bits / 8 *
           std::min(NumberIn(header, "/Height", 0), kMostSide);
}

PageContent ContentOf(QPDFPageObjectHelper page) {
    constexpr int64_t kSpooled = 3;  // bytes for one of content, on pages of many short lines
    constexpr int64_t kMost = int64_t{1} << 60;
    PageContent content;
    OperatorCheck check(content.UnknownOperators);
    page.parseContents(&check);
    page.forEachFormXObject(true, [&](QPDFObjectHandle& form, QPDFObjectHandle&,
                                      const std::string&) { form.parseAsContents(&check); });
    page.forEachImage(true, [&](QPDFObjectHandle& picture, QPDFObjectHandle&, const std::string&) {
        content.SpoolBytes = std::min(content.SpoolBytes + BytesOf(picture), kMost);
    });
    content.SpoolBytes += kSpooled * check.ContentBytes();
    return content;
}

}  // namespace

std::vector<PageContent> ReadPageContents(const std::filesystem::path& document) {
    std::vector<PageContent> contents;
    try {
        const MemoryLimit limit(kMostMemoryBytes);
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processFile(document.c_str());
        for (const QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages())
            contents.push_back(ContentOf(page));
    } catch (const HostError&) {  // an interrupt
        throw;
    } catch (const std::exception&) {  // a document that only the rasteriser can read
        return contents;
    }
    return contents;
}
