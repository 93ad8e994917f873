#include "BiDi/ppdx.h"

#include <cups/http.h>
#include <zlib.h>

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

constexpr std::size_t kPieceSize = 158;
constexpr std::size_t kFourDigitNumbers = 0x10000;

// libcups counts the terminator among the characters that it may write, of text and of bytes alike.
constexpr int kEncodedBufferSize = 212;
constexpr int kDecodedBufferSize = kPieceSize + 1;
constexpr std::size_t kTrailerSize = 4; // of a zlib stream

// A line with its line feed has at most this many bytes.
constexpr std::size_t kMaximumLine = 2046;
constexpr std::string_view kLinePrefix = "PPD:";
constexpr std::string_view kTerminator = "\"\"";

constexpr std::size_t kFirstCapacity = 256;
constexpr std::size_t kDoublingLimit = 2048;
constexpr std::size_t kCapacityStep = 2048;
// Most responses never outgrow it.
constexpr std::size_t kFirstReserve = std::size_t{96} * 1024;

void reportZlib(const char* function, int code, const char* message) {
    const std::string line = std::string("ERROR: ") + function + " returned " + std::to_string(code) + " (" +
                             (message != nullptr ? message : "(null)") + ")";
    if (!PpdxMessages::take(line)) std::fprintf(stderr, "%s\n", line.c_str());
}

// The name and one number; the keyword of an entry. Keeps the name and rewrites the digits only.
class Keyword {
public:
    explicit Keyword(std::string_view name) : nameLength_(std::min(name.size(), kPpdxMaximumKeywordLength)) {
        name.copy(text_.data(), nameLength_);
    }

    // False when name and number do not fit; text() is then their beginning.
    bool setNumber(std::uint32_t number) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        std::array<char, 8> digits{};
        auto first = digits.end();
        do {
            *--first = kDigits[number & 0xFU];
            number >>= 4U;
        } while (number != 0 || digits.end() - first < 4);
        const auto count = static_cast<std::size_t>(digits.end() - first);
        const std::size_t fitting = std::min(count, kPpdxMaximumKeywordLength - nameLength_);
        std::copy_n(first, fitting, text_.begin() + static_cast<std::ptrdiff_t>(nameLength_));
        length_ = nameLength_ + fitting;
        text_[length_] = '\0';
        return fitting == count;
    }

    const char* text() const { return text_.data(); }
    std::size_t length() const { return length_; }

private:
    std::array<char, kPpdxMaximumKeywordLength + 1> text_{};
    std::size_t nameLength_;
    std::size_t length_ = 0;
};

// Collects entries in a line and writes it when the next one does not fit.
class EntryWriter {
public:
    EntryWriter(int descriptor, std::string_view name) : descriptor_(descriptor), keyword_(name) {
        startLine();
    }

    bool write(std::string_view value) {
        keyword_.setNumber(number_++);
        const std::size_t entryLength = 1 + keyword_.length() + 1 + value.size();
        if (length_ + entryLength >= kMaximumLine && !endLine()) return false;
        append(" ");
        append({keyword_.text(), keyword_.length()});
        append("=");
        append(value);
        return true;
    }

    std::uint32_t count() const { return number_; }

    bool endLine() {
        append("\n");
        const bool written = writeWhole({line_.data(), length_});
        startLine();
        return written;
    }

private:
    void startLine() {
        length_ = 0;
        append(kLinePrefix);
    }

    void append(std::string_view text) { length_ += text.copy(line_.data() + length_, text.size()); }

    bool writeWhole(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor_, text.data(), text.size());
            if (count >= 0) {
                text.remove_prefix(static_cast<std::size_t>(count));
            } else if (errno == EAGAIN) {
                pollfd writable{descriptor_, POLLOUT, 0};
                ::poll(&writable, 1, -1);
            } else if (errno != EINTR) {
                return false;
            }
        }
        return true;
    }

    int descriptor_;
    Keyword keyword_;
    std::uint32_t number_ = 0;
    std::array<char, 2048> line_{};
    std::size_t length_ = 0;
};

// A block's zlib stream, piece by piece.
class Compressor {
public:
    Compressor(const void* data, std::size_t size) {
        stream_.next_in = static_cast<Bytef*>(const_cast<void*>(data));
        stream_.avail_in = static_cast<uInt>(size);
        code_ = deflateInit(&stream_, Z_BEST_COMPRESSION);
        isOpen_ = code_ == Z_OK;
    }
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() {
        if (isOpen_) deflateEnd(&stream_);
    }

    // The next piece; it is the last one when it is not full. False when zlib fails.
    bool next(std::string_view* piece) {
        stream_.next_out = piece_.data();
        stream_.avail_out = kPieceSize;
        if (isOpen_) code_ = deflate(&stream_, Z_FINISH);
        *piece = {reinterpret_cast<const char*>(piece_.data()), kPieceSize - stream_.avail_out};
        return code_ >= 0;
    }

    void report() const { reportZlib("deflate", code_, stream_.msg); }

private:
    z_stream stream_{};
    int code_ = Z_OK;
    bool isOpen_ = false;
    std::array<Bytef, kPieceSize> piece_{};
};

// Whether all entries, the terminator included, have numbers that fit behind the name.
bool numbersFit(std::string_view name, const void* data, std::size_t size) {
    if (name.size() < kPpdxMaximumNameLength) return true;
    constexpr std::size_t kFittingPieces = kFourDigitNumbers - 1;
    if (compressBound(size) < kFittingPieces * kPieceSize) return true;

    // Only trying tells. Long names and large blocks hardly ever meet.
    Compressor compressor(data, size);
    std::size_t pieces = 0;
    std::string_view piece;
    do {
        if (!compressor.next(&piece)) return true;
        if (++pieces > kFittingPieces) return false;
    } while (piece.size() == kPieceSize);
    return true;
}

bool writePieces(EntryWriter& entries, const void* data, std::size_t size) {
    Compressor compressor(data, size);
    std::array<char, kEncodedBufferSize> encoded{};
    std::string_view piece;
    do {
        if (!compressor.next(&piece)) {
            compressor.report();
            return true;
        }
        httpEncode64_2(encoded.data(), kEncodedBufferSize, piece.data(), static_cast<int>(piece.size()));
        if (!entries.write(encoded.data())) return false;
    } while (piece.size() == kPieceSize);
    return true;
}

// What comes out of the decompressor. Its capacity grows in small steps; the memory behind it is reserved in
// large ones, as an allocator that cannot extend a block in place would copy it at every step.
class Output {
public:
    enum class Window { toReserved, toCapacity };

    // Makes room behind `written` bytes. False when memory runs out.
    bool growBehind(std::size_t written) {
        while (capacity_ <= written && capacity_ < kPpdxMaximumSize)
            capacity_ = capacity_ == 0               ? kFirstCapacity
                        : capacity_ < kDoublingLimit ? capacity_ * 2
                                                     : capacity_ + kCapacityStep;
        return capacity_ <= reserved_ || reserve(std::clamp(capacity_ * 2, kFirstReserve, kPpdxMaximumSize));
    }
    static bool canGrowBehind(std::size_t written) { return written < kPpdxMaximumSize; }

    // Where the decompressor goes on, `written` bytes after the start.
    void continueAt(std::size_t written, Window window, z_stream& stream) {
        const std::size_t end = window == Window::toReserved ? reserved_ : capacity_;
        stream.next_out = reinterpret_cast<Bytef*>(bytes_.get()) + written;
        stream.avail_out = static_cast<uInt>(end - written);
    }

    // The bytes, in no more memory than they and a zero byte behind them need.
    PpdxData take(std::size_t written) {
        reserve(written);
        bytes_.get()[written] = '\0';
        return std::move(bytes_);
    }

private:
    // One byte more, for the zero byte.
    bool reserve(std::size_t size) {
        char* const moved = static_cast<char*>(std::realloc(bytes_.get(), size + 1));
        if (moved == nullptr) return false;
        static_cast<void>(bytes_.release());
        bytes_.reset(moved);
        reserved_ = size;
        return true;
    }

    PpdxData bytes_;
    std::size_t capacity_ = 0;
    std::size_t reserved_ = 0;
};

class Decompressor {
public:
    enum class Step { goOn, chunkFailed, isFull, streamEnded, wantsDictionary, outOfMemory };

    bool open() {
        if (!output_.growBehind(0)) return false;
        isOpen_ = inflateInit(&stream_) == Z_OK;
        return isOpen_;
    }
    Decompressor() = default;
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    ~Decompressor() {
        if (isOpen_) inflateEnd(&stream_);
    }

    // Where the last bytes of a stream that is cut off fill the capacity, what zlib still knows is lost.
    // Bytes before them cannot be those, and zlib is faster in one large window than in many small ones.
    Step feed(const char* bytes, std::size_t count) {
        const std::size_t early = count - std::min(count, kLateBytes);
        const Step step = inflateInto(Output::Window::toReserved, bytes, early);
        return step == Step::goOn ? inflateInto(Output::Window::toCapacity, bytes + early, count - early)
                                  : step;
    }

    // How many bytes have come out so far.
    std::size_t count() const { return stream_.total_out; }
    // Of these bytes, as it ends a stream that has no more of them. RFC 1950, section 2.2: Adler-32, most
    // significant byte first.
    std::string trailer() const {
        std::string bytes;
        for (const unsigned shift : {24U, 16U, 8U, 0U})
            bytes += static_cast<char>(stream_.adler >> shift & 0xFFU);
        return bytes;
    }

    PpdxData take(std::size_t* size) {
        if (size != nullptr) *size = stream_.total_out;
        return output_.take(stream_.total_out);
    }

private:
    static constexpr std::size_t kLateBytes = 8;

    Step inflateInto(Output::Window window, const char* bytes, std::size_t count) {
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
        stream_.avail_in = static_cast<uInt>(count);
        output_.continueAt(stream_.total_out, window, stream_);
        while (stream_.avail_in > 0) {
            const int code = inflate(&stream_, Z_NO_FLUSH);
            if (code < 0) {
                reportZlib("inflate", code, stream_.msg);
                return Step::chunkFailed;
            }
            // zlib takes no further input after either.
            if (code == Z_STREAM_END) return Step::streamEnded;
            if (code == Z_NEED_DICT) return Step::wantsDictionary;
            if (stream_.avail_out > 0) continue;
            if (!Output::canGrowBehind(stream_.total_out)) return Step::isFull;
            if (!output_.growBehind(stream_.total_out)) return Step::outOfMemory;
            output_.continueAt(stream_.total_out, window, stream_);
        }
        return output_.growBehind(stream_.total_out) ? Step::goOn : Step::outOfMemory;
    }

    z_stream stream_{};
    bool isOpen_ = false;
    Output output_;
};

} // namespace

void ppdxWriteData(const char* name, const void* data, std::size_t size) {
    ppdxWriteDataToDescriptor(STDERR_FILENO, name, data, size);
}

bool ppdxWriteDataToDescriptor(
    int descriptor, const char* name, const void* data, std::size_t size, std::uint32_t* entries) {
    if (entries != nullptr) *entries = 0;
    if (name == nullptr || (data == nullptr && size != 0) || size > kPpdxMaximumSize) return true;
    const std::string_view nameText = name;
    if (nameText.size() > kPpdxMaximumNameLength || !numbersFit(nameText, data, size)) return true;

    EntryWriter writer(descriptor, nameText);
    const bool isWritten = (size == 0 || writePieces(writer, data, size)) && writer.write(kTerminator);
    if (entries != nullptr) *entries = writer.count();
    return isWritten && writer.endLine();
}

PpdxReading ppdxRead(void* source, const char* name, PpdxChunkGetter getter, std::size_t limit) {
    using Step = Decompressor::Step;
    PpdxReading reading;
    if (source == nullptr || name == nullptr || getter == nullptr) return reading;

    Keyword keyword(name);
    keyword.setNumber(0);
    const char* value = getter(source, keyword.text());
    if (value == nullptr) return reading;

    Decompressor decompressor;
    if (!decompressor.open()) return reading;
    // What the first failure was stands.
    std::optional<PpdxEnding> ending;
    const auto end = [&](PpdxEnding how, std::uint32_t number) {
        if (!ending) reading.number = number;
        if (!ending) ending = how;
    };
    std::string last; // bytes of the stream, as many as its trailer has
    std::string trailer;
    std::uint32_t number = 0;
    for (; value != nullptr; ++number) {
        std::array<char, kDecodedBufferSize> piece;
        int count = kDecodedBufferSize;
        if (httpDecode64_2(piece.data(), &count, value) == nullptr || count <= 0) {
            end(number == 0 ? PpdxEnding::whole : PpdxEnding::cutShort, number);
            break;
        }
        const Step step = decompressor.feed(piece.data(), static_cast<std::size_t>(count));
        if (step == Step::outOfMemory) return {};
        last.append(piece.data(), static_cast<std::size_t>(count));
        last.erase(0, last.size() - std::min(last.size(), kTrailerSize));
        if (decompressor.count() > limit) {
            reading.size = decompressor.count();
            reading.ending = PpdxEnding::tooLarge;
            return reading;
        }
        if (step == Step::isFull && !ending) trailer = decompressor.trailer();
        if (step == Step::isFull) end(PpdxEnding::tooLarge, number);
        if (step == Step::chunkFailed || step == Step::wantsDictionary) end(PpdxEnding::damaged, number);
        if (step == Step::streamEnded) end(PpdxEnding::whole, number);
        if (step == Step::streamEnded || step == Step::wantsDictionary) break;
        value = keyword.setNumber(number + 1) ? getter(source, keyword.text()) : nullptr;
    }
    end(PpdxEnding::missing, number);
    // With all of the room used up, the end of the stream was not read, but may have been there.
    const bool isExact = ending == PpdxEnding::tooLarge && last == trailer;
    reading.ending = isExact ? PpdxEnding::whole : *ending;
    reading.bytes = decompressor.take(&reading.size);
    return reading;
}

PpdxData ppdxReadData(
    void* source, const char* name, PpdxChunkGetter getter, std::size_t* size, std::size_t limit) {
    PpdxReading reading = ppdxRead(source, name, getter, limit);
    if (size != nullptr) *size = reading.size;
    return std::move(reading.bytes);
}

std::string ppdxKeyword(const std::string& name, std::uint32_t number) {
    Keyword keyword(name);
    keyword.setNumber(number);
    return keyword.text();
}

std::string ppdxProblemWithName(const std::string& name) {
    if (name.empty()) return "it is empty";
    if (name.size() > kPpdxMaximumNameLength)
        return "it is longer than " + std::to_string(kPpdxMaximumNameLength) +
               " characters, so its numbers would not fit a PPD keyword";
    const bool isASCII = std::ranges::all_of(name, [](char c) { return c > ' ' && c <= '~'; });
    if (!isASCII) return "it has characters other than printable ASCII without spaces";
    // The ends of a keyword in a PPD or in a message; a quoted value; a keyword's translation.
    if (const std::size_t found = name.find_first_of(":=\"/"); found != std::string::npos)
        return std::string("it has the character ") + name[found];
    // A comment, a query, and a group of messages.
    if (std::string_view("%?{").find(name.front()) != std::string_view::npos)
        return std::string("it begins with the character ") + name.front();
    return {};
}

} // namespace orvan
