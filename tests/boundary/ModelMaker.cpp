#include "ModelMaker.h"

#include <fmt/format.h>

namespace {

// An empty base is -1: names come from the description.
constexpr const char* kDescription = R"(<Description>
<BaseResourceNumber>
<BaseMedia/><BasePrintMode/><BaseResolution/><BaseColor/><BaseColorMode/>
</BaseResourceNumber>
<Definition>
<MediaList><Item><ID>0</ID><InternalName>Paper</InternalName></Item></MediaList>
<PrintModeList><Item><ID>0</ID><InternalName>Fine</InternalName></Item></PrintModeList>
<ResolutionList><Item><ID>0</ID><XResValue>300</XResValue><YResValue>600</YResValue></Item>
</ResolutionList>
<ColorList>{}</ColorList><ColorModeList>{}</ColorModeList>
</Definition>
<ModelList><Model Name="{}" {}>{}</Model></ModelList>
</Description>)";

}  // namespace

std::string Describe(const Model& model) {
    std::string colours;
    for (std::size_t i = 0; i < model.Colours.size(); ++i) {
        const auto& [name, channel, id] = model.Colours[i];
        colours += fmt::format(
            "<Item><ID>{}</ID><InternalName>{}</InternalName><ChannelName>{}</ChannelName></Item>",
            id.empty() ? std::to_string(i) : id, name, channel);
    }
    std::string modes;
    for (std::size_t i = 0; i < model.ColorModes.size(); ++i) {
        std::string colorants;
        for (const int colour : model.ColorModes[i]) {
            colorants += fmt::format(
                R"(<Colorant ID="{}" IsSpotColor="0"><ColorDepth>1</ColorDepth></Colorant>)",
                colour);
        }
        modes += fmt::format(
            "<Item><ID>{0}</ID><InternalName>{0}</InternalName><DisplayName>Mode {0}</DisplayName>"
            "<ColorantList>{1}</ColorantList></Item>",
            i, colorants);
    }
    return fmt::format(kDescription, colours, modes, kModelName, model.OutputRules,
                       model.OutputElements);
}

Model NumberedModel(int count, const std::string& outputRules, const std::string& extension) {
    Model model;
    model.ColorModes = {{}};
    model.OutputRules = outputRules;
    for (int i = 0; i < count; ++i) {
        const std::string name = fmt::format("C{}", i + 1);
        model.Colours.push_back({name, fmt::format("filename_{}.{}", name, extension)});
        model.ColorModes[0].push_back(i);
    }
    return model;
}
