#include "Formats/PropertyListBinaryReader.h"

#include "Formats/PropertyListDate.h"
#include "Formats/PropertyListReaders.h"
#include "Formats/Unicode.h"

#include <bit>

namespace platform {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

constexpr std::uint8_t kSimple = 0x0;
constexpr std::uint8_t kInteger = 0x1;
constexpr std::uint8_t kReal = 0x2;
constexpr std::uint8_t kDate = 0x3;
constexpr std::uint8_t kData = 0x4;
constexpr std::uint8_t kASCIIString = 0x5;
constexpr std::uint8_t kUTF16String = 0x6;
constexpr std::uint8_t kUTF8String = 0x7;
constexpr std::uint8_t kList = 0xA;
constexpr std::uint8_t kDictionary = 0xD;

// Writers let equal strings share one object; this much sharing is taken for real.
constexpr std::uint64_t kTextAllowance = std::uint64_t{16} << 20U;
constexpr std::uint64_t kTextPerByte = 32;

} // namespace

PropertyListBinaryReader::PropertyListBinaryReader(std::string_view bytes, std::string& error)
    : bytes_(bytes),
      error_(error),
      valueBudget_(propertyListValueBudget(bytes.size())),
      textBudget_(kTextAllowance + kTextPerByte * bytes.size()) {}

std::optional<PropertyList> PropertyListBinaryReader::read() {
    PropertyList value;
    if (!readTrailer() || !readObject(value, topObject_, 0)) return std::nullopt;
    return value;
}

bool PropertyListBinaryReader::fail(std::string_view reason) {
    error_ = "not a binary property list: ";
    if (at_ != 0) error_ += "object " + std::to_string(object_) + " at byte " + std::to_string(at_) + ": ";
    error_ += reason;
    return false;
}

bool PropertyListBinaryReader::spend(std::uint64_t& budget, std::uint64_t amount, std::string_view what) {
    if (amount > budget)
        return fail("shared objects make more " + std::string(what) + " of it than its size justifies");
    budget -= amount;
    return true;
}

std::uint64_t PropertyListBinaryReader::unsignedAt(std::size_t position, std::size_t size) const {
    std::uint64_t value = 0;
    for (const char byte : bytes_.substr(position, size))
        value = (value << 8U) | static_cast<std::uint8_t>(byte);
    return value;
}

std::uint64_t PropertyListBinaryReader::referenceAt(std::size_t contents, std::uint64_t index) const {
    return unsignedAt(contents + static_cast<std::size_t>(index) * referenceSize_, referenceSize_);
}

bool PropertyListBinaryReader::readTrailer() {
    if (bytes_.size() < kMagic.size() + kTrailerSize || !bytes_.starts_with(kMagic))
        return fail("it does not begin with \"bplist00\" or is shorter than its header and trailer");
    const std::size_t trailer = bytes_.size() - kTrailerSize;
    offsetSize_ = static_cast<std::size_t>(unsignedAt(trailer + 6, 1));
    referenceSize_ = static_cast<std::size_t>(unsignedAt(trailer + 7, 1));
    objectCount_ = unsignedAt(trailer + 8, 8);
    topObject_ = unsignedAt(trailer + 16, 8);
    const std::uint64_t table = unsignedAt(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8)
        return fail("the trailer gives offsets of " + std::to_string(offsetSize_) + " and references of " +
                    std::to_string(referenceSize_) + " bytes; 1 to 8 are possible");
    if (table < kMagic.size() || table > trailer)
        return fail(
            "the trailer puts the offset table at byte " + std::to_string(table) + ", outside the file");
    tableStart_ = static_cast<std::size_t>(table);
    const std::size_t tableSize = trailer - tableStart_;
    if (objectCount_ > tableSize / offsetSize_ || objectCount_ * offsetSize_ != tableSize)
        return fail("the offset table of " + std::to_string(objectCount_) +
                    " objects does not end where the trailer begins");
    open_.resize(static_cast<std::size_t>(objectCount_));
    return true;
}

// Makes an object the one that is being read.
bool PropertyListBinaryReader::enter(std::uint64_t object) {
    if (object >= objectCount_)
        return fail(
            "there is no object " + std::to_string(object) + " among " + std::to_string(objectCount_));
    const std::uint64_t offset =
        unsignedAt(tableStart_ + static_cast<std::size_t>(object) * offsetSize_, offsetSize_);
    if (offset < kMagic.size() || offset >= tableStart_)
        return fail("object " + std::to_string(object) + " is said to be at byte " + std::to_string(offset) +
                    ", outside the objects");
    object_ = object;
    at_ = static_cast<std::size_t>(offset);
    return true;
}

bool PropertyListBinaryReader::readHead(Head& head) {
    const auto marker = static_cast<std::uint8_t>(bytes_[at_]);
    head.kind = marker >> 4U;
    head.low = marker & 0x0FU;
    head.count = head.low;
    head.contents = at_ + 1;
    const bool counted = head.kind >= kData;
    return !counted || head.low != 0x0F || readCount(head);
}

// A count that does not fit into the marker follows it as an integer object.
bool PropertyListBinaryReader::readCount(Head& head) {
    if (head.contents >= tableStart_) return fail("its count is cut off");
    const auto marker = static_cast<std::uint8_t>(bytes_[head.contents]);
    const std::size_t size = std::size_t{1} << (marker & 0x0FU);
    if (marker >> 4U != kInteger || size > 8) return fail("its count is not an integer");
    if (tableStart_ - head.contents - 1 < size) return fail("its count is cut off");
    head.count = unsignedAt(head.contents + 1, size);
    head.contents += 1 + size;
    return true;
}

std::optional<std::string_view> PropertyListBinaryReader::contentsOf(const Head& head, std::size_t unit) {
    if (head.count > (tableStart_ - head.contents) / unit) {
        fail("its " + std::to_string(head.count) + " units run past the end of the objects");
        return std::nullopt;
    }
    return bytes_.substr(head.contents, static_cast<std::size_t>(head.count) * unit);
}

bool PropertyListBinaryReader::readObject(PropertyList& value, std::uint64_t object, std::size_t depth) {
    Head head;
    if (!enter(object) || !readHead(head)) return false;
    switch (head.kind) {
    case kSimple:
        return readSimple(value, head);
    case kInteger:
        return readInteger(value, head);
    case kReal:
        return readReal(value, head);
    case kDate:
        return readDate(value, head);
    case kData:
        return readData(value, head);
    case kASCIIString:
    case kUTF16String:
    case kUTF8String:
        return readString(value.value_.emplace<std::string>(), head);
    case kList:
    case kDictionary:
        return readContainer(value, head, object, depth);
    default:
        return fail("objects of kind " + std::to_string(head.kind) + " are not property list values");
    }
}

bool PropertyListBinaryReader::readSimple(PropertyList& value, const Head& head) {
    if (head.low != 8 && head.low != 9)
        return fail("it is neither false nor true but value " + std::to_string(head.low));
    value.value_.emplace<bool>(head.low == 9);
    return true;
}

// One, two and four bytes are unsigned, eight are signed; sixteen carry the unsigned upper half.
bool PropertyListBinaryReader::readInteger(PropertyList& value, const Head& head) {
    if (head.low > 4) return fail("it is an integer of more than 16 bytes");
    const std::size_t size = std::size_t{1} << head.low;
    if (tableStart_ - head.contents < size) return fail("it is cut off");
    if (size <= 8) {
        value.value_.emplace<std::int64_t>(static_cast<std::int64_t>(unsignedAt(head.contents, size)));
        return true;
    }
    const std::uint64_t high = unsignedAt(head.contents, 8);
    const std::uint64_t low = unsignedAt(head.contents + 8, 8);
    const bool isNegative = low >> 63U != 0;
    if (high == 0)
        value = PropertyList(low);
    else if (high == ~std::uint64_t{0} && isNegative)
        value.value_.emplace<std::int64_t>(static_cast<std::int64_t>(low));
    else
        return fail("it is an integer of more than 64 bits");
    return true;
}

bool PropertyListBinaryReader::readReal(PropertyList& value, const Head& head) {
    if (head.low != 2 && head.low != 3) return fail("it is a real of neither 4 nor 8 bytes");
    const std::size_t size = std::size_t{1} << head.low;
    if (tableStart_ - head.contents < size) return fail("it is cut off");
    const std::uint64_t bits = unsignedAt(head.contents, size);
    value.value_.emplace<double>(
        size == 4 ? std::bit_cast<float>(static_cast<std::uint32_t>(bits)) : std::bit_cast<double>(bits));
    return true;
}

bool PropertyListBinaryReader::readDate(PropertyList& value, const Head& head) {
    if (head.low != 3) return fail("it is a date of other than 8 bytes");
    if (tableStart_ - head.contents < 8) return fail("it is cut off");
    const PropertyList::Date date{std::bit_cast<double>(unsignedAt(head.contents, 8))};
    if (!isInCalendar(date)) return fail("it is a date outside the years 1 to 9999");
    value.value_.emplace<PropertyList::Date>(date);
    return true;
}

bool PropertyListBinaryReader::readData(PropertyList& value, const Head& head) {
    const auto contents = contentsOf(head, 1);
    if (!contents || !spend(textBudget_, contents->size(), "data")) return false;
    value.value_.emplace<PropertyList::Data>(contents->begin(), contents->end());
    return true;
}

bool PropertyListBinaryReader::readString(std::string& text, const Head& head) {
    const auto contents = contentsOf(head, head.kind == kUTF16String ? 2 : 1);
    if (!contents || !spend(textBudget_, contents->size(), "text")) return false;
    if (head.kind == kUTF16String) {
        std::optional<std::string> converted = utf8FromUTF16(*contents, ByteOrder::big);
        if (!converted) return fail("half a surrogate pair stands alone in a string");
        text = std::move(*converted);
        return true;
    }
    if (head.kind == kASCIIString && findNonASCII(*contents) != std::string_view::npos)
        return fail("a string is not ASCII as its kind says");
    if (head.kind == kUTF8String && findInvalidUTF8(*contents) != std::string_view::npos)
        return fail("a string is not UTF-8");
    text.assign(*contents);
    return true;
}

bool PropertyListBinaryReader::readKey(std::string& key, std::uint64_t object) {
    Head head;
    if (!enter(object) || !readHead(head)) return false;
    if (head.kind < kASCIIString || head.kind > kUTF8String)
        return fail("it is the key of a dictionary but not a string");
    return readString(key, head);
}

bool PropertyListBinaryReader::readContainer(
    PropertyList& value, const Head& head, std::uint64_t object, std::size_t depth) {
    if (open_[static_cast<std::size_t>(object)]) return fail("it contains itself");
    if (depth >= PropertyList::kMaximumDepth) return fail("it nests too deep");
    const std::size_t referencesEach = head.kind == kList ? 1 : 2;
    if (!contentsOf(head, referenceSize_ * referencesEach) ||
        !spend(valueBudget_, head.count * referencesEach, "values"))
        return false;
    open_[static_cast<std::size_t>(object)] = true;
    const bool done =
        head.kind == kList
            ? readList(value.value_.emplace<PropertyList::List>(), head, depth + 1)
            : readDictionary(*value.value_.emplace<PropertyList::DictionaryBox>().get(), head, depth + 1);
    open_[static_cast<std::size_t>(object)] = false;
    return done;
}

bool PropertyListBinaryReader::readList(PropertyList::List& list, const Head& head, std::size_t depth) {
    list.reserve(static_cast<std::size_t>(head.count));
    for (std::uint64_t i = 0; i < head.count; ++i) {
        if (!readObject(list.emplace_back(), referenceAt(head.contents, i), depth)) return false;
    }
    return true;
}

bool PropertyListBinaryReader::readDictionary(
    PropertyList::Dictionary& dictionary, const Head& head, std::size_t depth) {
    for (std::uint64_t i = 0; i < head.count; ++i) {
        std::string key;
        if (!readKey(key, referenceAt(head.contents, i))) return false;
        // Writers mostly sort their keys. A key's second value overwrites the first.
        PropertyList& value = dictionary.try_emplace(dictionary.end(), std::move(key))->second;
        if (!readObject(value, referenceAt(head.contents, head.count + i), depth)) return false;
    }
    return true;
}

std::optional<PropertyList> readBinaryPropertyList(std::string_view bytes, std::string& error) {
    return PropertyListBinaryReader(bytes, error).read();
}

} // namespace platform
