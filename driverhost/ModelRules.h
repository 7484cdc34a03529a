#pragma once

#include <string>

#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "driverhost/Capabilities.h"

/// What a model's description says of the files of a job, read with the pieces that the driver
/// reads it with.
struct ModelRules {
    /// Throws HostError for a model that cannot be read.
    ModelRules(const std::string& model, const PrintChoice& choice);

    /// Whether white is among what the model prints, as a treatment that an operator chooses.
    bool OffersWhite() const { return Output.OffersWhite; }

    CDynamic Description;
    ModelOutputSettings Output;
};
