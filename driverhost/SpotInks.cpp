#include "driverhost/SpotInks.h"

#include <fmt/format.h>

#include <exception>
#include <qpdf/JSON.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <vector>

#include "driverhost/HostError.h"
#include "driverhost/Plates.h"
#include "driverhost/Rasterizer.h"
#include "platform/MemoryLimit.h"

namespace fs = std::filesystem;

namespace {

constexpr char kChartName[] = "spots.pdf";
constexpr std::size_t kMostInks = 1000;
/// For a document's objects, which may be packed beyond all measure.
constexpr uint64_t kMostMemoryBytes = uint64_t{1} << 30;
constexpr double kPointsPerInch = 72;
constexpr int64_t kTints = 256;
/// Pixels of a tint's square on the chart; the middle one is read.
constexpr int64_t kSquare = 3;

/// A colour space that shows an ink, and which of its components that is.
struct InkSpace {
    QPDFObjectHandle Space;
    int Component = 0;
    int ComponentCount = 1;
};

/// The first colour space of each wanted ink, best one of its own.
class InkSpaces {
  public:
    explicit InkSpaces(const std::set<std::string>& names) : names_(names) {}

    /// Looks at an object and the direct ones in it.
    void Find(const QPDFObjectHandle& object, int depth = 0) {
        constexpr int kMostDepth = 100;
        if (depth > kMostDepth || (depth > 0 && object.isIndirect())) return;
        QPDFObjectHandle handle = object;
        if (handle.isStream()) handle = handle.getDict();
        if (handle.isArray()) {
            Take(handle);
            for (const QPDFObjectHandle& item : handle.getArrayAsVector())
                Find(item, depth + 1);
        } else if (handle.isDictionary()) {
            for (const auto& [key, value] : handle.getDictAsMap())
                Find(value, depth + 1);
        }
    }

    /// Of inks that have a colour space of their own, else of inks that share one.
    std::map<std::string, InkSpace> All() const {
        std::map<std::string, InkSpace> all = own_;
        all.insert(shared_.begin(), shared_.end());
        return all;
    }

  private:
    void Take(QPDFObjectHandle array) {
        constexpr int kSpaceItems = 4;  // kind, names, alternate space, tint transform
        if (array.getArrayNItems() < kSpaceItems || !array.getArrayItem(0).isName()) return;
        const std::string kind = array.getArrayItem(0).getName();
        QPDFObjectHandle inks = array.getArrayItem(1);
        if (kind == "/Separation" && inks.isName()) {
            Keep(own_, inks, {array, 0, 1});
        } else if (kind == "/DeviceN" && inks.isArray()) {
            const int count = inks.getArrayNItems();
            for (int i = 0; i < count; ++i)
                Keep(shared_, inks.getArrayItem(i), {array, i, count});
        }
    }

    void Keep(std::map<std::string, InkSpace>& spaces, QPDFObjectHandle ink,
              const InkSpace& space) const {
        if (!ink.isName()) return;
        const std::string name = ink.getName().substr(1);  // without its slash
        if (names_.contains(name) && spaces.size() < kMostInks) spaces.try_emplace(name, space);
    }

    const std::set<std::string>& names_;
    std::map<std::string, InkSpace> own_;
    std::map<std::string, InkSpace> shared_;
};

/// Paints a square of every tint, one row an ink, the first at the foot.
std::string PaintTints(const InkSpace& space, std::size_t row) {
    std::string content = fmt::format("/S{} cs\n", row);
    for (int64_t tint = 0; tint < kTints; ++tint) {
        for (int i = 0; i < space.ComponentCount; ++i)
            content += i == space.Component ? fmt::format("{} ", static_cast<double>(tint) / 255)
                                            : std::string("0 ");
        content += fmt::format("scn {} {} {} {} re f\n", tint * kSquare,
                               static_cast<int64_t>(row) * kSquare, kSquare, kSquare);
    }
    return content;
}

/// Writes a page of one pixel a point with the tints of all inks. Answers the inks' names, row by
/// row from the foot.
std::vector<std::string> WriteChart(const fs::path& document, const fs::path& chart,
                                    const std::set<std::string>& names) {
    QPDF source;
    source.setSuppressWarnings(true);
    source.processFile(document.c_str());
    InkSpaces spaces(names);
    for (const QPDFObjectHandle& object : source.getAllObjects())
        spaces.Find(object);

    QPDF target;
    target.emptyPDF();
    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    std::string content;
    std::vector<std::string> inks;
    for (const auto& [name, space] : spaces.All()) {
        const QPDFObjectHandle shared =
            space.Space.isIndirect() ? space.Space : source.makeIndirectObject(space.Space);
        resources.replaceKey(fmt::format("/S{}", inks.size()), target.copyForeignObject(shared));
        content += PaintTints(space, inks.size());
        inks.push_back(name);
    }
    QPDFObjectHandle page = QPDFObjectHandle::parse("<< /Type /Page /Resources << >> >>");
    page.replaceKey("/MediaBox",
                    QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(
                        0, 0, kTints * kSquare, static_cast<double>(inks.size()) * kSquare)));
    page.getKey("/Resources").replaceKey("/ColorSpace", resources);
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&target, content));
    QPDFPageDocumentHelper(target).addPage(target.makeIndirectObject(page), false);
    QPDFWriter(target, chart.c_str()).write();
    return inks;
}

SpotInks ReadChart(const fs::path& plates, const std::vector<std::string>& inks) {
    constexpr const char* kProcessInks[] = {"Cyan", "Magenta", "Yellow", "Black"};
    const int64_t rows = std::ssize(inks) * kSquare;
    std::vector<uint8_t> row(kTints * kSquare);
    SpotInks found;
    for (std::size_t process = 0; process < std::size(kProcessInks); ++process) {
        PlateReader plate({{plates, rows, 0, rows}}, kProcessInks[process], std::ssize(row));
        for (int64_t y = 0; y < rows; ++y) {
            plate.ReadRow(row);
            if (y % kSquare != kSquare / 2) continue;
            const std::size_t fromFoot = inks.size() - 1 - static_cast<std::size_t>(y / kSquare);
            // Where a plate has no ink it adds none, whatever its colour space says of that.
            for (std::size_t tint = 1; tint < kTints; ++tint)
                found[inks[fromFoot]][process][tint] = row[tint * kSquare + kSquare / 2];
        }
    }
    return found;
}

}  // namespace

SpotInks ReadSpotInks(Rasterizer& rasterizer, const fs::path& workFolder,
                      const std::set<std::string>& names, bool fastColor) try {
    if (names.empty()) return {};
    std::vector<std::string> inks;
    {
        const MemoryLimit limit(kMostMemoryBytes);
        inks = WriteChart(rasterizer.Document(), workFolder / kChartName, names);
    }
    if (inks.empty()) return {};
    const fs::path folder = workFolder / "spots";
    fs::create_directory(folder);
    BandRequest chart;
    chart.Document = kChartName;
    chart.XResolution = chart.YResolution = kPointsPerInch;
    chart.WidthPixels = kTints * kSquare;
    chart.PageRows = chart.RowCount = std::ssize(inks) * kSquare;
    InkPlan plan;
    plan.NeedsSeparations = true;
    plan.UsesFastColor = fastColor;
    rasterizer.MakePlates(chart, plan, folder);
    SpotInks found = ReadChart(folder, inks);
    fs::remove_all(folder);
    return found;
} catch (const HostError& error) {
    // The page is rasterised all the same: the rasteriser then mixes the inks on its way.
    if (error.Status() == kAborted) throw;
    return {};
} catch (const std::exception&) {  // a document that only the rasteriser can read
    return {};
}
