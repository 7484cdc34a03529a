#include "JobRunner.h"

#include <algorithm>

std::string JobFileBytes(const JobChoices& choices) {
    JobFileHeader header{};
    SetText(header.OriginalFileName, "artwork.pdf");
    SetText(header.PrinterName, choices.Model);
    header.XResolution = choices.XResolution;
    header.YResolution = choices.YResolution;
    const auto whole = [](float value) {
        return static_cast<int16_t>(std::clamp(value, 0.0F, 32767.0F));
    };
    header.XResolutionWhole = whole(choices.XResolution);
    header.YResolutionWhole = whole(choices.YResolution);
    header.Options = choices.Options;
    header.ColorModeIndex = choices.ColorMode;
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

Job::Job(const Driver& driver, const std::filesystem::path& jobFile) : driver_(driver) {
    SetText(Status.JobFilePath, jobFile.string());
    Status.JobState = kFilePort;
}

int32_t Job::Open() {
    return driver_.Call(kOpenJob, &Status, static_cast<HostOutput*>(&Output));
}

int32_t Job::Port(const std::filesystem::path& folder, const std::string& sourceName) {
    return driver_.Call(kOpenPort, folder.c_str(), sourceName.c_str());
}

int32_t Job::Step() {
    return driver_.Call(kProcessJobStep);
}

std::vector<int32_t> Job::Run() {
    constexpr std::size_t kMostSteps = 100000;  // far more than any job here takes
    std::vector<int32_t> answers;
    while (!HasEnded() && answers.size() < kMostSteps)
        answers.push_back(Step());
    return answers;
}

bool Job::Print(const std::filesystem::path& folder, const std::string& sourceName) {
    if (Open() != 1 || Port(folder, sourceName) != 1 || HasEnded()) return false;
    const std::vector<int32_t> answers = Run();
    return HasEnded() && std::count(answers.begin(), answers.end(), 1) ==
                             static_cast<std::ptrdiff_t>(answers.size());
}

Job BoundaryTest::MakeJob(const std::vector<Page>& pages, const JobChoices& choices,
                          const AlterDirectory& alter) {
    WriteText(JobFile(), JobFileBytes(choices));
    WriteContainer(Container(), pages, alter);
    return {driver, JobFile()};
}

bool BoundaryTest::Print(const Model& model, const std::vector<Page>& pages) {
    folder.InstallModel(kModelName, Describe(model));
    return MakeJob(pages).Print(folder.Out(), "Proof.ps");
}

std::size_t LineBytes(const Page& page) {
    int deepest = 0;
    for (const Separation& separation : page.Separations) {
        deepest = std::max(deepest, separation.Depth);
    }
    return (std::size_t{page.Width} + 31) / 32 * 4 * static_cast<std::size_t>(deepest);
}

std::string ChannelBytes(const Page& page, std::size_t separation, bool bottomFirst) {
    const Separation& source = page.Separations.at(separation);
    const std::size_t rowBytes = RowBytes(page.Width, source.Depth);
    std::string bytes;
    for (std::size_t line = 0; line < page.Height; ++line) {
        const std::size_t row = bottomFirst ? page.Height - 1 - line : line;
        std::string data = source.Rows.substr(row * rowBytes, rowBytes);
        data.resize(LineBytes(page));
        bytes += data;
    }
    return bytes;
}

std::string BlankBytes(const Page& page) {
    return std::string(page.Height * LineBytes(page), '\0');
}

std::optional<TiffChannel> ReadTiff(const std::filesystem::path& path) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    if (tiff == nullptr) return std::nullopt;
    TiffChannel channel;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &channel.Width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &channel.Height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &channel.Bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &channel.Samples);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &channel.Photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &channel.Compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &channel.ResolutionUnit);
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &channel.XResolution);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &channel.YResolution);
    std::string row(static_cast<std::size_t>(TIFFScanlineSize(tiff)), '\0');
    bool readable = true;
    for (uint32_t y = 0; readable && y < channel.Height; ++y) {
        readable = TIFFReadScanline(tiff, row.data(), y, 0) == 1;
        channel.Data += row;
    }
    readable = readable && TIFFReadDirectory(tiff) == 0;
    TIFFClose(tiff);
    if (!readable) return std::nullopt;
    return channel;
}
