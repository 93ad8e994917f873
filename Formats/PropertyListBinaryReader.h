// The reader of the binary form of property lists.
//
// A file is "bplist00", objects, a table of the objects' offsets, and a trailer of 32 bytes. Lists and
// dictionaries refer to objects by number, so that objects may be shared and a file may stand for a tree that
// is larger than it.
#pragma once

#include "Formats/PropertyList.h"

namespace platform {

class PropertyListBinaryReader {
public:
    PropertyListBinaryReader(std::string_view bytes, std::string& error);

    std::optional<PropertyList> read();

private:
    // What an object begins with: its kind, the length or count, and where its contents start.
    struct Head {
        std::uint8_t kind = 0;
        std::uint8_t low = 0;
        std::uint64_t count = 0;
        std::size_t contents = 0;
    };

    // The reading functions answer false after they have failed; the first failure's text stays.
    bool fail(std::string_view reason);
    bool readTrailer();
    bool enter(std::uint64_t object);
    bool readHead(Head& head);
    bool readCount(Head& head);
    bool readObject(PropertyList& value, std::uint64_t object, std::size_t depth);
    bool readSimple(PropertyList& value, const Head& head);
    bool readInteger(PropertyList& value, const Head& head);
    bool readReal(PropertyList& value, const Head& head);
    bool readDate(PropertyList& value, const Head& head);
    bool readData(PropertyList& value, const Head& head);
    bool readString(std::string& text, const Head& head);
    bool readKey(std::string& key, std::uint64_t object);
    bool readContainer(PropertyList& value, const Head& head, std::uint64_t object, std::size_t depth);
    bool readList(PropertyList::List& list, const Head& head, std::size_t depth);
    bool readDictionary(PropertyList::Dictionary& dictionary, const Head& head, std::size_t depth);

    std::uint64_t unsignedAt(std::size_t position, std::size_t size) const;
    std::uint64_t referenceAt(std::size_t contents, std::uint64_t index) const;
    // The contents of an object of `count` units; nothing, after a failure, when they are not all there.
    std::optional<std::string_view> contentsOf(const Head& head, std::size_t unit);
    bool spend(std::uint64_t& budget, std::uint64_t amount, std::string_view what);

    std::string_view bytes_;
    std::string& error_;

    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::size_t tableStart_ = 0; // the objects end here

    std::uint64_t object_ = 0; // the object that is being read
    std::size_t at_ = 0;       // and its offset
    std::vector<bool> open_;   // the containers around it, by number
    std::uint64_t valueBudget_;
    std::uint64_t textBudget_;
};

} // namespace platform
