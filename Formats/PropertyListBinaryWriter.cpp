#include "Formats/PropertyList.h"
#include "Formats/Unicode.h"

#include <algorithm>
#include <bit>
#include <unordered_map>

namespace platform {

namespace {

// Only short strings are shared, and only in trees of up to a mebivalue, so that what is written stays within
// the reader's budgets.
constexpr std::size_t kLongestShared = 32;
constexpr std::size_t kLargestWithSharing = std::size_t{1} << 20U;

// The least number of bytes, of the sizes that integers have here, that a number fits into.
std::size_t bytesFor(std::uint64_t value) {
    if (value <= 0xFF) return 1;
    if (value <= 0xFFFF) return 2;
    if (value <= 0xFFFFFFFF) return 4;
    return 8;
}

void appendUnsigned(std::string& out, std::uint64_t value, std::size_t size) {
    for (std::size_t left = size; left > 0; --left)
        out.push_back(static_cast<char>((value >> (8 * (left - 1))) & 0xFFU));
}

} // namespace

// Numbers all objects first, since the size of a reference depends on how many there are.
class PropertyListBinaryWriter {
public:
    std::string write(const PropertyList& root) {
        number(root);
        referenceSize_ = bytesFor(objects_.size() - 1);
        out_ = "bplist00";
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const Object& object : objects_) {
            offsets.push_back(out_.size());
            firstReference_ = object.firstReference;
            if (object.string != nullptr)
                write(*object.string);
            else
                std::visit([this](const auto& held) { write(held); }, object.value->value_);
        }
        writeTable(offsets);
        return std::move(out_);
    }

private:
    struct Object {
        const std::string* string = nullptr; // a string or key, or else
        const PropertyList* value = nullptr;
        std::size_t firstReference = 0; // of a container, in references_
    };

    // Each answers the number of the object.
    std::uint64_t number(const PropertyList& value) {
        if (const std::string* text = value.asString()) return number(*text);
        const std::size_t object = objects_.size();
        const std::size_t first = references_.size();
        objects_.push_back({.value = &value, .firstReference = first});
        if (const PropertyList::List* list = value.asList()) {
            references_.resize(first + list->size());
            std::size_t at = first;
            for (const PropertyList& item : *list)
                references_[at++] = number(item);
        } else if (const PropertyList::Dictionary* dictionary = value.asDictionary()) {
            references_.resize(first + 2 * dictionary->size());
            std::size_t at = first;
            for (const auto& [key, item] : *dictionary) {
                const std::uint64_t keyNumber = number(key);
                const std::uint64_t itemNumber = number(item);
                references_[at + dictionary->size()] = itemNumber;
                references_[at++] = keyNumber;
            }
        }
        return object;
    }
    std::uint64_t number(const std::string& text) {
        const std::size_t next = objects_.size();
        if (text.size() <= kLongestShared && references_.size() <= kLargestWithSharing) {
            const auto [entry, isNew] = shared_.try_emplace(text, next);
            if (!isNew) return entry->second;
        }
        objects_.push_back({.string = &text});
        return next;
    }

    void writeHead(unsigned kind, std::size_t count) {
        constexpr std::size_t kCountFollows = 0x0F;
        out_.push_back(static_cast<char>((kind << 4U) | std::min(count, kCountFollows)));
        if (count >= kCountFollows) write(static_cast<std::int64_t>(count));
    }

    void write(const std::string& text) {
        if (findNonASCII(text) == std::string::npos) {
            writeHead(0x5, text.size());
            out_ += text;
            return;
        }
        const std::string units = utf16FromUTF8(text);
        writeHead(0x6, units.size() / 2);
        out_ += units;
    }
    void write(std::int64_t value) {
        const auto bits = static_cast<std::uint64_t>(value);
        const std::size_t size = bytesFor(bits); // eight for the negative ones
        out_.push_back(static_cast<char>(0x10 | std::countr_zero(size)));
        appendUnsigned(out_, bits, size);
    }
    void write(std::uint64_t value) {
        out_.push_back('\x14');
        appendUnsigned(out_, 0, 8);
        appendUnsigned(out_, value, 8);
    }
    void write(double value) {
        out_.push_back('\x23');
        appendUnsigned(out_, std::bit_cast<std::uint64_t>(value), 8);
    }
    void write(bool value) { out_.push_back(value ? '\x09' : '\x08'); }
    void write(PropertyList::Date date) {
        out_.push_back('\x33');
        appendUnsigned(out_, std::bit_cast<std::uint64_t>(date.seconds), 8);
    }
    void write(const PropertyList::Data& data) {
        writeHead(0x4, data.size());
        out_.append(data.begin(), data.end());
    }
    void write(const PropertyList::List& list) {
        writeHead(0xA, list.size());
        writeReferences(list.size());
    }
    void write(const PropertyList::DictionaryBox& box) {
        const PropertyList::Dictionary& dictionary = *box.get();
        writeHead(0xD, dictionary.size());
        writeReferences(2 * dictionary.size());
    }
    void writeReferences(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            appendUnsigned(out_, references_[firstReference_ + i], referenceSize_);
    }

    void writeTable(const std::vector<std::size_t>& offsets) {
        const std::size_t start = out_.size();
        const std::size_t offsetSize = bytesFor(start);
        for (const std::size_t offset : offsets)
            appendUnsigned(out_, offset, offsetSize);
        out_.append(6, '\0');
        out_.push_back(static_cast<char>(offsetSize));
        out_.push_back(static_cast<char>(referenceSize_));
        appendUnsigned(out_, offsets.size(), 8);
        appendUnsigned(out_, 0, 8); // the root
        appendUnsigned(out_, start, 8);
    }

    std::vector<Object> objects_;
    std::vector<std::uint64_t> references_;
    std::unordered_map<std::string_view, std::uint64_t> shared_;
    std::size_t referenceSize_ = 1;
    std::size_t firstReference_ = 0;
    std::string out_;
};

std::string PropertyList::writeBinary() const {
    return PropertyListBinaryWriter().write(*this);
}

} // namespace platform
