// The ways through a tree agree with each other, and a tree written as XML reads back as the same.
#include "Formats/XMLDocument.h"

#include <cstdlib>

using platform::XMLDocument;
using platform::XMLNode;

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

void checkNode(const XMLNode& node) {
    const XMLNode* child = node.firstChild();
    std::string text;
    for (std::size_t i = 0; i < node.childCount(); ++i, child = child->nextSibling()) {
        promise(child != nullptr && child == node.childAtIndex(i) && child->parent() == &node);
        if (child->kind() != XMLNode::Kind::comment) text += child->stringValue();
    }
    promise(child == nullptr);
    promise(!node.isElement() || node.stringValue() == text);
    for (std::size_t i = 0; i < node.attributeCount(); ++i)
        promise(node.attributeForName(node.attributeAtIndex(i).name) == node.attributeAtIndex(i).value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    platform::Failure error;
    const auto document = XMLDocument::parse({reinterpret_cast<const char*>(data), size}, error);
    promise((document != nullptr) == !error);
    if (!document) return 0;

    for (const XMLNode* node = document->rootElement(); node != nullptr; node = node->nextNode())
        checkNode(*node);

    const std::string xml = document->rootElement()->xmlText();
    if (xml.size() > XMLDocument::kMaximumSize) return 0;
    const auto again = XMLDocument::parse(xml);
    promise(again != nullptr);
    promise(again->rootElement()->xmlText() == xml);
    return 0;
}
