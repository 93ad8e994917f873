#include "PrintDialog/Host/DialogMemory.h"

#include <glib.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>

namespace orvan {
namespace {

constexpr const char* kMemoryGroup = "Paper Options";
constexpr const char* kDetailsKey = "Details";
constexpr int kOwnerOnly = 0600;
constexpr int kOwnersFolder = 0700;

struct FreeKeyFile {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

std::filesystem::path memoryFile() {
    return std::filesystem::path(g_get_user_config_dir()) / "orvan" / "print-dialog.conf";
}

KeyFile readMemory() {
    KeyFile file(g_key_file_new());
    g_key_file_load_from_file(file.get(), memoryFile().c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
    return file;
}

} // namespace

bool remembersUnfoldedDetails() {
    return g_key_file_get_boolean(readMemory().get(), kMemoryGroup, kDetailsKey, nullptr) != FALSE;
}

void rememberUnfoldedDetails(bool unfolded) {
    const KeyFile file = readMemory();
    g_key_file_set_boolean(file.get(), kMemoryGroup, kDetailsKey, unfolded ? TRUE : FALSE);
    g_mkdir_with_parents(memoryFile().parent_path().c_str(), kOwnersFolder);
    gsize size = 0;
    gchar* const text = g_key_file_to_data(file.get(), &size, nullptr);
    // A new file and a rename.
    g_file_set_contents_full(memoryFile().c_str(), text, static_cast<gssize>(size),
        G_FILE_SET_CONTENTS_CONSISTENT, kOwnerOnly, nullptr);
    g_free(text);
}

} // namespace orvan
