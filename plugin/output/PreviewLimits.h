#pragma once

#include <cstdint>

#include "description/ModelOutputSettings.h"

/// Beyond these a description is mistaken, and its preview would take the host's memory.
inline constexpr int32_t kLongestPreviewSide = 20'000;
inline constexpr int64_t kMostPreviewPixels = 16'000'000;

/// Whether the sides in use are those of a preview: with best fit `PreviewSizeV` alone.
bool HasPreviewSides(const ModelOutputSettings& model);

/// Whether a picture of this size is made. Best fit takes the page's shape: it can be refused for
/// one page and not for another.
bool IsPreviewSize(int32_t width, int32_t height);
