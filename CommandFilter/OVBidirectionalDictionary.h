// A dictionary (OV: the prefix of the printer's side) that answers the reverse question as well: which key
// holds an object.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orvan {

// Pairs of a key and an object, both texts. Each key and each object occurs in one pair: storing a pair
// removes the pair that held the key and the pair that held the object, so that count and both enumerations
// always agree.
//
// An absent key or object (nullopt) is never stored and never found. Texts answered belong to the dictionary
// and last as long as their pair. Look-ups allocate nothing. One thread at a time while it is changed; an
// instance that changes no more may be read by several.
class OVBidirectionalDictionary {
public:
    using Text = std::optional<std::string_view>;

    // Walks the keys or the objects, in no particular order, and not in step with each other. Good until the
    // dictionary changes.
    class Enumerator;

    OVBidirectionalDictionary() : OVBidirectionalDictionary(0) {}
    // Room for this many pairs is made at once; there is no upper bound.
    explicit OVBidirectionalDictionary(std::size_t capacity);

    std::size_t count() const { return _dictionary.size(); }
    // Null when there is none.
    const std::string* objectForKey(Text key) const {
        const Pair* const pair = key ? find(_dictionary, *key) : nullptr;
        return pair != nullptr ? &pair->object : nullptr;
    }
    const std::string* keyForObject(Text object) const {
        const Pair* const pair = object ? find(_inverse, *object) : nullptr;
        return pair != nullptr ? &pair->key : nullptr;
    }

    // Of the given vocabulary; nothing here calls them.
    Enumerator keyEnumerator() const;
    Enumerator objectEnumerator() const;

    // Stores copies of the two.
    void setObjectForKey(Text object, Text key);
    void removeObjectForKey(Text key);
    void removeKeyForObject(Text object);

private:
    struct Pair {
        std::string key;
        std::string object;
    };
    // Keywords are short, so that the standard library's hash costs more than the rest of a look-up. Not
    // noexcept: then the map keeps each hash beside its key.
    struct Hash {
        std::size_t operator()(std::string_view text) const;
    };
    // By views of the pair's own texts.
    using Index = std::unordered_map<std::string_view, std::shared_ptr<const Pair>, Hash>;

    static const Pair* find(const Index& index, std::string_view text);
    void remove(const Pair* pair);

    Index _dictionary;
    Index _inverse;
};

class OVBidirectionalDictionary::Enumerator {
public:
    // The next text; nothing at the end, and from then on.
    Text next();

private:
    friend class OVBidirectionalDictionary;
    explicit Enumerator(const Index& index) : next_(index.begin()), end_(index.end()) {}

    Index::const_iterator next_;
    Index::const_iterator end_;
};

} // namespace orvan
