#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"
#include "Orvan/Commands.h"
#include "Platform/Input.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

int encode(const Arguments& arguments) {
    const std::string name = arguments.text("NAME");
    if (name.size() > kPpdxMaximumNameLength)
        return cannot("the name " + name + " is longer than " + std::to_string(kPpdxMaximumNameLength) +
                      " characters, so its numbers would not fit a PPD keyword");
    const std::string block = platform::readAll(std::cin);
    if (block.size() > kPpdxMaximumSize)
        return cannot("standard input is larger than 16 MiB, which is the most that chunks can carry");
    if (!ppdxWriteDataToDescriptor(STDOUT_FILENO, name.c_str(), block.data(), block.size()))
        return cannot(std::string("cannot write the chunks: ") + std::strerror(errno));
    return kDone;
}

int writeBlock(void* source, const std::string& place, const std::string& name, PpdxChunkGetter getter) {
    std::size_t size = 0;
    const PpdxData block = ppdxReadData(source, name.c_str(), getter, &size);
    if (block == nullptr) return cannot("there are no chunks of " + name + " in " + place);
    std::cout.write(block.get(), static_cast<std::streamsize>(size));
    return kDone;
}

int decode(const Arguments& arguments) {
    const std::string name = arguments.text("NAME");
    if (const std::string file = arguments.text("--ppd"); !file.empty()) {
        platform::Failure error;
        const std::unique_ptr<DialogPPD> ppd = DialogPPD::open(file, error);
        return ppd != nullptr ? writeBlock(ppd->record(), file, name, ppdx_get_chunk_ppd) : cannot(*error);
    }
    EntryDictionary entries = entriesInTaskOutput(platform::readAll(std::cin));
    return writeBlock(&entries, "standard input", name, ppdx_get_chunk_nsdictionary);
}

constexpr ArgumentSpec kName{
    .name = "NAME", .text = "The command whose answer it is", .count = ArgumentSpec::Count::required};
constexpr ArgumentSpec kEncodeArguments[]{kName};
constexpr ArgumentSpec kDecodeArguments[]{
    kName, {.name = "--ppd", .text = "Read from this PPD file", .value = "FILE"}};

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
            "Exit code 1: there is no such sequence.\n"
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
