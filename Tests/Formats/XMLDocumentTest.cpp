#include "Formats/XMLDocument.h"
#include "Tests/Formats/Repeated.h"

#include <gtest/gtest.h>

using namespace platform;
using orvan::repeated;

TEST(XMLDocument, treeIsInDocumentOrder) {
    const std::string bytes =
        "<?xml version='1.0'?><!DOCTYPE r SYSTEM 'http://dtd.example/r.dtd'><!-- out -->\n"
        "<r z='1' a='x &amp; \"y\"' ns:b=''>\n  <first/>\n  one &lt;<![CDATA[ <two>]]>"
        "<?pi x?> &#233;<!-- c -->three<s><t>four</t> \t\n</s>\n</r><!-- out -->";
    platform::Failure error;
    const auto document = XMLDocument::parse(bytes, error);
    ASSERT_NE(document, nullptr) << error.value_or("");
    const XMLNode* root = document->rootElement();

    EXPECT_EQ(root->name(), "r");
    EXPECT_EQ(root->parent(), nullptr);
    EXPECT_EQ(root->nextSibling(), nullptr);
    ASSERT_EQ(root->attributeCount(), 3U);
    EXPECT_EQ(root->attributeAtIndex(0).name, "z");
    EXPECT_EQ(root->attributeAtIndex(1).name, "a");
    EXPECT_EQ(root->attributeAtIndex(1).value, "x & \"y\"");
    EXPECT_EQ(root->attributeForName("ns:b"), "");
    EXPECT_EQ(root->attributeForName("b"), std::nullopt);
    EXPECT_EQ(root->stringValue(), "\n  one < <two> \u00E9threefour");

    struct Expected {
        XMLNode::Kind kind;
        std::string_view name;
        std::string_view text;
        std::size_t children;
    };
    const std::vector<Expected> nodes = {
        {XMLNode::Kind::element, "r", root->stringValue(), 5},
        {XMLNode::Kind::element, "first", "", 0},
        {XMLNode::Kind::text, "", "\n  one < <two> \u00E9", 0},
        {XMLNode::Kind::comment, "", " c ", 0},
        {XMLNode::Kind::text, "", "three", 0},
        {XMLNode::Kind::element, "s", "four", 1},
        {XMLNode::Kind::element, "t", "four", 1},
        {XMLNode::Kind::text, "", "four", 0},
    };
    const XMLNode* node = root;
    for (const Expected& expected : nodes) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->kind(), expected.kind);
        EXPECT_EQ(node->name(), expected.name);
        EXPECT_EQ(node->stringValue(), expected.text);
        EXPECT_EQ(node->childCount(), expected.children);
        const XMLNode* child = node->firstChild();
        for (std::size_t i = 0; i < node->childCount(); ++i, child = child->nextSibling()) {
            EXPECT_EQ(node->childAtIndex(i), child);
            EXPECT_EQ(child->parent(), node);
        }
        EXPECT_EQ(child, nullptr);
        node = node->nextNode();
    }
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(root->childNamed("s"), root->childAtIndex(4));
    EXPECT_EQ(root->childNamed("t"), nullptr);
    EXPECT_EQ(root->childAtIndex(5), nullptr);

    const std::string again = "<r z=\"1\" a=\"x &amp; &quot;y&quot;\" ns:b=\"\"><first/>\n  one &lt; "
                              "&lt;two&gt; \u00E9<!-- c -->three"
                              "<s><t>four</t></s></r>";
    EXPECT_EQ(root->xmlText(), again);
    EXPECT_EQ(root->childNamed("s")->firstChild()->xmlText(), "<t>four</t>");
    EXPECT_EQ(XMLDocument::parse(again)->rootElement()->xmlText(), again);
}

TEST(XMLDocument, readsOtherEncodings) {
    for (const std::string& bytes : {std::string("\xEF\xBB\xBF<r>\u00FC</r>"),
             std::string("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xFC</r>"),
             std::string("\xFF\xFE<\0r\0>\0\xFC\0<\0/\0r\0>\0", 18)}) {
        const auto document = XMLDocument::parse(bytes);
        ASSERT_NE(document, nullptr);
        EXPECT_EQ(document->rootElement()->stringValue(), "\u00FC");
    }
}

TEST(XMLDocument, readsSingleByteEncodingsOfDeclarationAndCharset) {
    const struct {
        std::string declared, charset, bytes, text;
    } cases[] = {
        {"ISO-8859-2", "", "\xB1", "\u0105"},
        {"iso-8859-15", "", "\xA4", "\u20AC"},
        {"windows-1252", "", "\x80\x84", "\u20AC\u201E"},
        {"Windows-1251", "", "\xC0", "\u0410"},
        {"KOI8-R", "", "\xC1", "\u0430"},
        {"", "iso-8859-1", "\xFC", "\u00FC"},
        {"", "ISO-8859-7", "\xE1", "\u03B1"},
        {"", "windows-1250", "\xB9", "\u0105"},
        {"", "utf-8", "\u00FC", "\u00FC"},
        {"ISO-8859-1", "utf-8", "\xFC", "\u00FC"}, // the document's own word
        {"UTF-8", "x-other", "\u00FC", "\u00FC"},
    };
    for (const auto& [declared, charset, bytes, text] : cases) {
        const std::string declaration =
            declared.empty() ? "" : "<?xml version='1.0' encoding='" + declared + "'?>";
        platform::Failure error;
        const std::string root = "<r>" + bytes + "</r>";
        const auto document = XMLDocument::parse(declaration + root, error, charset);
        ASSERT_NE(document, nullptr) << declared << charset << error.value_or("");
        EXPECT_EQ(document->rootElement()->stringValue(), text) << declared << charset;
    }
    EXPECT_NE(
        XMLDocument::parse("\xEF\xBB\xBF<r>\u00FC</r>", platform::ignoredFailure(), "iso-8859-2"), nullptr);
}

TEST(XMLDocument, declarationsOfNamespacesAreNoAttributes) {
    const auto document =
        XMLDocument::parse("<r xmlns='a' x='1' xmlns:p='b'><c p:xmlns='2' xmlnsx='3'/></r>");
    ASSERT_NE(document, nullptr);
    const XMLNode* const root = document->rootElement();
    ASSERT_EQ(root->attributeCount(), 1U);
    EXPECT_EQ(root->attributeAtIndex(0).name, "x");
    EXPECT_EQ(root->attributeForName("xmlns"), std::nullopt);
    EXPECT_EQ(root->firstChild()->attributeCount(), 2U);
    EXPECT_EQ(root->xmlText(), "<r x=\"1\" xmlns=\"a\" xmlns:p=\"b\"><c p:xmlns=\"2\" xmlnsx=\"3\"/></r>");
}

TEST(XMLDocument, refusalsSayWhatAndWhere) {
    std::string attributes;
    for (int i = 0; i < 80000; ++i)
        attributes += " a" + std::to_string(i) + "=''";
    for (const auto& [bytes, words] : std::vector<std::pair<std::string, std::string>>{
             {"", "no element"},
             {"<a/><b/>", "line 1, column 5: junk"},
             {"<a>\n<b>\n</a>", "line 3, column 3: mismatched tag"},
             {"<a>\xC0\x80</a>", "not well-formed"},
             {std::string("<a>\0</a>", 8), "not well-formed"},
             {"<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a>&b;</a>", "\"b\" is not defined"},
             {"<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>", "internal subset"},
             {"<!DOCTYPE a [<!ENTITY b 'bbbb'><!ENTITY c '&b;&b;&b;'>]><a>&c;</a>", "internal subset"},
             {"<?xml version='1.0' encoding='x-other'?><a/>",
                 "line 1, column 1: the encoding \"x-other\" is not known"},
             {"<?xml version='1.0' encoding='Shift_JIS'?><a/>", "\"Shift_JIS\" is not known"},
             {"<?xml version='1.0' encoding='windows-1252'?><a>\x81</a>", "not well-formed"},
             {repeated("<a>", 300000), "nest too deep"},
             {"<a" + attributes + "/>", "too many attributes"},
             {"<a>" + std::string(XMLDocument::kMaximumSize, 'x') + "</a>", "1048583 bytes"},
         }) {
        platform::Failure error;
        EXPECT_EQ(XMLDocument::parse(bytes, error), nullptr) << bytes.substr(0, 100);
        EXPECT_NE(error.value_or("").find(words), std::string::npos)
            << bytes.substr(0, 100) << "\nsays: " << error.value_or("") << "\nnot: " << words;
    }
}

TEST(XMLDocument, limitsAreStillRead) {
    std::string attributes;
    for (std::size_t i = 0; i < XMLDocument::kMaximumAttributes; ++i)
        attributes += " a" + std::to_string(i) + "='b'";
    const auto wide = XMLDocument::parse("<a" + attributes + "/>");
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide->rootElement()->attributeForName("a255"), "b");

    const std::size_t depth = XMLDocument::kMaximumDepth;
    const auto deep = XMLDocument::parse(repeated("<a>", depth) + "x" + repeated("</a>", depth));
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(deep->rootElement()->stringValue(), "x");

    const auto large =
        XMLDocument::parse("<a>" + repeated("<b/>", (XMLDocument::kMaximumSize - 7) / 4) + "</a>");
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(large->rootElement()->childCount(), 262142U);
    EXPECT_NE(large->rootElement()->childAtIndex(262141), nullptr);
}
