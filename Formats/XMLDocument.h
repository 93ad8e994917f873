// A document tree: elements with their attributes, text and comments.
//
// A document is read once and never changes, so that several threads may look at it. It owns its nodes:
// nodes, attributes and texts are handed out as borrowed pointers and views that are good as long as the
// document is.
#pragma once

#include "Formats/Failure.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class XMLDocument;

struct XMLAttribute {
    std::string_view name;
    std::string_view value;
};

class XMLNode {
public:
    enum class Kind : std::uint8_t { element, text, comment };

    Kind kind() const { return kind_; }
    bool isElement() const { return kind_ == Kind::element; }

    // An element's name as it is written, prefix included; empty for text and comments, which have none.
    std::string_view name() const;

    // An element's text: that of all text nodes below it, in document order. A text's or a comment's own
    // text.
    std::string_view stringValue() const;

    // In document order, without the declarations of namespaces ("xmlns", "xmlns:..."). Empty for text and
    // comments.
    std::size_t attributeCount() const { return attributeCount_; }
    XMLAttribute attributeAtIndex(std::size_t index) const; // index < attributeCount()
    // The value of the attribute of a name; nothing when there is none.
    std::optional<std::string_view> attributeForName(std::string_view name) const;

    // Text, comments and elements are all children. The look-up by index costs the same for each index.
    std::size_t childCount() const { return childCount_; }
    // Null when there is no such child.
    const XMLNode* childAtIndex(std::size_t index) const;
    const XMLNode* firstChild() const { return childCount_ != 0 ? this + 1 : nullptr; }
    const XMLNode* nextSibling() const;
    // The first child element of a name; null when there is none.
    const XMLNode* childNamed(std::string_view name) const;

    // Null for the root element, which has no siblings either.
    const XMLNode* parent() const;

    // The node that begins next in the document: the first child, or else the next sibling of the node or of
    // the nearest ancestor that has one. Null at the document's end.
    const XMLNode* nextNode() const;

    // The node as XML, as it might have stood in the document: so much of it as fits `maximum` bytes.
    std::string xmlText(std::size_t maximum = std::string::npos) const;

private:
    friend class XMLDocument;
    friend class XMLDocumentBuilder;

    // Of the attributes and, behind them, the declarations.
    XMLAttribute writtenAttribute(std::size_t index) const;
    void appendStart(std::string& out) const;

    const XMLDocument* document_ = nullptr;
    Kind kind_ = Kind::element;
    // Places in the document's vectors and texts. A node's descendants are the nodes from behind it to end_.
    std::uint32_t parent_ = 0;
    std::uint32_t end_ = 0;
    std::uint32_t firstChild_ = 0;
    std::uint32_t childCount_ = 0;
    std::uint32_t firstAttribute_ = 0;
    std::uint32_t attributeCount_ = 0;
    std::uint32_t declarationCount_ = 0; // of namespaces; behind the attributes
    std::uint32_t nameStart_ = 0;        // in names_; for a comment its text
    std::uint32_t nameLength_ = 0;
    std::uint32_t textStart_ = 0; // in text_
    std::uint32_t textLength_ = 0;
};

class XMLDocument {
public:
    // Limits of what is read.
    static constexpr std::size_t kMaximumSize = std::size_t{1} << 20U; // bytes
    static constexpr std::size_t kMaximumDepth = 256;                  // elements
    static constexpr std::size_t kMaximumAttributes = 256; // of one element, declarations among them

    // Reads a document. Null when it is not well-formed, exceeds a limit, is in an encoding that is not
    // known, or has a document type with an internal subset; then `error` says what is
    // wrong and in which line.
    //
    // Known are UTF-8, UTF-16, ASCII and the single-byte encodings of Formats/SingleByteEncoding.h. The
    // charset, which came with the document (in Content-Type, RFC 7303), counts where neither the first bytes
    // nor the XML declaration name one; empty: none came, and the document is UTF-8 then.
    //
    // Contiguous characters, whichever way they are written, are one text node, and none when they are all
    // white space. Processing instructions are passed over. An external document type is never fetched, an
    // entity that it might define is an error in text and stands for nothing in an attribute.
    static std::shared_ptr<const XMLDocument> parse(
        std::string_view bytes, Failure& error = ignoredFailure(), const std::string& charset = {});

    XMLDocument(const XMLDocument&) = delete;
    XMLDocument& operator=(const XMLDocument&) = delete;

    // Never null. Comments outside of the root element are not kept.
    const XMLNode* rootElement() const { return nodes_.data(); }

private:
    friend class XMLNode;
    friend class XMLDocumentBuilder;

    struct Attribute {
        std::uint32_t nameStart = 0; // in names_, the value behind it
        std::uint32_t nameLength = 0;
        std::uint32_t valueLength = 0;
    };

    XMLDocument() = default;

    std::vector<XMLNode> nodes_;          // in document order
    std::vector<std::uint32_t> children_; // the children of each element together
    std::vector<Attribute> attributes_;
    std::string names_; // names, attribute values and comments
    std::string text_;  // the text nodes one after the other, so that an element's text is a piece of it
};

} // namespace platform
