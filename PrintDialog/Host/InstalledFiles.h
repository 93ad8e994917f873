// Where the program's own files are.
#pragma once

#include <filesystem>

namespace orvan {

// The folder lib/orvan of the tree that the running code belongs to, an installed one or a build tree: where
// the shared object is that contains the caller, or, for a program, in the one place beside its own folder
// that the build has fixed. Nothing is searched for, and the working directory and the environment have no
// say.
std::filesystem::path privateFolder();

// The plug-in bundle in it.
std::filesystem::path paperOptionsBundleFolder();

// The modules of the same tree that GTK's applications load.
std::filesystem::path gtkModuleFile();
std::filesystem::path gtk4ModuleFile();

} // namespace orvan
