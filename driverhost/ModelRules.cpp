#include "driverhost/ModelRules.h"

#include <fmt/format.h>

#include "driverhost/HostError.h"
#include "host/Text.h"

ModelRules::ModelRules(const std::string& model, const PrintChoice& choice) {
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, model);
    settings.ColorModeIndex = choice.ColorMode;
    settings.MediaIndex = choice.Media;
    settings.PrintModeIndex = choice.PrintMode;
    settings.ResolutionIndex = choice.Resolution;
    if (ReadModelOutputSettings(Description, settings, Output) == 0)
        throw HostError(kFailed, fmt::format("the model \"{}\" cannot be read", model));
}
