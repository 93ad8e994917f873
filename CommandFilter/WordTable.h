// Tables of words that are known when the program is built.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace orvan {

template <class Value>
struct WordRow {
    std::string_view key;
    Value value;
};
using WordPair = WordRow<std::string_view>;

// By length first: most words differ in it already.
constexpr bool isBefore(std::string_view a, std::string_view b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

template <class Value, std::size_t count>
constexpr bool hasUniqueKeys(std::array<WordRow<Value>, count> rows) {
    std::ranges::sort(rows, isBefore, &WordRow<Value>::key);
    return std::ranges::adjacent_find(rows, {}, &WordRow<Value>::key) == rows.end();
}

template <std::size_t count>
constexpr bool hasUniqueValues(std::array<WordPair, count> rows) {
    std::ranges::sort(rows, isBefore, &WordPair::value);
    return std::ranges::adjacent_find(rows, {}, &WordPair::value) == rows.end();
}

// The rows in an order in which a word is found soon.
template <class Value, std::size_t count>
constexpr std::array<WordRow<Value>, count> sortedForLookUp(std::array<WordRow<Value>, count> rows) {
    std::ranges::sort(rows, isBefore, &WordRow<Value>::key);
    return rows;
}

// The value of a word in rows that are sorted for look-up. The comparison is exact. Nothing when the word is
// absent or in no row.
template <class Value, std::size_t count>
constexpr std::optional<Value> valueFor(
    const std::array<WordRow<Value>, count>& sortedRows, std::optional<std::string_view> word) {
    if (!word) return std::nullopt;
    const auto row = std::ranges::lower_bound(sortedRows, *word, isBefore, &WordRow<Value>::key);
    return row != sortedRows.end() && row->key == *word ? std::optional(row->value) : std::nullopt;
}

} // namespace orvan
