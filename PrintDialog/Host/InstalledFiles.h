// Where the program's own files are.
#pragma once

#include <filesystem>

namespace orvan {

// The folder lib/orvan of the tree that the running code belongs to: found from the place of the shared
// object or program that contains the caller, so that an installed tree, a build tree and a copy of either
// all work.
std::filesystem::path privateFolder();

// The plug-in bundle in it.
std::filesystem::path paperOptionsBundleFolder();

// The GTK module of the same tree.
std::filesystem::path gtkModuleFile();

} // namespace orvan
