// Asks a printer through its queue, and finds out why when no answer comes.
#pragma once

#include "Platform/PropertyList.h"

#include <chrono>
#include <string>
#include <vector>

namespace orvan {

struct PrinterAnswers {
    std::vector<platform::PropertyList> responses; // in the order of delivery
    std::string problem;                           // for people; empty when something was answered
    // For people: why the responses, or some of them, are those of an earlier question; mostly empty.
    std::string complaint;
};

// Dispatches every command that the queue's PPD lists and waits for the answers, at most for so long. Which
// way the commands take follows the system release. Main thread; runs the main loop.
PrinterAnswers askPrinter(const std::string& queue, std::chrono::duration<double> timeout);

// The release that the process stands for from now on; before anything asks for it. "" leaves it.
void setSystemRelease(const std::string& release);
inline constexpr const char* kDefaultRelease = "10.9.0";
// The release that the process stands for.
std::string currentRelease();
// What is wrong with a release as an argument; "" for nothing.
std::string checkRelease(const std::string& release);

} // namespace orvan
