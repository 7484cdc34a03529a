#include "JobRunner.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdio>

std::string JobFileBytes(const JobChoices& choices) {
    JobFileHeader header{};
    SetText(header.OriginalFileName, "artwork.pdf");
    SetText(header.PrinterName, choices.PrinterName);
    header.XResolution = choices.XResolution;
    header.YResolution = choices.YResolution;
    header.XResolutionWhole = static_cast<int16_t>(std::clamp(choices.XResolution, 0.0F, 32767.0F));
    header.YResolutionWhole = static_cast<int16_t>(std::clamp(choices.YResolution, 0.0F, 32767.0F));
    header.Options = choices.Options;
    header.ColorModeIndex = choices.ColorMode;
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

Job::Job(const Driver& driver, const std::filesystem::path& jobFile) : driver_(driver) {
    SetText(Status.JobFilePath, jobFile.string());
    Status.JobState = kFilePort;
}

std::string Job::Run() {
    constexpr std::size_t kMostSteps = 100000;  // far more than any job here takes
    std::string answers;
    while (!HasEnded() && answers.size() < kMostSteps)
        answers += std::to_string(Step());
    EXPECT_TRUE(HasEnded());
    return answers;
}

bool IsPrinted(const std::string& answers) {
    return !answers.empty() && answers == std::string(answers.size(), '1');
}

void BoundaryTest::Install(const std::string& description) {
    folder.InstallModel(kModelName, description);
    driver = std::make_unique<Driver>();
}

Job BoundaryTest::MakeJob(const std::vector<Page>& pages, const JobChoices& choices,
                          const AlterDirectory& alter) {
    WriteText(JobFile(), JobFileBytes(choices));
    WriteContainer(Container(), pages, alter);
    return {*driver, JobFile()};
}

Job BoundaryTest::StartJob(const std::vector<Page>& pages, const std::string& sourceName,
                           const JobChoices& choices) {
    Job job = MakeJob(pages, choices);
    EXPECT_EQ(job.Open(), 1);
    EXPECT_EQ(job.Port(folder.Out(), sourceName), 1);
    return job;
}

void BoundaryTest::EmptyOutputFolder() {
    std::filesystem::remove_all(folder.Out());
    std::filesystem::create_directory(folder.Out());
}

std::size_t BoundaryTest::FailedSteps() const {
    std::size_t count = 0;
    std::string before = kStepLogLine;
    for (const std::string& entry : folder.Errors()) {
        if (entry == kStepLogLine) {
            ++count;
            EXPECT_NE(before, kStepLogLine) << "a failed step without its reason";
        }
        before = entry;
    }
    return count;
}

std::size_t LineBytes(const Page& page) {
    int deepest = 0;
    for (const Separation& separation : page.Separations)
        deepest = std::max(deepest, separation.Depth);
    return (std::size_t{page.Width} + 31) / 32 * 4 * static_cast<std::size_t>(deepest);
}

std::string ChannelBytes(const Page& page, const std::string& colorant, bool bottomFirst) {
    std::string bytes(page.Height * LineBytes(page), '\0');
    for (const Separation& separation : page.Separations) {
        if (strcasecmp(separation.Name.c_str(), colorant.c_str()) != 0) continue;
        const std::size_t rowBytes = RowBytes(page.Width, separation.Depth);
        for (std::size_t line = 0; line < page.Height; ++line) {
            const std::size_t row = bottomFirst ? page.Height - 1 - line : line;
            std::string data = separation.Rows.substr(row * rowBytes, rowBytes);
            data.resize(LineBytes(page));
            bytes.replace(line * data.size(), data.size(), data);
        }
    }
    return bytes;
}

std::string TiffRows(const std::filesystem::path& path) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    if (tiff == nullptr) return "";
    std::string rows;
    uint32_t height = 0;
    float xResolution = 0;
    float yResolution = 0;
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &xResolution);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &yResolution);
    if (xResolution == 300 && yResolution == 600) TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    std::string row(static_cast<std::size_t>(TIFFScanlineSize(tiff)), '\0');
    for (uint32_t y = 0; y < height && TIFFReadScanline(tiff, row.data(), y, 0) == 1; ++y)
        rows += row;
    TIFFClose(tiff);
    return rows;
}

std::string PrintedBy(const std::string& command) {
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "no pipe";
    std::string text;
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr)
        text += part.data();
    return pclose(pipe) == 0 ? text : text + "and fails";
}
