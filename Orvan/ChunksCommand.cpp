#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"
#include "Formats/OneLine.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/PPDArgument.h"
#include "Platform/Input.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace orvan {
namespace {

int encode(const Arguments& arguments) {
    const std::string name = arguments.text("NAME");
    if (const std::string problem = ppdxProblemWithName(name); !problem.empty())
        return cannot(
            "nothing can read chunks of the name \"" + platform::onOneLine(name) + "\" back: " + problem);
    platform::Failure error;
    const std::optional<std::string> block = platform::readFile("-", error);
    if (!block) return cannot(*error);
    if (block->size() > kPpdxMaximumSize)
        return cannot("standard input is larger than 16 MiB, which is the most that chunks can carry");
    if (!ppdxWriteDataToDescriptor(STDOUT_FILENO, name.c_str(), block->data(), block->size()))
        return cannot(std::string("cannot write the chunks: ") + std::strerror(errno));
    return kDone;
}

// Where the chunks are.
struct Source {
    void* entries;
    std::string name; // for people
    PpdxChunkGetter getter;
};

// The next chunk that is there, behind one that is missing.
std::optional<std::string> findBehind(const Source& source, const std::string& name, std::uint32_t number) {
    constexpr std::uint32_t kMostNumbers = kPpdxMaximumSize / 64; // more than any block has
    for (std::uint32_t next = number + 1; next < kMostNumbers; ++next) {
        const std::string keyword = ppdxKeyword(name, next);
        if (source.getter(source.entries, keyword.c_str()) != nullptr) return keyword;
    }
    return std::nullopt;
}

// What keeps the block from being whole, to go on with "the chunks of ..."; "" for nothing.
std::string problemWith(const PpdxReading& reading, const Source& source, const std::string& name) {
    const std::string keyword = ppdxKeyword(name, reading.number);
    switch (reading.ending) {
    case PpdxEnding::noEntry:
    case PpdxEnding::whole:
        return {};
    case PpdxEnding::cutShort:
        return "end with " + keyword + ", before the block does";
    case PpdxEnding::damaged:
        return "are damaged, which shows at " + keyword;
    case PpdxEnding::tooLarge:
        return "carry more than 16 MiB";
    case PpdxEnding::missing:
        break;
    }
    const std::optional<std::string> next = findBehind(source, name, reading.number);
    return next ? "have a gap: " + keyword + " is missing, while " + *next + " is there"
                : "have no end: " + keyword + " is missing, and so is all behind it";
}

int writeBlock(const Source& source, const std::string& name) {
    const PpdxMessages quiet([](const std::string&) {}); // one sentence says it
    const PpdxReading reading = ppdxRead(source.entries, name.c_str(), source.getter);
    if (reading.bytes == nullptr) return cannot("there are no chunks of " + name + " in " + source.name);
    std::cout.write(reading.bytes.get(), static_cast<std::streamsize>(reading.size)).flush();
    const std::string problem = problemWith(reading, source, name);
    if (problem.empty()) return kDone;
    std::string message = "the chunks of " + name;
    message.append(" in ").append(source.name).append(" ").append(problem);
    return cannot(message + "; what could be read was written");
}

int decode(const Arguments& arguments) {
    const std::string name = arguments.text("NAME");
    platform::Failure error;
    if (const std::string file = arguments.text("--ppd"); !file.empty()) {
        const std::unique_ptr<DialogPPD> ppd = openPPD(file, error);
        if (ppd == nullptr) return cannot(*error);
        return writeBlock({ppd->record(), platform::nameOfInput(file), ppdx_get_chunk_ppd}, name);
    }
    const std::optional<std::string> lines = platform::readFile("-", error);
    if (!lines) return cannot(*error);
    EntryDictionary entries = entriesInTaskOutput(*lines);
    return writeBlock({&entries, platform::nameOfInput("-"), ppdx_get_chunk_nsdictionary}, name);
}

constexpr ArgumentSpec kName{
    .name = "NAME", .text = "The command whose answer it is", .count = ArgumentSpec::Count::required};
constexpr ArgumentSpec kEncodeArguments[]{kName};
constexpr ArgumentSpec kDecodeArguments[]{kName, {.name = "--ppd",
                                                     .text = "Read from this PPD file; - is standard input",
                                                     .value = "FILE",
                                                     .check = checkFile}};

constexpr Command kBelow[]{
    {
        .name = "encode",
        .text = "Bytes from standard input to \"PPD:\" lines",
        .arguments = kEncodeArguments,
        .footer = "Examples:\n"
                  "  orvan chunks encode com.orvan.DeviceStatus < answer.plist",
        .run = encode,
    },
    {
        .name = "decode",
        .text = "\"PPD:\" lines from standard input, or a PPD, to bytes",
        .arguments = kDecodeArguments,
        .footer =
            "Exit code 1: there is no such sequence, or it is not whole; what could be read is written.\n"
            "Examples:\n"
            "  orvan chunks decode com.orvan.DeviceStatus < lines > answer.plist\n"
            "  orvan chunks decode com.orvan.DeviceStatus --ppd /etc/cups/ppd/Office.ppd | orvan plist -",
        .run = decode,
    },
};

} // namespace

const Command kChunksCommand{
    .name = "chunks",
    .text = "Write and read the chunks that carry a printer's answers",
    .footer = "Examples:\n"
              "  orvan chunks encode com.orvan.DeviceStatus < answer.plist\n"
              "  orvan chunks decode com.orvan.DeviceStatus --ppd /etc/cups/ppd/Office.ppd",
    .below = kBelow,
};

} // namespace orvan
