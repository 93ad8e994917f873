#include "Formats/ExpatParser.h"
#include "Formats/SingleByteEncoding.h"
#include "Formats/XMLDocument.h"

#include <strings.h>

#include <algorithm>
#include <climits>
#include <span>

namespace platform {

// Receives expat's events in document order, which is also the order in which nodes and texts are stored.
class XMLDocumentBuilder {
public:
    XMLDocumentBuilder(XML_Parser parser, std::size_t size, std::string_view charset)
        : parser_(parser), result_(new XMLDocument), document_(*result_) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, &XMLDocumentBuilder::onStart, &XMLDocumentBuilder::onEnd);
        XML_SetCharacterDataHandler(parser, &XMLDocumentBuilder::onText);
        XML_SetCommentHandler(parser, &XMLDocumentBuilder::onComment);
        XML_SetXmlDeclHandler(parser, &XMLDocumentBuilder::onDeclaration);
        XML_SetStartDoctypeDeclHandler(parser, &XMLDocumentBuilder::onDoctype);
        XML_SetSkippedEntityHandler(parser, &XMLDocumentBuilder::onSkippedEntity);
        XML_SetUnknownEncodingHandler(parser, &XMLDocumentBuilder::onEncoding, this);
        noteEncoding(charset);
        document_.nodes_.reserve(size / kBytesOfNode);
        document_.names_.reserve(size / 2);
        document_.text_.reserve(size / 4);
    }

    std::shared_ptr<const XMLDocument> build(std::string_view bytes, std::string& error) {
        // XML 1.0 appendix F.1: UTF-16, with a byte order mark or without
        if (bytes.substr(0, 2).find_first_of(std::string_view("\0\xFE\xFF", 3)) != std::string_view::npos)
            isUTF8_ = false;
        const auto status = XML_Parse(parser_, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
        if (status != XML_STATUS_OK && error_.empty()) fail(XML_ErrorString(XML_GetErrorCode(parser_)));
        if (!error_.empty()) {
            error = std::move(error_);
            return nullptr;
        }
        linkChildren();
        return std::move(result_);
    }

private:
    static_assert(XMLDocument::kMaximumSize <= INT_MAX / 4, "texts are addressed by 32 bits");
    // About what a node takes in a printer's status, which is indented.
    static constexpr std::size_t kBytesOfNode = 24;

    static XMLDocumentBuilder& of(void* self) { return *static_cast<XMLDocumentBuilder*>(self); }
    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        of(self).start(name, attributes);
    }
    static void XMLCALL onEnd(void* self, const XML_Char*) { of(self).end(); }
    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        of(self).text({text, static_cast<std::size_t>(length)});
    }
    static void XMLCALL onComment(void* self, const XML_Char* text) { of(self).comment(text); }
    static void XMLCALL onDeclaration(void* self, const XML_Char*, const XML_Char* encoding, int) {
        if (encoding != nullptr) of(self).noteEncoding(encoding);
    }
    static void XMLCALL onDoctype(
        void* self, const XML_Char*, const XML_Char*, const XML_Char*, int hasInternalSubset) {
        if (hasInternalSubset != 0)
            of(self).fail("the document type has an internal subset, which is not allowed");
    }
    // Expat knows a few encodings, and asks for the others.
    static int XMLCALL onEncoding(void* self, const XML_Char* name, XML_Encoding* encoding) {
        encoding->data = nullptr;
        encoding->convert = nullptr;
        encoding->release = nullptr;
        if (fillSingleByteEncoding(name, std::span(encoding->map))) return XML_STATUS_OK;
        of(self).fail("the encoding \"" + std::string(name) + "\" is not known");
        return XML_STATUS_ERROR;
    }
    static void XMLCALL onSkippedEntity(void* self, const XML_Char* name, int) {
        of(self).fail("the entity \"" + std::string(name) + "\" is not defined");
    }

    bool failed() const { return !error_.empty(); }

    void fail(std::string_view reason) {
        if (failed()) return;
        error_ = expatPosition(parser_) + ": ";
        error_ += reason;
        XML_StopParser(parser_, XML_FALSE);
    }

    void noteEncoding(std::string_view name) {
        if (!name.empty() && strcasecmp(std::string(name).c_str(), "UTF-8") != 0) isUTF8_ = false;
    }

    // Of the characters up to the space, a document can have only white space (XML 1.0 section 2.2).
    static bool isWhiteSpace(char c) { return static_cast<unsigned char>(c) <= ' '; }
    // In other encodings than UTF-8, expat takes three characters in names that XML 1.0 section 2.3 does not:
    // U+00AA, U+00B5 and U+00BA.
    bool isName(std::string_view name) const {
        return isUTF8_ || (name.find("\xC2\xAA") == std::string_view::npos &&
                              name.find("\xC2\xB5") == std::string_view::npos &&
                              name.find("\xC2\xBA") == std::string_view::npos);
    }
    static std::uint32_t small(std::size_t value) { return static_cast<std::uint32_t>(value); }

    XMLNode& addNode(XMLNode::Kind kind) {
        XMLNode& node = document_.nodes_.emplace_back();
        node.document_ = &document_;
        node.kind_ = kind;
        node.end_ = small(document_.nodes_.size());
        node.textStart_ = small(document_.text_.size());
        if (!open_.empty()) {
            node.parent_ = open_.back();
            ++document_.nodes_[node.parent_].childCount_;
        }
        return node;
    }

    void start(std::string_view name, const XML_Char** attributes) {
        if (failed()) return;
        endText();
        if (open_.size() >= XMLDocument::kMaximumDepth) return fail("elements nest too deep");
        if (!isName(name)) return fail(XML_ErrorString(XML_ERROR_INVALID_TOKEN));
        XMLNode& node = addNode(XMLNode::Kind::element);
        open_.push_back(small(document_.nodes_.size() - 1));
        node.nameStart_ = small(document_.names_.size());
        node.nameLength_ = small(name.size());
        document_.names_ += name;
        node.firstAttribute_ = small(document_.attributes_.size());
        for (const XML_Char** one = attributes; *one != nullptr; one += 2)
            ++node.attributeCount_;
        if (node.attributeCount_ > XMLDocument::kMaximumAttributes)
            return fail("an element has too many attributes");
        addAttributes(attributes, false);
        const std::size_t count = document_.attributes_.size() - node.firstAttribute_;
        addAttributes(attributes, true);
        node.declarationCount_ = node.attributeCount_ - small(count);
        node.attributeCount_ = small(count);
    }

    // The declarations of namespaces, or all others.
    void addAttributes(const XML_Char** attributes, bool declarations) {
        for (; attributes[0] != nullptr; attributes += 2) {
            const std::string_view name = attributes[0];
            const std::string_view value = attributes[1];
            if ((name == "xmlns" || name.starts_with("xmlns:")) != declarations) continue;
            if (!isName(name)) return fail(XML_ErrorString(XML_ERROR_INVALID_TOKEN));
            document_.attributes_.push_back(
                {small(document_.names_.size()), small(name.size()), small(value.size())});
            document_.names_.append(name).append(value);
        }
    }

    void end() {
        if (failed()) return;
        endText();
        XMLNode& node = document_.nodes_[open_.back()];
        node.end_ = small(document_.nodes_.size());
        node.textLength_ = small(document_.text_.size()) - node.textStart_;
        open_.pop_back();
    }

    // Whether the characters make a node is known when the last of them is there.
    void text(std::string_view text) {
        if (failed()) return;
        textIsBlank_ = textIsBlank_ && std::ranges::all_of(text, isWhiteSpace);
        document_.text_ += text;
    }

    void endText() {
        std::string& texts = document_.text_;
        if (texts.size() == textStart_) return;
        if (textIsBlank_) {
            texts.resize(textStart_);
            return;
        }
        XMLNode& node = addNode(XMLNode::Kind::text);
        node.textStart_ = small(textStart_);
        node.textLength_ = small(texts.size() - textStart_);
        textStart_ = texts.size();
        textIsBlank_ = true;
    }

    void comment(std::string_view text) {
        if (failed() || open_.empty()) return;
        endText();
        XMLNode& node = addNode(XMLNode::Kind::comment);
        node.nameStart_ = small(document_.names_.size());
        node.nameLength_ = small(text.size());
        document_.names_ += text;
    }

    // Each node is the child of one element at most, so that this takes as many steps as there are nodes.
    void linkChildren() {
        std::vector<XMLNode>& nodes = document_.nodes_;
        document_.children_.reserve(nodes.size() - 1);
        for (std::uint32_t i = 0; i < nodes.size(); ++i) {
            nodes[i].firstChild_ = small(document_.children_.size());
            for (std::uint32_t child = i + 1; child < nodes[i].end_; child = nodes[child].end_)
                document_.children_.push_back(child);
        }
    }

    XML_Parser parser_;
    std::shared_ptr<XMLDocument> result_;
    XMLDocument& document_;
    std::string error_;
    std::vector<std::uint32_t> open_; // the elements that are not closed yet
    std::size_t textStart_ = 0; // of the characters that are no node yet, the last of the document's texts
    bool textIsBlank_ = true;
    bool isUTF8_ = true;
};

namespace {

// Whether the document says itself how it is encoded: by its first bytes, or in its declaration (XML 1.0,
// appendix F).
bool namesEncoding(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
        return true;
    if (bytes.substr(0, 2).find('\0') != std::string_view::npos) return true;
    const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    return declaration.starts_with("<?xml") && declaration.find("encoding") != std::string_view::npos;
}

} // namespace

std::shared_ptr<const XMLDocument> XMLDocument::parse(
    std::string_view bytes, Failure& error, const std::string& charset) {
    if (bytes.size() > kMaximumSize) {
        error = "the document has " + std::to_string(bytes.size()) + " bytes; " +
                std::to_string(kMaximumSize) + " are the most that is read";
        return nullptr;
    }
    const std::string encoding = namesEncoding(bytes) ? "" : charset;
    const ExpatParser parser(XML_ParserCreate(encoding.empty() ? nullptr : encoding.c_str()));
    if (!parser) {
        error = "out of memory";
        return nullptr;
    }
    std::string reason;
    auto document = XMLDocumentBuilder(parser.get(), bytes.size(), encoding).build(bytes, reason);
    if (document == nullptr) error = std::move(reason);
    return document;
}

} // namespace platform
