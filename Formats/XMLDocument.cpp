#include "Formats/XMLDocument.h"

#include "Formats/TextEncoding.h"

#include <utility>

namespace platform {

std::string_view XMLNode::name() const {
    if (kind_ != Kind::element) return {};
    return std::string_view(document_->names_).substr(nameStart_, nameLength_);
}

std::string_view XMLNode::stringValue() const {
    if (kind_ == Kind::comment) return std::string_view(document_->names_).substr(nameStart_, nameLength_);
    return std::string_view(document_->text_).substr(textStart_, textLength_);
}

XMLAttribute XMLNode::attributeAtIndex(std::size_t index) const {
    return writtenAttribute(index);
}

XMLAttribute XMLNode::writtenAttribute(std::size_t index) const {
    const XMLDocument::Attribute& attribute = document_->attributes_[firstAttribute_ + index];
    const std::string_view names = document_->names_;
    return {names.substr(attribute.nameStart, attribute.nameLength),
        names.substr(attribute.nameStart + attribute.nameLength, attribute.valueLength)};
}

std::optional<std::string_view> XMLNode::attributeForName(std::string_view name) const {
    for (std::size_t i = 0; i < attributeCount_; ++i) {
        const XMLAttribute attribute = attributeAtIndex(i);
        if (attribute.name == name) return attribute.value;
    }
    return std::nullopt;
}

const XMLNode* XMLNode::childAtIndex(std::size_t index) const {
    if (index >= childCount_) return nullptr;
    return &document_->nodes_[document_->children_[firstChild_ + index]];
}

const XMLNode* XMLNode::parent() const {
    return this != document_->rootElement() ? &document_->nodes_[parent_] : nullptr;
}

const XMLNode* XMLNode::nextSibling() const {
    const XMLNode* container = parent();
    return container != nullptr && end_ < container->end_ ? &document_->nodes_[end_] : nullptr;
}

const XMLNode* XMLNode::childNamed(std::string_view name) const {
    for (const XMLNode* child = firstChild(); child != nullptr; child = child->nextSibling()) {
        if (child->isElement() && child->name() == name) return child;
    }
    return nullptr;
}

const XMLNode* XMLNode::nextNode() const {
    const XMLNode* next = this + 1;
    return next != document_->nodes_.data() + document_->nodes_.size() ? next : nullptr;
}

namespace {

void appendEscaped(std::string& out, std::string_view text, bool inAttribute) {
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>' && !inAttribute)
            out += "&gt;";
        else if (c == '"' && inAttribute)
            out += "&quot;";
        else if (c == '\r' || (inAttribute && (c == '\n' || c == '\t')))
            out.append("&#").append(std::to_string(static_cast<int>(c))).append(";");
        else
            out += c;
    }
}

} // namespace

void XMLNode::appendStart(std::string& out) const {
    switch (kind_) {
    case Kind::text:
        return appendEscaped(out, stringValue(), false);
    case Kind::comment:
        out.append("<!--").append(stringValue()).append("-->");
        return;
    case Kind::element:
        out.append("<").append(name());
        for (std::size_t i = 0; i < std::size_t{attributeCount_} + declarationCount_; ++i) {
            const XMLAttribute attribute = writtenAttribute(i);
            out.append(" ").append(attribute.name).append("=\"");
            appendEscaped(out, attribute.value, true);
            out += '"';
        }
        out += childCount_ == 0 ? "/>" : ">";
    }
}

std::string XMLNode::xmlText(std::size_t maximum) const {
    std::string out;
    const XMLNode* node = this;
    while (true) {
        if (out.size() > maximum) return std::string(prefixOfUTF8(out, maximum));
        node->appendStart(out);
        if (node->childCount() != 0) {
            node = node->firstChild();
            continue;
        }
        // Up to where there is something to the right, closing elements on the way.
        while (node != this && node->nextSibling() == nullptr) {
            node = node->parent();
            out.append("</").append(node->name()).append(">");
        }
        if (node == this) return std::string(prefixOfUTF8(out, maximum));
        node = node->nextSibling();
    }
}

} // namespace platform
