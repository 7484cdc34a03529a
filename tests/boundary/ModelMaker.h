#pragma once

#include <string>
#include <vector>

/// One colour of a model and the name pattern of its channel files.
struct Colour {
    std::string InternalName;
    std::string ChannelName;
    std::string ID{};  ///< of the channel name; empty: the colour's position
};

/// A model of one medium and print mode whose colorants have one bit.
struct Model {
    std::vector<Colour> Colours;
    std::vector<std::vector<int>> ColorModes;  ///< positions in the colour list
    std::string OutputRules{};                 ///< attributes of the model's output rules
    /// Elements of the output rules; without more the pages have no preview.
    std::string OutputElements{"<PreviewParam sizeV=\"0\"/>"};
};

inline constexpr const char* kModelName = "Roller 64";

/// The model's description file, plain.
std::string Describe(const Model& model);
/// `count` colours C1, C2, … in one colour mode, with channel files filename_C1.`extension` …
Model NumberedModel(int count, const std::string& outputRules,
                    const std::string& extension = "raw");
