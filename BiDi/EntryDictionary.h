// The entries of a printer's answers by their names. They come by the ten thousand, so they stay where the
// filter's output has them instead of being copied one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

namespace orvan {

// A value type for one thread at a time; copies share the text, which nobody changes.
class EntryDictionary {
public:
    // Both lie in the dictionary's text: valid as long as it or a copy of it. A zero byte follows the value.
    struct Entry {
        std::string_view name;
        std::string_view value;
        bool operator==(const Entry&) const = default;
    };

    EntryDictionary() = default;
    EntryDictionary(std::initializer_list<Entry> entries);

    // The entry of that name, upper and lower case being different; null when there is none. Valid until the
    // next change.
    const Entry* find(std::string_view name) const;

    // Copies both. A name has one value, the last that was set.
    void set(std::string_view name, std::string_view value);

    // In the order in which the names were set first.
    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }

    // The same entries, in any order.
    bool operator==(const EntryDictionary& other) const;

private:
    friend EntryDictionary entriesInTaskOutput(std::string_view output);

    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t number = 0; // of the entry, from 1; 0 is an empty slot
    };

    // Room for so many bytes, which lives as long as the dictionary.
    char* addText(std::size_t size);
    // What the entry refers to is the dictionary's already.
    void insert(const Entry& entry);
    // The slot of the name, or the empty one where it belongs.
    std::size_t slotOf(std::string_view name, std::uint32_t hash) const;
    // Room for so many entries; before the first of them.
    void reserve(std::size_t count);
    // A power of two, above the number of entries.
    void resizeSlots(std::size_t count);

    std::vector<std::shared_ptr<char[]>> texts_;
    std::vector<Entry> entries_;
    std::vector<Slot> slots_; // a power of two of them, or none; never all taken
};

} // namespace orvan
