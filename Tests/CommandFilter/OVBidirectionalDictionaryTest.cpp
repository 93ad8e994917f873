#include "CommandFilter/OVBidirectionalDictionary.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace orvan {
namespace {

using Pairs = std::set<std::pair<std::string, std::string>>;

std::set<std::string> all(OVBidirectionalDictionary::Enumerator enumerator) {
    std::set<std::string> texts;
    while (const auto text = enumerator.next())
        texts.insert(std::string(*text));
    return texts;
}

// Every way of asking tells the same pairs.
void expectPairs(const OVBidirectionalDictionary& dictionary, const Pairs& expected) {
    Pairs forward;
    for (const std::string& key : all(dictionary.keyEnumerator()))
        forward.emplace(key, *dictionary.objectForKey(key));
    Pairs inverse;
    for (const std::string& object : all(dictionary.objectEnumerator()))
        inverse.emplace(*dictionary.keyForObject(object), object);
    EXPECT_EQ(forward, expected);
    EXPECT_EQ(inverse, expected);
    EXPECT_EQ(dictionary.count(), expected.size());
}

TEST(OVBidirectionalDictionary, KeepsOnePairAKeyAndAnObject) {
    // What is stored, keys and objects, and what is there then.
    const std::pair<std::vector<std::pair<const char*, const char*>>, Pairs> cases[] = {
        {{}, {}},
        {{{"a", "1"}, {"a", "1"}}, {{"a", "1"}}},
        {{{"a", "1"}, {"a", "2"}}, {{"a", "2"}}},
        {{{"a", "1"}, {"b", "1"}}, {{"b", "1"}}},
        {{{"a", "1"}, {"b", "2"}, {"a", "2"}}, {{"a", "2"}}},
        {{{"a", "b"}, {"b", "a"}}, {{"a", "b"}, {"b", "a"}}},
        {{{"", ""}}, {{"", ""}}},
    };
    for (const auto& [stores, expected] : cases) {
        OVBidirectionalDictionary dictionary;
        for (const auto& [key, object] : stores)
            dictionary.setObjectForKey(object, key);
        expectPairs(dictionary, expected);
    }
}

TEST(OVBidirectionalDictionary, RemovesBothHalves) {
    OVBidirectionalDictionary dictionary(2);
    for (int i = 0; i < 100; ++i)
        dictionary.setObjectForKey("object" + std::to_string(i), "key" + std::to_string(i));
    for (int i = 1; i < 100; ++i) {
        if (i % 2 == 0)
            dictionary.removeObjectForKey("key" + std::to_string(i));
        else
            dictionary.removeKeyForObject("object" + std::to_string(i));
    }
    dictionary.removeObjectForKey("object0");
    dictionary.removeKeyForObject("key0");
    dictionary.setObjectForKey(std::nullopt, "absent");
    dictionary.setObjectForKey("absent", std::nullopt);
    expectPairs(dictionary, {{"key0", "object0"}});
    // Its own text, which goes with the pair that is replaced.
    dictionary.setObjectForKey(*dictionary.keyForObject("object0"), *dictionary.objectForKey("key0"));
    expectPairs(dictionary, {{"key0", "object0"}, {"object0", "key0"}});
    dictionary.setObjectForKey("object0", *dictionary.keyForObject("object0"));
    dictionary.removeObjectForKey(*dictionary.keyForObject("key0"));
    expectPairs(dictionary, {{"key0", "object0"}});
}

} // namespace
} // namespace orvan
