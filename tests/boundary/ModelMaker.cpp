#include "ModelMaker.h"

#include <cstddef>

namespace {

std::string Element(const char* name, const std::string& text) {
    return std::string("<") + name + ">" + text + "</" + name + ">";
}

std::string Item(const std::string& id, const std::string& rest) {
    return Element("Item", Element("ID", id) + rest);
}

std::string Named(const std::string& name) {
    return Element("InternalName", name) + Element("DisplayName", name);
}

std::string ColorModes(const Model& model) {
    std::string modes;
    for (std::size_t i = 0; i < model.ColorModes.size(); ++i) {
        std::string colorants;
        for (const int colour : model.ColorModes[i].Colours) {
            colorants += "<Colorant ID=\"" + std::to_string(colour) + "\" IsSpotColor=\"0\">" +
                         Element("ColorDepth", std::to_string(model.ColorModes[i].Depth)) +
                         "</Colorant>";
        }
        const std::string id = std::to_string(i);
        modes += Item(id, Named("Mode " + id) + Element("ColorantList", colorants));
    }
    return modes;
}

}  // namespace

std::string Describe(const Model& model) {
    std::string colours;
    for (std::size_t i = 0; i < model.Colours.size(); ++i) {
        const Colour& colour = model.Colours[i];
        colours += Item(colour.ID.empty() ? std::to_string(i) : colour.ID,
                        Named(colour.InternalName) + Element("ChannelName", colour.ChannelName));
    }
    // An empty text is base -1: names come from the description.
    const std::string bases =
        "<BaseMedia/><BasePrintMode/><BaseResolution/><BaseColor/>"
        "<BaseColorMode/>";
    return "<Description>" + Element("BaseResourceNumber", bases) + "<Definition>" +
           Element("MediaList", Item("0", Named("Paper"))) +
           Element("PrintModeList", Item("0", Named("Fine"))) +
           Element("ResolutionList", Item("0",
                                          "<XResValue>300</XResValue>"
                                          "<YResValue>600</YResValue>")) +
           Element("ColorList", colours) + Element("ColorModeList", ColorModes(model)) +
           "</Definition><ModelList><Model Name=\"" + kModelName + "\" " + model.OutputRules +
           "/></ModelList></Description>";
}

Model NumberedModel(int count, const std::string& outputRules, const std::string& extension) {
    Model model;
    model.OutputRules = outputRules;
    model.ColorModes.emplace_back();
    for (int i = 0; i < count; ++i) {
        const std::string name = "C" + std::to_string(i + 1);
        std::string channel = "filename_";
        channel.append(name).append(".").append(extension);
        model.Colours.push_back({name, channel});
        model.ColorModes[0].Colours.push_back(i);
    }
    return model;
}
