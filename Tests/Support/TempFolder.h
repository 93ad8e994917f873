// A folder that a test fills and that goes when the test ends.
#pragma once

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

namespace orvan {

// A file's bytes; "" when it cannot be read.
inline std::string contents(const std::filesystem::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary)
                 .rdbuf(); // throws nothing when a process's file goes meanwhile
    return bytes.str();
}

class TempFolder {
public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "orvan-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
        path_ = name;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes the file, and the folders that lead to it.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const {
        std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

private:
    std::filesystem::path path_;
};

} // namespace orvan
