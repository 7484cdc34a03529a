#include "driverhost/check/WhiteOfferCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>

#include "description/ModelOutputSettings.h"

namespace {

constexpr char kAttribute[] = "SupportWhite";

/// Bytes of a white-ink offer that is looked into; a longer one is no list that a person chooses
/// from.
constexpr std::size_t kMostOfferBytes = 65536;

class OfferCheck {
  public:
    OfferCheck(const CheckedDocument& document, const pugi::xml_node& entry)
        : document_(document), entry_(entry), offer_(entry.attribute(kAttribute).value()) {}

    std::vector<int32_t> Check() {
        if (offer_.empty()) return {};
        if (offer_.size() > kMostOfferBytes) {
            Warning(fmt::format("not checked: SupportWhite has {} bytes", offer_.size()));
            return {};
        }
        ReadWhiteOffer(offer_, output_);
        CheckParts();
        CheckCounts();
        CheckCodes();
        CheckNumbers();
        std::vector<int32_t> types = output_.WhiteTypeCodes;
        types.push_back(output_.DefaultWhiteType);
        return types;
    }

  private:
    void Error(std::string text) const { document_.Error(entry_, kAttribute, std::move(text)); }
    void Warning(std::string text) const { document_.Warning(entry_, kAttribute, std::move(text)); }

    void CheckParts() const {
        if (offer_.find('|') == std::string::npos)
            Error(
                "SupportWhite has no '|': all of it is the default, and one treatment without a "
                "name, of code 0, is offered");
        else if (offer_.front() == '|')
            Error("SupportWhite names no default; 0 is read, and the first name starts with '|'");
        const auto semicolons = std::count(offer_.begin(), offer_.end(), ';');
        if (semicolons != 2)
            Error(fmt::format("SupportWhite has {} ';' where 2 part names, codes and header codes",
                              semicolons));
    }

    void CheckCounts() const {
        const std::size_t names = output_.WhiteTypeNames.size();
        const std::size_t codes = output_.WhiteTypeCodes.size();
        const std::size_t headerCodes = output_.WhiteHeaderCodes.size();
        if (codes != names || headerCodes != names)
            Error(fmt::format("SupportWhite has {} names, {} codes and {} header codes", names,
                              codes, headerCodes));
    }

    void CheckCodes() const {
        const std::vector<int32_t>& codes = output_.WhiteTypeCodes;
        const int32_t byDefault = output_.DefaultWhiteType;
        // No white until the user asks for it is a choice, too.
        if (std::find(codes.begin(), codes.end(), byDefault) == codes.end()) {
            std::string text = fmt::format(
                "the default {} is none of the codes that SupportWhite offers", byDefault);
            if (byDefault > 0)
                Error(std::move(text));
            else
                Warning(std::move(text));
        }
        std::set<int32_t> met;
        for (const int32_t code : codes) {
            if (!met.insert(code).second)
                Warning(fmt::format("SupportWhite offers code {} twice", code));
            else if (code == 4 || code > 5)
                Error(fmt::format("white treatment {} leaves a white file without lines", code));
        }
    }

    /// The default, then the codes behind the first ';': digits, signs and commas.
    void CheckNumbers() const {
        std::string_view head;
        const std::string_view lists = SplitAtSeparator(offer_, "|", head);
        std::string_view names;
        const std::string_view numbers = SplitAtSeparator(lists, ";", names);
        for (const std::string_view part : {head, numbers})
            if (part.find_first_not_of("0123456789-+,; \t") != std::string_view::npos)
                Error(fmt::format("{} holds more than numbers; what is none counts as 0",
                                  Quoted(part)));
    }

    const CheckedDocument& document_;
    pugi::xml_node entry_;
    std::string offer_;
    ModelOutputSettings output_;
};

}  // namespace

std::vector<int32_t> CheckWhiteOffer(const CheckedDocument& document, const pugi::xml_node& entry) {
    return OfferCheck(document, entry).Check();
}
