#include "driverhost/check/CheckedDocument.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "driverhost/NoFileReason.h"
#include "host/FileBytes.h"
#include "host/Gzip.h"
#include "host/Numbers.h"
#include "host/XmlReading.h"

namespace {

/// Tags and attributes of a file beyond which it is not looked into: a hundred times those of a
/// large description, and little enough to hold the whole tree, which takes many times the file's
/// size.
constexpr std::ptrdiff_t kMostParts = 1'000'000;

/// Where an element's tag starts.
std::ptrdiff_t OffsetOf(const pugi::xml_node& element) {
    return element.offset_debug() - 1;  // pugixml counts to the name
}

std::ptrdiff_t OffsetOf(const pugi::xml_node& element, const pugi::xml_attribute& attribute) {
    if (!attribute) return OffsetOf(element);
    // Both names stand in the buffer that was parsed, where pugixml leaves them.
    return element.offset_debug() + (attribute.name() - element.name());
}

/// Names that XML itself and its schemas give a meaning.
bool IsForeign(std::string_view name) {
    return name.starts_with("xml") || name.find(':') != std::string_view::npos;
}

bool Contains(const std::vector<std::string_view>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

bool CheckedDocument::Load(const AFilePath& path, Form form) {
    file_ = path.fullPath();
    findings_.BeginFile(file_);
    const auto refused = [&](std::string reason) {
        findings_.Add(Severity::kError, file_, {}, std::move(reason));
        return false;
    };
    const std::string noFile = NoFileReason(path);
    if (!noFile.empty()) return refused("the file " + noFile);
    std::optional<std::string> bytes = ReadFileBytes(path);
    if (!bytes) {
        return refused(
            fmt::format("the file cannot be read, or has more than {} bytes", kMostTextBytes));
    }
    if (IsGzip(*bytes)) {
        if (form == Form::kPlain) {
            return refused("the file is gzip-compressed; the driver reads this one as plain XML");
        }
        bytes = InflateGzip(*bytes, kMostTextBytes);
        if (!bytes) {
            return refused(fmt::format("the gzip data are damaged or hold more than {} bytes",
                                       kMostTextBytes));
        }
    }
    const auto parts = std::count(bytes->begin(), bytes->end(), '<') +
                       std::count(bytes->begin(), bytes->end(), '=');
    if (parts > kMostParts) {
        return refused(fmt::format("not checked: {} tags and attributes are no model data", parts));
    }
    bytes_ = std::move(*bytes);
    const XmlText text = ReadXml(bytes_, document_);
    positions_.emplace(text.Utf8.value_or(bytes_));
    root_ = FirstElement(document_.first_child());
    if (!text.Fault) return true;
    Add(Severity::kError, text.Fault->Offset, "no XML document: " + text.Fault->Reason);
    return false;
}

void CheckedDocument::Add(Severity level, std::ptrdiff_t offset, std::string text) const {
    TextPosition at;
    if (!findings_.IsFull(file_)) at = positions_->At(offset);
    findings_.Add(level, file_, at, std::move(text));
}

void CheckedDocument::Error(const pugi::xml_node& at, std::string text) const {
    Add(Severity::kError, OffsetOf(at), std::move(text));
}

void CheckedDocument::Warning(const pugi::xml_node& at, std::string text) const {
    Add(Severity::kWarning, OffsetOf(at), std::move(text));
}

void CheckedDocument::Error(const pugi::xml_node& at, const char* attribute,
                            std::string text) const {
    Add(Severity::kError, OffsetOf(at, at.attribute(attribute)), std::move(text));
}

void CheckedDocument::Warning(const pugi::xml_node& at, const char* attribute,
                              std::string text) const {
    Add(Severity::kWarning, OffsetOf(at, at.attribute(attribute)), std::move(text));
}

TextPosition CheckedDocument::PositionOf(const pugi::xml_node& element) const {
    return positions_->At(OffsetOf(element));
}

void CheckedDocument::CheckNames(const pugi::xml_node& element, const Known& known) const {
    CheckAttributes(element, known);
    CheckChildren(element, known);
}

void CheckedDocument::CheckAttributes(const pugi::xml_node& element, const Known& known) const {
    std::set<std::string_view> met;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view name = attribute.name();
        const bool isFirst = met.insert(name).second;
        if (isFirst && (Contains(known.Attributes, name) || IsForeign(name))) continue;
        std::string hint;
        bool isLost = false;
        if (!isFirst) {
            hint = ": only the first of this name is";
        } else if (Contains(known.Children, name)) {
            hint = "; it is read from a child element";
            isLost = !ChildElement(element, name);
        } else {
            hint = DidYouMean(name, known.Attributes);
            const std::string meant(NearestName(name, known.Attributes));
            isLost = !meant.empty() && !element.attribute(meant.c_str());
        }
        Add(isLost ? Severity::kError : Severity::kWarning, OffsetOf(element, attribute),
            fmt::format("attribute {} is not read{}", Quoted(name), hint));
    }
}

void CheckedDocument::CheckChildren(const pugi::xml_node& element, const Known& known) const {
    bool hasText = false;
    std::map<std::string_view, pugi::xml_node> first;
    for (const pugi::xml_node child : element.children()) {
        if (IsFilledText(child)) {
            if (!known.HasText || hasText) {
                const std::string_view text = child.value();
                const auto blanks = text.find_first_not_of(" \t\r\n");
                Add(Severity::kWarning, child.offset_debug() + static_cast<std::ptrdiff_t>(blanks),
                    known.HasText ? "only the text before is read" : "this text is not read");
            }
            hasText = true;
        }
        if (child.type() != pugi::node_element || known.IsList) continue;
        const std::string_view name = child.name();
        if (!Contains(known.Children, name)) {
            const bool isAttribute = Contains(known.Attributes, name);
            const std::string_view meant = NearestName(name, known.Children);
            const bool isLost = isAttribute ? !element.attribute(child.name())
                                            : !meant.empty() && !ChildElement(element, meant);
            Add(isLost ? Severity::kError : Severity::kWarning, OffsetOf(child),
                fmt::format("element {} is not read{}", Quoted(name),
                            isAttribute ? "; it is read from an attribute"
                                        : DidYouMean(name, known.Children)));
            continue;
        }
        const auto [earlier, isFirst] = first.emplace(name, child);
        if (isFirst) continue;
        Warning(child,
                fmt::format("element {} is not read: only the first of this name is, in line {}",
                            Quoted(name), PositionOf(earlier->second).Line));
    }
}

std::string CheckedDocument::ChildText(const pugi::xml_node& parent, const char* name) const {
    const pugi::xml_node child = ChildElement(parent, name);
    if (!child) return "";
    CheckNames(child, {{}, {}, false, true});
    return TextOf(child).value();
}

std::optional<int32_t> CheckedDocument::Number(const pugi::xml_node& at, std::string_view what,
                                               std::string_view text) const {
    const std::optional<int32_t> number = LeadingDecimal(text);
    if (!number) return number;
    const std::size_t digits = text.find_first_of("0123456789");
    const std::size_t end = text.find_first_not_of("0123456789", digits);
    if (end != std::string_view::npos &&
        text.find_first_not_of(" \t\r\n", end) != std::string_view::npos) {
        Warning(at, fmt::format("only the {} of {} {} is read", *number, what, Quoted(text)));
    }
    return number;
}

std::optional<int32_t> CheckedDocument::Number(const pugi::xml_node& at,
                                               const char* attribute) const {
    return Number(at, attribute, at.attribute(attribute).value());
}

pugi::xml_node ChildElement(const pugi::xml_node& parent, std::string_view name) {
    pugi::xml_node child = FirstElement(parent.first_child());
    while (child && name != child.name())
        child = FirstElement(child.next_sibling());
    return child;
}

int32_t CountElements(const pugi::xml_node& parent) {
    int32_t count = 0;
    ForEachElement(parent, [&](const pugi::xml_node&, int32_t) { ++count; });
    return count;
}
