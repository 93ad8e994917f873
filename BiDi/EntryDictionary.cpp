#include "BiDi/EntryDictionary.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace orvan {
namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint32_t hashOf(std::string_view name) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>{}(name));
}

} // namespace

EntryDictionary::EntryDictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries)
        set(entry.name, entry.value);
}

const EntryDictionary::Entry* EntryDictionary::find(std::string_view name) const {
    if (slots_.empty()) return nullptr;
    const Slot& slot = slots_[slotOf(name, hashOf(name))];
    return slot.number != 0 ? &entries_[slot.number - 1] : nullptr;
}

void EntryDictionary::set(std::string_view name, std::string_view value) {
    char* const text = addText(name.size() + value.size() + 1);
    name.copy(text, name.size());
    value.copy(text + name.size(), value.size());
    text[name.size() + value.size()] = '\0';
    insert({{text, name.size()}, {text + name.size(), value.size()}});
}

char* EntryDictionary::addText(std::size_t size) {
    // Not make_shared, which would fill it first.
    return texts_.emplace_back(new char[size]).get();
}

void EntryDictionary::insert(const Entry& entry) {
    if ((entries_.size() + 1) * 4 > slots_.size() * 3) resizeSlots(std::max(kFirstSlots, slots_.size() * 2));
    const std::uint32_t hash = hashOf(entry.name);
    Slot& slot = slots_[slotOf(entry.name, hash)];
    if (slot.number != 0) {
        entries_[slot.number - 1].value = entry.value;
        return;
    }
    entries_.push_back(entry);
    slot = {hash, static_cast<std::uint32_t>(entries_.size())};
}

std::size_t EntryDictionary::slotOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (
        slots_[at].number != 0 && (slots_[at].hash != hash || entries_[slots_[at].number - 1].name != name))
        at = (at + 1) & mask;
    return at;
}

void EntryDictionary::reserve(std::size_t count) {
    if (count == 0) return;
    entries_.reserve(count);
    resizeSlots(std::bit_ceil(count + count / 3 + 1));
}

void EntryDictionary::resizeSlots(std::size_t count) {
    const std::vector<Slot> taken = std::exchange(slots_, std::vector<Slot>(count));
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : taken) {
        if (slot.number == 0) continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].number != 0)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

bool EntryDictionary::operator==(const EntryDictionary& other) const {
    return size() == other.size() && std::all_of(begin(), end(), [&other](const Entry& entry) {
        const Entry* const found = other.find(entry.name);
        return found != nullptr && *found == entry;
    });
}

} // namespace orvan
