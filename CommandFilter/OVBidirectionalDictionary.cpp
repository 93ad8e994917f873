#include "CommandFilter/OVBidirectionalDictionary.h"

#include <utility>

namespace orvan {

OVBidirectionalDictionary::OVBidirectionalDictionary(std::size_t capacity) {
    _dictionary.reserve(capacity);
    _inverse.reserve(capacity);
}

const OVBidirectionalDictionary::Pair* OVBidirectionalDictionary::find(const Index& index, Text text) {
    if (!text) return nullptr;
    const auto found = index.find(*text);
    return found != index.end() ? found->second.get() : nullptr;
}

const std::string* OVBidirectionalDictionary::objectForKey(Text key) const {
    const Pair* const pair = find(_dictionary, key);
    return pair != nullptr ? &pair->object : nullptr;
}

const std::string* OVBidirectionalDictionary::keyForObject(Text object) const {
    const Pair* const pair = find(_inverse, object);
    return pair != nullptr ? &pair->key : nullptr;
}

OVBidirectionalDictionary::Enumerator OVBidirectionalDictionary::keyEnumerator() const {
    return Enumerator(_dictionary);
}

OVBidirectionalDictionary::Enumerator OVBidirectionalDictionary::objectEnumerator() const {
    return Enumerator(_inverse);
}

OVBidirectionalDictionary::Text OVBidirectionalDictionary::Enumerator::next() {
    if (next_ == end_) return std::nullopt;
    return (next_++)->first;
}

void OVBidirectionalDictionary::setObjectForKey(Text object, Text key) {
    if (!object || !key) return;
    const auto pair = std::make_shared<const Pair>(Pair{std::string(*key), std::string(*object)});
    removeObjectForKey(pair->key);
    removeKeyForObject(pair->object);
    _dictionary.emplace(pair->key, pair);
    _inverse.emplace(pair->object, pair);
}

void OVBidirectionalDictionary::removeObjectForKey(Text key) {
    remove(find(_dictionary, key));
}

void OVBidirectionalDictionary::removeKeyForObject(Text object) {
    remove(find(_inverse, object));
}

void OVBidirectionalDictionary::remove(const Pair* pair) {
    if (pair == nullptr) return;
    // The other index keeps the pair, and with it the text that is looked for.
    _dictionary.erase(pair->key);
    _inverse.erase(_inverse.find(pair->object));
}

} // namespace orvan
