#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "Tools/Orvan/Command.h"
#include "Tools/Orvan/Input.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

struct ChunksArguments {
    std::string name;
    std::string ppdFile;
};

int encode(const ChunksArguments& arguments) {
    if (arguments.name.size() > kPpdxMaximumNameLength)
        return cannot("the name " + arguments.name + " is longer than " +
                      std::to_string(kPpdxMaximumNameLength) +
                      " characters, so its numbers would not fit a PPD keyword");
    const std::string block = readAll(std::cin);
    if (block.size() > kPpdxMaximumSize)
        return cannot("standard input is larger than 16 MiB, which is the most that chunks can carry");
    if (!ppdxWriteDataToDescriptor(STDOUT_FILENO, arguments.name.c_str(), block.data(), block.size()))
        return cannot(std::string("cannot write the chunks: ") + std::strerror(errno));
    return kDone;
}

int writeBlock(void* source, const ChunksArguments& arguments, PpdxChunkGetter getter) {
    std::size_t size = 0;
    const PpdxData block = ppdxReadData(source, arguments.name.c_str(), getter, &size);
    if (block == nullptr)
        return cannot("there are no chunks of " + arguments.name + " in " +
                      (arguments.ppdFile.empty() ? "standard input" : arguments.ppdFile));
    std::cout.write(block.get(), static_cast<std::streamsize>(size));
    return kDone;
}

int decode(const ChunksArguments& arguments) {
    if (!arguments.ppdFile.empty()) {
        std::string error;
        const std::unique_ptr<DialogPPD> ppd = DialogPPD::open(arguments.ppdFile, &error);
        return ppd != nullptr ? writeBlock(ppd->record(), arguments, ppdx_get_chunk_ppd) : cannot(error);
    }
    EntryDictionary entries = entriesInTaskOutput(readAll(std::cin));
    return writeBlock(&entries, arguments, ppdx_get_chunk_nsdictionary);
}

} // namespace

void addChunksCommand(CLI::App& program, CommandBody& run) {
    CLI::App* chunks =
        program.add_subcommand("chunks", "Write and read the chunks that carry a printer's answers");
    chunks->require_subcommand(1);
    const auto arguments = std::make_shared<ChunksArguments>();

    CLI::App* encoder = chunks->add_subcommand("encode", "Bytes from standard input to \"PPD:\" lines");
    encoder->add_option("NAME", arguments->name, "The command whose answer it is")->required();
    encoder->footer("Examples:\n"
                    "  orvan chunks encode com.orvan.DeviceStatus < answer.plist");
    encoder->callback([arguments, &run] { run = [arguments] { return encode(*arguments); }; });

    CLI::App* decoder =
        chunks->add_subcommand("decode", "\"PPD:\" lines from standard input, or a PPD, to bytes");
    decoder->add_option("NAME", arguments->name, "The command whose answer it is")->required();
    decoder->add_option("--ppd", arguments->ppdFile, "Read from this PPD file")->type_name("FILE");
    decoder->footer(
        "Exit code 1: there is no such sequence.\n"
        "Examples:\n"
        "  orvan chunks decode com.orvan.DeviceStatus < lines > answer.plist\n"
        "  orvan chunks decode com.orvan.DeviceStatus --ppd /etc/cups/ppd/Office.ppd | orvan plist -");
    decoder->callback([arguments, &run] { run = [arguments] { return decode(*arguments); }; });
    chunks->footer("Examples:\n"
                   "  orvan chunks encode com.orvan.DeviceStatus < answer.plist\n"
                   "  orvan chunks decode com.orvan.DeviceStatus --ppd /etc/cups/ppd/Office.ppd");
}

} // namespace orvan
