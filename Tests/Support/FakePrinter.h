// A printer for tests without a scheduler.
#pragma once

#include "Platform/PMPrinter.h"

#include <filesystem>
#include <string>
#include <vector>

namespace orvan {

struct FakePrinter final : platform::PMPrinter {
    const std::string& queueName() const override { return name; }
    std::string deviceURI() const override { return {}; }
    std::string descriptionPath() const override { return {}; }
    bool sendCommand(std::string_view text, const std::string& title, const Options&) override {
        sent.emplace_back(text);
        if (keepsJobs) titles.push_back(title);
        return true;
    }
    std::vector<std::string> activeJobTitles() override { return titles; }
    platform::PPDRecord takeFreshPPD() override { return platform::PPDRecord(ppdOpenFile(ppd.c_str())); }
    std::size_t answerBudget() const override { return budget; }

    std::string name = "orvan";
    std::filesystem::path ppd; // of after the job
    bool keepsJobs = true;     // a job stays until a test takes its title out
    std::vector<std::string> titles;
    std::vector<std::string> sent;
    std::size_t budget = std::size_t{512} * 1024;
};

} // namespace orvan
