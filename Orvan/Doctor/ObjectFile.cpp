#include "Orvan/Doctor/ObjectFile.h"

#include <elf.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace orvan {
namespace {

constexpr const char* kOwnFile = "/proc/self/exe";

// The header up to the machine, which is at the same place in both classes.
constexpr std::size_t kMachinePlace = EI_NIDENT + sizeof(Elf32_Half);

struct Machine {
    int number;
    const char* name;
};
constexpr std::array<Machine, 8> kMachines{{{EM_386, "x86"}, {EM_X86_64, "x86-64"}, {EM_ARM, "ARM"},
    {EM_AARCH64, "ARM"}, {EM_PPC64, "PowerPC"}, {EM_S390, "S/390"}, {EM_RISCV, "RISC-V"}, {EM_MIPS, "MIPS"}}};

// "" when it is no ELF file.
std::string architectureOf(const std::filesystem::path& file) {
    std::array<char, kMachinePlace + sizeof(Elf32_Half)> header{};
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(header.data(), header.size()) ||
        std::string_view(header.data(), SELFMAG) != std::string_view(ELFMAG, SELFMAG))
        return {};
    const bool isLittle = header[EI_DATA] == ELFDATA2LSB;
    const auto byte = [&](std::size_t index) {
        return static_cast<int>(static_cast<unsigned char>(header.at(kMachinePlace + index)));
    };
    constexpr int kByte = 256;
    const int number = isLittle ? byte(0) + byte(1) * kByte : byte(1) + byte(0) * kByte;
    const auto* const known = std::ranges::find(kMachines, number, &Machine::number);
    std::string name = known != kMachines.end() ? known->name : "machine " + std::to_string(number);
    name.append(header[EI_CLASS] == ELFCLASS64 ? ", 64 bits" : ", 32 bits");
    return isLittle ? name : name.append(", big-endian");
}

} // namespace

std::string ownArchitecture() {
    return architectureOf(kOwnFile);
}

std::string otherArchitecture(const std::filesystem::path& file) {
    std::string architecture = architectureOf(file);
    return architecture == ownArchitecture() ? "" : architecture;
}

} // namespace orvan
