#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "driverhost/check/Findings.h"
#include "driverhost/check/TextPositions.h"
#include "host/AFilePath.h"

/// An XML document that is read as the driver reads it, with the place of everything in it. Texts
/// are UTF-8.
class CheckedDocument {
  public:
    enum class Form { kPlain, kEncoded };

    /// What the driver knows of one element; everything else in it is reported as not read.
    struct Known {
        std::vector<std::string_view> Children;
        std::vector<std::string_view> Attributes;
        bool IsList = false;  ///< its children are items, whose names are free
        bool HasText = false;
    };

    /// `findings` must outlive the document.
    explicit CheckedDocument(Findings& findings) : findings_(findings) {}

    /// False, with the reason among the findings, when the driver cannot read it, or
    /// when it is too large to be checked.
    bool Load(const AFilePath& path, Form form);
    pugi::xml_node Root() const { return root_; }
    const std::string& File() const { return file_; }
    /// The text that was parsed, after decoding.
    const std::string& Bytes() const { return bytes_; }

    void Error(const pugi::xml_node& at, std::string text) const;
    void Warning(const pugi::xml_node& at, std::string text) const;
    /// At an attribute; at its element when that has none of the name.
    void Error(const pugi::xml_node& at, const char* attribute, std::string text) const;
    void Warning(const pugi::xml_node& at, const char* attribute, std::string text) const;
    TextPosition PositionOf(const pugi::xml_node& element) const;

    /// Reports what the driver does not read of an element itself: unknown attributes and children
    /// (with the known name that was probably meant), repeated children, text. A name that stands
    /// where a known one is missing is an error: what it says is lost.
    void CheckNames(const pugi::xml_node& element, const Known& known) const;

    /// The text of the child `name` as the driver reads it; "" when it is absent. A repeated child
    /// is CheckNames' matter; the child's own attributes, children and further texts are reported.
    std::string ChildText(const pugi::xml_node& parent, const char* name) const;
    /// The number that `text` starts with; what follows it is reported at `at`.
    std::optional<int32_t> Number(const pugi::xml_node& at, std::string_view what,
                                  std::string_view text) const;
    /// The number in an attribute; nothing when it is absent or no number.
    std::optional<int32_t> Number(const pugi::xml_node& at, const char* attribute) const;

  private:
    void Add(Severity level, std::ptrdiff_t offset, std::string text) const;
    void CheckAttributes(const pugi::xml_node& element, const Known& known) const;
    void CheckChildren(const pugi::xml_node& element, const Known& known) const;

    Findings& findings_;
    std::string file_;
    std::string bytes_;
    std::optional<TextPositions> positions_;
    pugi::xml_document document_;
    pugi::xml_node root_;
};

/// Visits the child elements of `parent` in order: `visit(child, position)`.
template <class Visit>
void ForEachElement(const pugi::xml_node& parent, Visit visit) {
    int32_t position = 0;
    for (const pugi::xml_node child : parent.children()) {
        if (child.type() == pugi::node_element) visit(child, position++);
    }
}

/// The first child element of that name; null when there is none.
pugi::xml_node ChildElement(const pugi::xml_node& parent, std::string_view name);

int32_t CountElements(const pugi::xml_node& parent);
