// Loading a model's description and answering a host's queries from it.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "BenchFolder.h"
#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "host/Text.h"

namespace {

constexpr const char* kModelName = "Bench";

/// A base folder with a description whose lists have `count` items each, and one colour mode.
class BenchModel {
  public:
    explicit BenchModel(int64_t count) : folder_(std::filesystem::temp_directory_path()) {
        std::filesystem::create_directory(folder_.Path() / "OutputDrivers");
        Write("ZeComFile.xml", "<Models><Model Name='' XMLFile='bench.xml'/></Models>");
        Write("bench.xml", Description(count));
        SetEnvironment("QL_BASE_FOLDER", folder_.Path().c_str());
    }

  private:
    void Write(const char* name, std::string_view content) const {
        std::ofstream(folder_.Path() / "OutputDrivers" / name, std::ios::binary) << content;
    }

    static std::string Description(int64_t count) {
        std::string resolutions;
        std::string colors;
        std::string colorants;
        for (int64_t index = 0; index < count; ++index) {
            resolutions += fmt::format(
                "<R><ID>{0}</ID><XResValue>{0}</XResValue><YResValue>720</YResValue>"
                "<DisplayName>{0} x 720 dpi</DisplayName></R>",
                index);
            colors += fmt::format(
                "<C><ID>{0}</ID><InternalName>Ink {0}</InternalName><DisplayName>Ink {0}"
                "</DisplayName><ChannelName>filename_{0}.tif</ChannelName></C>",
                index);
            colorants +=
                fmt::format("<K ID=\"{}\" IsSpotColor=\"0\"><ColorDepth>1</ColorDepth></K>", index);
        }
        return fmt::format(
            "<P><BaseResourceNumber><BaseMedia/><BasePrintMode/><BaseResolution/><BaseColor/>"
            "<BaseColorMode/></BaseResourceNumber><Definition><ResolutionList>{}</ResolutionList>"
            "<ColorList>{}</ColorList><ColorModeList><M><ID>0</ID><InternalName>All</InternalName>"
            "<DisplayName>All</DisplayName><ColorantList>{}</ColorantList></M></ColorModeList>"
            "</Definition><Control_Definition><Media ID=\"0\"><Mode ID=\"0\"/></Media>"
            "</Control_Definition></P>",
            resolutions, colors, colorants);
    }

    BenchFolder folder_;
};

void Finish(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetLabel("items a list: " + std::to_string(state.range(0)));
}

void LoadDescription(benchmark::State& state) {
    const BenchModel model(state.range(0));
    for ([[maybe_unused]] const auto turn : state) {
        CDynamic description;
        if (description.LoadDescription(kModelName) == 0) state.SkipWithError("not loaded");
    }
    Finish(state);
}
BENCHMARK(LoadDescription)->Arg(8)->Arg(1'000)->Arg(100'000);

void ListResolutions(benchmark::State& state) {
    const BenchModel model(state.range(0));
    CDynamic description;
    description.LoadDescription(kModelName);
    const int32_t any = 0;
    for ([[maybe_unused]] const auto turn : state) {
        ResolutionList list;
        if (description.GetResolutionList(kModelName, &any, &any, &list) == 0) {
            state.SkipWithError("not listed");
        }
    }
    Finish(state);
}
BENCHMARK(ListResolutions)->Arg(8)->Arg(100'000);

void ReadOutputRules(benchmark::State& state) {
    const BenchModel model(state.range(0));
    CDynamic description;
    description.LoadDescription(kModelName);
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, kModelName);
    for ([[maybe_unused]] const auto turn : state) {
        ModelOutputSettings output;
        if (ReadModelOutputSettings(description, settings, output) == 0) {
            state.SkipWithError("not read");
        }
    }
    Finish(state);
}
BENCHMARK(ReadOutputRules)->Arg(8)->Arg(100'000);

}  // namespace
