#include "Common/Utilities/XMLLookups.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

namespace orvan {
namespace {

using Document = std::shared_ptr<const platform::XMLDocument>;

// An element's attribute "id", which the tests know it by.
std::string idOf(const platform::XMLNode* node) {
    return node != nullptr ? std::string(node->attributeForName("id").value_or("?")) : "none";
}

TEST(XMLLookups, FindNodesByNameAndByAttributeValue) {
    const Document document = platform::XMLDocument::parse(
        "<status id='1'><tray id='2' kind='upper'>A<size id='3'>4</size></tray>"
        "<status id='4'><tray id='5' at='top' kind='x'/><tray id='6' other='top'>B</tray></status></status>");
    ASSERT_NE(document, nullptr);
    const platform::XMLNode* const root = document->rootElement();
    const platform::XMLNode* const inner = root->childNamed("status");
    const std::tuple<const platform::XMLNode*, const char*, const char*, const char*> byName[] = {
        {root, "status", "4", "B"},
        {inner, "status", "none", "none"},
        {root, "tray", "2", "A4"},
        {root, "Tray", "none", "none"},
        {root->childNamed("tray"), "tray", "5", ""},
        {nullptr, "tray", "none", "none"},
    };
    for (const auto& [start, name, found, value] : byName) {
        EXPECT_EQ(idOf(XMLTreeFind(start, name)), found) << name;
        EXPECT_EQ(GetOVGValue(start, name).value_or("none"), value) << name;
    }
    const std::pair<const char*, const char*> byValue[] = {
        {"1", "1"},
        {"top", "5"},
        {"upper", "2"},
        {"to", "none"},
    };
    for (const auto& [value, found] : byValue)
        EXPECT_EQ(idOf(XMLTreeFindWithName(root, value)), found) << value;
    EXPECT_EQ(XMLTreeFindWithName(inner, "upper"), nullptr);
    EXPECT_EQ(XMLTreeFindWithName(nullptr, "top"), nullptr);
}

TEST(XMLLookups, ReadPropertyValues) {
    const std::pair<const char*, const char*> cases[] = {
        {"<p><name>PageSize</name><value>Letter</value></p>", "Letter"},
        {"<p><a>1</a><b>2</b><c>3</c></p>", "2"},
        {"<p><a>1</a></p>", "1"},
        {"<p><a>1</a><b><deep>2</deep></b></p>", "deep"},
        {"<p><a>1</a><b/></p>", ""},
        {"<p>text</p>", ""},
    };
    for (const auto& [xml, value] : cases) {
        const Document document = platform::XMLDocument::parse(xml);
        ASSERT_NE(document, nullptr) << xml;
        EXPECT_EQ(XMLGetPropertyValue(document->rootElement()), value) << xml;
    }
    EXPECT_EQ(XMLGetPropertyValue(nullptr), "");
}

TEST(XMLLookups, TidyLabels) {
    const std::pair<const char*, const char*> cases[] = {
        {"Paper Type:", "Paper Type"},
        {"Paper", "Pape"},
        {"Papier\xEF\xBC\x9A", "Papier"},
        {"Papier\xFF", "Papier"},
        {":", ""},
        {"", ""},
    };
    for (const auto& [label, tidied] : cases)
        EXPECT_EQ(removeColonFromString(label), tidied) << label;
}

} // namespace
} // namespace orvan
