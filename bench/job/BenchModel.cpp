#include "BenchModel.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr int32_t kDepths[] = {1, 2, 4, 8};
constexpr int kPreviewSide = 500;
constexpr const char* kTicketName = "Ticket.xml";
constexpr const char* kHeaderName = "Header.txt";

std::string ColorList(const BenchModel& model) {
    std::string colors;
    for (int32_t channel = 0; channel < BenchPage::kChannels; ++channel)
        colors += fmt::format(
            "<Color><ID>{0}</ID><InternalName>{1}</InternalName><DisplayName>{1}</DisplayName>"
            "<ChannelName>filename_{1}.{2}</ChannelName></Color>",
            channel, kBenchColorants[channel], model.isRaw ? "raw" : "tif");
    return colors;
}

std::string ColorModeList() {
    std::string modes;
    for (const int32_t bits : kDepths) {
        std::string colorants;
        for (int32_t channel = 0; channel < BenchPage::kChannels; ++channel)
            colorants += fmt::format(
                "<Colorant ID=\"{}\" IsSpotColor=\"0\"><ColorDepth>{}</ColorDepth></Colorant>",
                channel, bits);
        modes += fmt::format(
            "<ColorMode><ID>{0}</ID><InternalName>CMYK{1}</InternalName><DisplayName>CMYK{1}"
            "</DisplayName><ColorantList>{2}</ColorantList></ColorMode>",
            BenchColorMode(bits), bits, colorants);
    }
    return modes;
}

std::string ColorModes() {
    std::string modes;
    for (const int32_t bits : kDepths)
        modes += fmt::format("<ColorMode ID=\"{}\"/>", BenchColorMode(bits));
    return modes;
}

std::string SideFiles(const BenchModel& model) {
    if (!model.hasSideFiles) return "";
    return fmt::format(
        "<JobTicketParam name=\"{}\" code=\"utf-8\"/>"
        "<HeaderParam name=\"{}\" output=\"filename.hdr\" EndRip=\"NO\"/>",
        kTicketName, kHeaderName);
}

std::string Description(const BenchModel& model) {
    return fmt::format(
        "<Printer><BaseResourceNumber><BaseMedia/><BasePrintMode/><BaseResolution/><BaseColor/>"
        "<BaseColorMode/></BaseResourceNumber><Definition>"
        "<MediaList DefaultMedia=\"0\"><Media><ID>0</ID><InternalName>Film</InternalName>"
        "<DisplayName>Film</DisplayName></Media></MediaList>"
        "<PrintModeList><PrintMode><ID>0</ID><InternalName>Fine</InternalName>"
        "<DisplayName>Fine</DisplayName></PrintMode></PrintModeList>"
        "<ResolutionList><Resolution><ID>0</ID><XResValue>{0}</XResValue><YResValue>{0}"
        "</YResValue><DisplayName>{0}</DisplayName></Resolution></ResolutionList>"
        "<ColorList>{1}</ColorList><ColorModeList>{2}</ColorModeList></Definition>"
        "<Control_Definition><Media ID=\"0\" DefaultPrintMode=\"0\"><PrintMode ID=\"0\">"
        "<Resolution ID=\"0\" DefaultColorMode=\"0\">{3}</Resolution></PrintMode></Media>"
        "</Control_Definition><ModelList><Model Name=\"{4}\" TypeRead=\"{5}\" "
        "PrinterDirection=\"{6}\" CreateFolder=\"No\" SupportWhite=\"{7}\">"
        "<PreviewParam type=\"{8}\" sizeV=\"{9}\" "
        "name=\"{10}\"/>{11}</Model></ModelList></Printer>",
        kBenchResolution, ColorList(model), ColorModeList(), ColorModes(), kBenchModelName,
        model.isInterleaved ? "LINE_BY_LINE" : "", model.isReversed ? "YES" : "",
        model.whiteType == 0 ? "" : fmt::format("{0}|White;{0};1", model.whiteType), model.preview,
        model.preview.empty() ? 0 : kPreviewSide, kBenchPreviewName, SideFiles(model));
}

}  // namespace

int BenchColorMode(int32_t bits) {
    return static_cast<int>(std::find(std::begin(kDepths), std::end(kDepths), bits) -
                            std::begin(kDepths));
}

void WriteBenchFile(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

void WriteBenchBase(const fs::path& folder, const BenchModel& model) {
    const fs::path drivers = folder / "OutputDrivers";
    WriteBenchFile(drivers / "ZeComFile.xml",
                   fmt::format("<Models><Model Name=\"{}\" XMLFile=\"bench.xml\"/></Models>",
                               kBenchModelName));
    WriteBenchFile(drivers / "bench.xml", Description(model));
    WriteBenchFile(drivers / "JobTicketTemplates" / kTicketName,
                   "<Job><Copies>QL_COPIES</Copies><Width>QL_WIDTH</Width></Job>\n");
    WriteBenchFile(drivers / "HeaderTemplates" / kHeaderName,
                   "int32,QL_WIDTH\r\nint32,QL_HEIGHT\r\n");
    fs::create_directories(folder / "Temp");
}
