#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>

/// Why a container, a page of it or a row cannot be read. Holds its text in place, so that it can
/// be kept and told when memory is gone.
struct ContainerFailure {
    ContainerFailure() = default;
    explicit ContainerFailure(std::string_view what, int error = 0) : systemError(error) {
        std::memcpy(text, what.data(), std::min(what.size(), sizeof text - 1));
    }

    char text[96] = "";   ///< what goes behind a container's or page's name and a colon
    int systemError = 0;  ///< the system's number for the reason; 0 where it gave none
};
