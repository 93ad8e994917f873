#include "CommandFilter/OVBidirectionalDictionary.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

namespace orvan {

namespace {

template <class Word>
std::uint64_t wordAt(std::string_view text, std::size_t position) {
    Word word = 0;
    std::memcpy(&word, text.data() + position, sizeof word);
    return word;
}

// With the multiplier of 64-bit Fibonacci hashing.
std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
    constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15U;
    constexpr int kRotation = 29;
    return std::rotl((hash ^ word) * kMultiplier, kRotation);
}

} // namespace

// Eight bytes at a time; the last eight may overlap those before them.
std::size_t OVBidirectionalDictionary::Hash::operator()(std::string_view text) const {
    constexpr std::size_t kWide = sizeof(std::uint64_t);
    std::uint64_t hash = text.size();
    if (text.size() < kWide) {
        for (std::size_t i = 0; i < text.size(); ++i)
            hash = mix(hash, wordAt<std::uint8_t>(text, i));
        return hash;
    }
    const std::size_t last = text.size() - kWide;
    for (std::size_t i = 0; i < last; i += kWide)
        hash = mix(hash, wordAt<std::uint64_t>(text, i));
    return mix(hash, wordAt<std::uint64_t>(text, last));
}

OVBidirectionalDictionary::OVBidirectionalDictionary(std::size_t capacity) {
    _dictionary.reserve(capacity);
    _inverse.reserve(capacity);
}

const OVBidirectionalDictionary::Pair* OVBidirectionalDictionary::find(
    const Index& index, std::string_view text) {
    const auto found = index.find(text);
    return found != index.end() ? found->second.get() : nullptr;
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
    if (key) remove(find(_dictionary, *key));
}

void OVBidirectionalDictionary::removeKeyForObject(Text object) {
    if (object) remove(find(_inverse, *object));
}

void OVBidirectionalDictionary::remove(const Pair* pair) {
    if (pair == nullptr) return;
    // The other index keeps the pair, and with it the text that is looked for.
    _dictionary.erase(pair->key);
    _inverse.erase(_inverse.find(pair->object));
}

} // namespace orvan
