#include "Benchmarks/PaperTypesPPD.h"

#include <unistd.h>

#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace orvan {
namespace {

// Lines that name one of the driver's own paper types: choices, their translations, what excludes them.
bool namesPaperType(std::string_view line) {
    constexpr std::string_view kTranslation = "*xx.MediaType ";
    return line.starts_with("*MediaType ") ||
           (line.starts_with("*UIConstraints:") && line.find("*MediaType ") != std::string_view::npos) ||
           (line.size() > kTranslation.size() && line.substr(3, kTranslation.size() - 3) == ".MediaType ");
}

void writePaperTypes(std::ofstream& ppd, int count) {
    ppd << "*DefaultMediaType: Type" << count << '\n';
    for (int i = 1; i <= count; ++i)
        ppd << "*MediaType Type" << i << "/Paper Type " << i << ": \"<</MediaType(Type" << i
            << ")>>setpagedevice\"\n";
}

} // namespace

std::filesystem::path writePPDWithPaperTypes(int count) {
    std::error_code status;
    const std::filesystem::path file =
        std::filesystem::temp_directory_path(status) /
        ("orvan-bench-" + std::to_string(getpid()) + "-" + std::to_string(count) + ".ppd");
    std::ifstream driver(ORVAN_SOURCE_DIR "/Packaging/PPD/Orvan-4500.ppd");
    std::ofstream ppd(file);
    for (std::string line; std::getline(driver, line);) {
        if (line.starts_with("*DefaultMediaType:"))
            writePaperTypes(ppd, count);
        else if (!namesPaperType(line))
            ppd << line << '\n';
    }
    ppd.close();
    return ppd ? file : std::filesystem::path();
}

} // namespace orvan
