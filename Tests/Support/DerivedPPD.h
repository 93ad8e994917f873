// Test PPDs: the driver's, changed in one respect or another.
#pragma once

#include "Tests/Support/TempFolder.h"

#include <cups/ppd.h>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace orvan {

// The driver's PPD text without its command filter and its commands, until it is changed. A change that finds
// nothing to change throws, so that a test cannot pass because the driver's PPD has become another.
class DerivedPPD {
public:
    DerivedPPD();

    // Takes the options out, with their choices and the constraints that name them.
    DerivedPPD& removeOptions(std::initializer_list<std::string_view> keywords);
    // Takes out the panel's options that are not among these.
    DerivedPPD& keepOptions(std::initializer_list<std::string_view> keywords);
    // Replaces the first occurrence.
    DerivedPPD& replace(std::string_view from, std::string_view to);
    // Gives the paper type option that many choices more, "Extra1" and so on.
    DerivedPPD& addPaperTypes(int count);
    DerivedPPD& append(std::string_view lines);
    // Adds the entries of a filter's "PPD:" lines, as the scheduler does when the filter's job has ended.
    DerivedPPD& addEntries(const std::string& statusLines);

    const std::string& text() const { return text_; }
    // The text as a file, which goes with this object.
    std::filesystem::path file() const { return folder_.write("derived.ppd", text_); }

private:
    TempFolder folder_;
    std::string text_;
};

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using PPDRecord = std::unique_ptr<ppd_file_t, ClosePPD>;

} // namespace orvan
