#pragma once

#include <string>
#include <vector>

/// One colour of a model and the name pattern of its channel files.
struct Colour {
    std::string InternalName;
    std::string ChannelName;
    std::string ID{};  ///< of the channel name; empty: the colour's position
};

struct ModelColorMode {
    std::vector<int> Colours;  ///< positions in the colour list
    int Depth = 1;             ///< bits per pixel
};

/// A model that allows every combination of its choices.
struct Model {
    std::vector<Colour> Colours;
    std::vector<ModelColorMode> ColorModes;
    std::string OutputRules{};  ///< attributes of the model's output rules
};

inline constexpr const char* kModelName = "Roller 64";

/// The model's description file, plain.
std::string Describe(const Model& model);
/// `count` colours C1, C2, … in one colour mode, with channel files filename_C1.`extension` …
Model NumberedModel(int count, const std::string& outputRules, const std::string& extension);
