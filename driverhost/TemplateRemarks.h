#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "driverhost/check/Findings.h"
#include "driverhost/check/TextPositions.h"

/// Takes what is to be said of places in one template, for a list of findings.
class TemplateRemarks {
  public:
    /// `findings` must outlive this.
    TemplateRemarks(Findings& findings, std::string file, std::string_view text)
        : findings_(findings), file_(std::move(file)), positions_(std::string(text)) {}

    /// `offset` is one in the text.
    void Error(std::size_t offset, std::string text) const;
    void Warning(std::size_t offset, std::string text) const;
    TextPosition At(std::size_t offset) const {
        return positions_.At(static_cast<std::ptrdiff_t>(offset));
    }

  private:
    void Add(Severity level, std::size_t offset, std::string text) const;

    Findings& findings_;
    std::string file_;
    TextPositions positions_;
};
