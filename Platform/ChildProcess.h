// The process of a task (Platform/Task.h): how it is started, waited for and signalled.
#pragma once

#include "Formats/Failure.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Task.h"

#include <string>

namespace platform {

// This process's ends of a child's pipes. They do not block and are closed on exec.
struct ChildPipes {
    FileDescriptor inputWriter;
    // Held so that a write to a child that has closed its standard input waits instead of raising SIGPIPE in
    // an application whose signals are its own affair.
    FileDescriptor inputReader;
    FileDescriptor errorReader;
};

// Starts the process of a task with its own pipes. *process becomes a pidfd, readable when the process has
// ended, or none when it is already gone. False, and why in `error`, when it could not be started.
bool spawnChild(
    const TaskDescription& description, ChildPipes* pipes, FileDescriptor* process, Failure& error);

// Collects a process that has ended, unless somebody else in this application did.
void reapChild(const FileDescriptor& process);
// Asks a process to end. One that has ended stays as it is, and so does any other that got its number.
void terminateChild(const FileDescriptor& process);

} // namespace platform
