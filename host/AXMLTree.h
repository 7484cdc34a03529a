#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/AFilePath.h"
#include "host/AString.h"
#include "host/WriterId.h"

/// A handle to one element of a document. Copies refer to the same element; a handle lives as long
/// as its document. A default-constructed one refers to nothing: it has no children, and its
/// texts are empty.
class AXMLTreeNode {
  public:
    AXMLTreeNode() = default;

  private:
    friend class AXMLTree;
    explicit AXMLTreeNode(void* element) : element_(element) {}
    void* element_ = nullptr;
};

/// An XML document. Texts go in and out in the host's code page. Operations answer 1 and 0;
/// a failed load leaves the document with no root.
class AXMLTree {
  public:
    /// A new document with one root element of that name.
    explicit AXMLTree(std::string_view rootName);
    ~AXMLTree();
    AXMLTree(const AXMLTree&) = delete;
    AXMLTree& operator=(const AXMLTree&) = delete;

    /// Reads a plain XML file. `flag` is always 1.
    int32_t loadFromFile(const AFilePath& path, int32_t flag);
    /// Reads XML text in memory.
    int32_t loadXML(std::string_view text, int32_t flag);
    /// The system's number for why the last file could not be read; 0 when it could, or what it
    /// holds is at fault.
    int SystemError() const { return systemError_; }
    /// Writes the document as UTF-8 XML. What was loaded keeps its comments, blanks and order.
    /// The file is replaced as a whole, see ReplaceFileBytes: a failed save leaves the old one, and
    /// `systemError`, where given, receives the system's number for it, 0 where it gave none.
    int32_t saveToFile(const AFilePath& path, WriterId writer = {},
                       int* systemError = nullptr) const;

    int32_t getRootNode(AXMLTreeNode& root) const;
    int32_t getChild(std::string_view name, const AXMLTreeNode& parent, AXMLTreeNode& child) const;
    int32_t getChild(int32_t position, const AXMLTreeNode& parent, AXMLTreeNode& child) const;
    int32_t getChildCount(const AXMLTreeNode& node) const;
    /// "" when absent.
    AString getAttribute(const AXMLTreeNode& node, std::string_view name) const;
    /// The element's first text or CDATA node, untrimmed; "" when none.
    AString getValue(const AXMLTreeNode& node) const;
    AString getName(const AXMLTreeNode& node) const;
    /// Appends an element under `parent` (`position` is always -1) and lets `child` refer to it.
    int32_t addChild(AXMLTreeNode& child, const AXMLTreeNode& parent, std::string_view name,
                     std::string_view text, int32_t position);
    int32_t setAttribute(const AXMLTreeNode& node, std::string_view name, std::string_view value);

  protected:
    struct Document;
    int32_t LoadBytes(std::string_view bytes);
    /// The whole file, noting the system's number when it cannot be read.
    std::optional<std::string> ReadFile(const AFilePath& path);

  private:
    std::unique_ptr<Document> document_;
    int systemError_ = 0;
};

/// A document that can also be read in encoded form: gzip-compressed XML.
class AEnXMLTree : public AXMLTree {
  public:
    using AXMLTree::AXMLTree;
    /// Reads a gzip-compressed or a plain XML file. A damaged gzip stream is a failed load.
    int32_t loadFromFileEn(const AFilePath& path, int32_t flag);
    /// Whether the file that loadFromFileEn read last was compressed.
    bool wasEncoded() const { return wasEncoded_; }

  private:
    bool wasEncoded_ = false;
};
