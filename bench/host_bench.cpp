// Reading a job container and writing channel files, row by row as a job does.

#include <benchmark/benchmark.h>
#include <tiffio.h>

#include <filesystem>
#include <string>
#include <vector>

#include "BenchContainer.h"
#include "BenchFolder.h"
#include "host/ExportBitmap.h"
#include "host/ZEJob.h"

namespace {

constexpr BenchPage kPage = {20'000, 2'000, 1};

void Describe(benchmark::State& state, const char* what, int32_t channels) {
    const int64_t lines = kPage.rows * channels;
    const int64_t bytes = lines * kPage.RowBytes();
    state.SetBytesProcessed(bytes * state.iterations());
    state.SetLabel(std::string(what) + ", " + std::to_string(kPage.widthPixels) + " px, " +
                   std::to_string(kPage.bits) + " bit, " + std::to_string(lines) + " lines, " +
                   std::to_string(bytes) + " bytes");
}

bool ReadRow(AImage& image, uint32_t separation, int32_t row, std::vector<uint8_t>& buffer) {
    return image.ReadRow(separation, row, 1, buffer.data(), 0) != 0;
}

bool ReadByChannel(AImage& image, std::vector<uint8_t>& buffer) {
    for (uint32_t separation = 0; separation < BenchPage::kChannels; ++separation) {
        for (int32_t row = 0; row < image.Rows(); ++row) {
            if (!ReadRow(image, separation, row, buffer)) return false;
        }
    }
    return true;
}

bool ReadByLine(AImage& image, std::vector<uint8_t>& buffer) {
    for (int32_t row = 0; row < image.Rows(); ++row) {
        for (uint32_t separation = 0; separation < BenchPage::kChannels; ++separation) {
            if (!ReadRow(image, separation, row, buffer)) return false;
        }
    }
    return true;
}

using Read = bool (*)(AImage& image, std::vector<uint8_t>& buffer);

void ReadContainer(benchmark::State& state, uint16_t compression, Read read, const char* what) {
    const BenchFolder folder(std::filesystem::temp_directory_path());
    const std::filesystem::path path = folder.Path() / "job.pages.tif";
    WriteBenchContainer(path, kPage, compression);
    std::vector<uint8_t> buffer(static_cast<std::size_t>(kPage.RowBytes()));
    for ([[maybe_unused]] const auto turn : state) {
        ZEJob job(0);
        const bool isOpen = job.Load(AFilePath(path.string())) != 0 && job.OpenData(1) != 0;
        AImage* const image = isOpen ? job.GetImage(0) : nullptr;
        if (image == nullptr || !read(*image, buffer)) {
            state.SkipWithError("the container cannot be read");
            break;
        }
    }
    Describe(state, what, BenchPage::kChannels);
}

BENCHMARK_CAPTURE(ReadContainer, plain, COMPRESSION_NONE, ReadByChannel, "uncompressed");
BENCHMARK_CAPTURE(ReadContainer, plainByLine, COMPRESSION_NONE, ReadByLine, "uncompressed");
BENCHMARK_CAPTURE(ReadContainer, packBits, COMPRESSION_PACKBITS, ReadByChannel, "PackBits");
BENCHMARK_CAPTURE(ReadContainer, lzw, COMPRESSION_LZW, ReadByChannel, "LZW");
BENCHMARK_CAPTURE(ReadContainer, lzwByLine, COMPRESSION_LZW, ReadByLine, "LZW");

void ExportChannel(benchmark::State& state, const char* name) {
    const BenchFolder folder(std::filesystem::temp_directory_path());
    const std::string path = (folder.Path() / name).string();
    const std::vector<uint8_t> line(static_cast<std::size_t>(kPage.RowBytes()), 0x55);
    for ([[maybe_unused]] const auto turn : state) {
        ExportBitmap channel(path.c_str(), static_cast<uint32_t>(kPage.widthPixels),
                             static_cast<uint32_t>(kPage.rows), 720, 720, kPage.bits, 0, 0, nullptr,
                             nullptr, 0);
        for (int64_t row = 0; row < kPage.rows; ++row) {
            if (channel.WriteBand(1, static_cast<int>(line.size()), line.data()) == 0) {
                state.SkipWithError("the channel cannot be written");
                return;
            }
        }
    }
    Describe(state, "one channel", 1);
}

BENCHMARK_CAPTURE(ExportChannel, raw, "channel.raw");
BENCHMARK_CAPTURE(ExportChannel, tiff, "channel.tif");

}  // namespace
