#include "host/AXMLTree.h"

#include <new>
#include <pugixml.hpp>
#include <string>
#include <unordered_map>

#include "host/FileBytes.h"
#include "host/Gzip.h"
#include "host/XmlReading.h"
#include "platform/CodePage.h"

namespace {

pugi::xml_node Element(void* element) {
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(element));
}

/// A new last child of that name; none without memory, where the library leaves one without a name.
pugi::xml_node AppendElement(pugi::xml_node parent, std::string_view name) {
    const std::string utf8 = AnsiToUtf8(name);
    pugi::xml_node element = parent.append_child(utf8.c_str());
    return element.name() == utf8 ? element : pugi::xml_node();
}

struct StringWriter final : pugi::xml_writer {
    std::string bytes;
    void write(const void* data, size_t size) override {
        bytes.append(static_cast<const char*>(data), size);
    }
};

}  // namespace

struct AXMLTree::Document {
    /// What was last asked of a parent, so that a loop over its children by position costs one
    /// step a child.
    struct Position {
        int32_t count = -1;  ///< child elements; -1 until counted
        int32_t index = -1;  ///< where `child` stands; -1 for none
        pugi::xml_node child;
    };

    pugi::xml_document xml;
    bool isLoaded = false;  ///< read from a file or text, so saved as it came
    std::unordered_map<void*, Position> positions;

    void Clear() {
        xml.reset();
        positions.clear();
    }
};

AXMLTree::AXMLTree(std::string_view rootName) : document_(std::make_unique<Document>()) {
    pugi::xml_node declaration = document_->xml.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");
    // Without memory the library leaves out a name or a value, and goes on.
    const bool isWhole = declaration.attribute("version").as_string() == std::string_view("1.0") &&
                         declaration.attribute("encoding").as_string() == std::string_view("UTF-8");
    if (!isWhole || !AppendElement(document_->xml, rootName)) throw std::bad_alloc();
}

AXMLTree::~AXMLTree() = default;

std::optional<std::string> AXMLTree::ReadFile(const AFilePath& path) {
    systemError_ = 0;
    return ReadFileBytes(path, kMostTextBytes, &systemError_);
}

int32_t AXMLTree::loadFromFile(const AFilePath& path, int32_t /*flag*/) {
    const std::optional<std::string> bytes = ReadFile(path);
    return LoadBytes(bytes ? std::string_view(*bytes) : std::string_view());
}

int32_t AXMLTree::loadXML(std::string_view text, int32_t /*flag*/) {
    return LoadBytes(text);
}

int32_t AXMLTree::LoadBytes(std::string_view bytes) {
    document_->Clear();
    document_->isLoaded = true;
    return ReadXml(bytes, document_->xml).Fault ? 0 : 1;
}

int32_t AXMLTree::saveToFile(const AFilePath& path, WriterId writer, int* systemError) const {
    pugi::xml_node declaration = document_->xml.first_child();
    if (declaration.type() == pugi::node_declaration) {
        // The texts are UTF-8 in memory and on disk, in whatever encoding they came.
        pugi::xml_attribute encoding = declaration.attribute("encoding");
        if (encoding) encoding.set_value("UTF-8");
    }
    const unsigned layout = document_->isLoaded ? pugi::format_raw : pugi::format_indent;
    StringWriter text;
    document_->xml.save(text, "  ", layout | pugi::format_no_declaration, pugi::encoding_utf8);
    const WriteOutcome outcome = ReplaceFileBytes(path, text.bytes, writer);
    if (systemError != nullptr) *systemError = outcome.SystemError;
    return outcome ? 1 : 0;
}

int32_t AXMLTree::getRootNode(AXMLTreeNode& root) const {
    root = AXMLTreeNode(FirstElement(document_->xml.first_child()).internal_object());
    return root.element_ != nullptr ? 1 : 0;
}

int32_t AXMLTree::getChild(std::string_view name, const AXMLTreeNode& parent,
                           AXMLTreeNode& child) const {
    const std::string wanted = AnsiToUtf8(name);
    pugi::xml_node node = FirstElement(Element(parent.element_).first_child());
    while (node && wanted != node.name())
        node = FirstElement(node.next_sibling());
    child = AXMLTreeNode(node.internal_object());
    return node ? 1 : 0;
}

int32_t AXMLTree::getChild(int32_t position, const AXMLTreeNode& parent,
                           AXMLTreeNode& child) const {
    const AXMLTreeNode asked = parent;  // the caller may pass one handle as both
    child = AXMLTreeNode();
    if (position < 0 || asked.element_ == nullptr) return 0;
    Document::Position& last = document_->positions[asked.element_];
    if (last.index < 0 || last.index > position) {
        last.child = FirstElement(Element(asked.element_).first_child());
        last.index = 0;
    }
    while (last.child && last.index < position) {
        last.child = FirstElement(last.child.next_sibling());
        ++last.index;
    }
    if (!last.child) {
        last.index = -1;
        return 0;
    }
    child = AXMLTreeNode(last.child.internal_object());
    return 1;
}

int32_t AXMLTree::getChildCount(const AXMLTreeNode& node) const {
    if (node.element_ == nullptr) return 0;
    Document::Position& last = document_->positions[node.element_];
    if (last.count < 0) {
        last.count = 0;
        pugi::xml_node child = FirstElement(Element(node.element_).first_child());
        for (; child; child = FirstElement(child.next_sibling()))
            ++last.count;
    }
    return last.count;
}

AString AXMLTree::getAttribute(const AXMLTreeNode& node, std::string_view name) const {
    return Utf8ToAnsi(Element(node.element_).attribute(AnsiToUtf8(name).c_str()).value());
}

AString AXMLTree::getValue(const AXMLTreeNode& node) const {
    return Utf8ToAnsi(TextOf(Element(node.element_)).value());
}

AString AXMLTree::getName(const AXMLTreeNode& node) const {
    return Utf8ToAnsi(Element(node.element_).name());
}

int32_t AXMLTree::addChild(AXMLTreeNode& child, const AXMLTreeNode& parent, std::string_view name,
                           std::string_view text, int32_t /*position*/) {
    const AXMLTreeNode under = parent;  // the caller may pass one handle as both
    pugi::xml_node node = AppendElement(Element(under.element_), name);
    child = AXMLTreeNode(node.internal_object());
    if (!node) return 0;
    const auto known = document_->positions.find(under.element_);
    if (known != document_->positions.end() && known->second.count >= 0) ++known->second.count;
    if (text.empty()) return 1;
    return node.append_child(pugi::node_pcdata).set_value(AnsiToUtf8(text).c_str()) ? 1 : 0;
}

int32_t AXMLTree::setAttribute(const AXMLTreeNode& node, std::string_view name,
                               std::string_view value) {
    const std::string attributeName = AnsiToUtf8(name);
    pugi::xml_node element = Element(node.element_);
    pugi::xml_attribute attribute = element.attribute(attributeName.c_str());
    if (!attribute) attribute = element.append_attribute(attributeName.c_str());
    return attribute.set_value(AnsiToUtf8(value).c_str()) ? 1 : 0;
}

int32_t AEnXMLTree::loadFromFileEn(const AFilePath& path, int32_t /*flag*/) {
    std::optional<std::string> bytes = ReadFile(path);
    wasEncoded_ = bytes && IsGzip(*bytes);
    if (wasEncoded_) bytes = InflateGzip(*bytes, kMostTextBytes);
    return LoadBytes(bytes ? std::string_view(*bytes) : std::string_view());
}
