#pragma once

#include <string>
#include <vector>

/// One model of the base folder.
struct ListedModel {
    std::string Name;             ///< in the host's code page
    std::string DescriptionFile;  ///< below the folder of the descriptions
};

/// The models that the base folder's model list reaches, in its order: of each entry the models
/// that its description names, or the entry's own name where the description names none that the
/// entry serves. A model that an earlier entry takes does not appear again. Throws HostError when
/// the list cannot be read.
std::vector<ListedModel> ReadModelList();

/// Throws HostError(kUsage) for a model that no entry of the list serves, or whose description has
/// output rules for others only; names what there is near it. Throws HostError when the list
/// cannot be read.
void RequireModel(const std::string& name);
