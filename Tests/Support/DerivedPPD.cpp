#include "Tests/Support/DerivedPPD.h"

#include "OrvanPaperOptions/Source/OptionRows.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace orvan {
namespace {

std::size_t found(std::size_t position, std::string_view what) {
    if (position == std::string::npos) throw std::logic_error("the PPD has no " + std::string(what));
    return position;
}

} // namespace

DerivedPPD::DerivedPPD() {
    text_ = contents(ORVAN_DRIVER_PPD);
    found(text_.find("*PPD-Adobe:"), "first line");
    for (const std::string_view line : {"*cupsFilter2: \"application/vnd.cups-command ", "*cupsCommands: "}) {
        const std::size_t start = found(text_.find(line), line);
        text_.erase(start, text_.find('\n', start) + 1 - start);
    }
}

DerivedPPD& DerivedPPD::removeOptions(std::initializer_list<std::string_view> keywords) {
    for (const std::string_view keyword : keywords) {
        const std::string starred = " *" + std::string(keyword);
        const std::size_t start = found(text_.find("*OpenUI" + starred + "/"), keyword);
        const std::string last = "*CloseUI:" + starred + "\n";
        text_.erase(start, found(text_.find(last, start), last) + last.size() - start);
        for (std::size_t at = 0; (at = text_.find("*UIConstraints:", at)) != std::string::npos;) {
            const std::size_t end = text_.find('\n', at) + 1;
            if (text_.substr(at, end - at).find(starred + " ") != std::string::npos)
                text_.erase(at, end - at);
            else
                at = end;
        }
    }
    return *this;
}

DerivedPPD& DerivedPPD::keepOptions(std::initializer_list<std::string_view> keywords) {
    for (const OptionRowSpec& row : kOptionRows)
        if (std::find(keywords.begin(), keywords.end(), row.keyword) == keywords.end())
            removeOptions({row.keyword});
    return *this;
}

DerivedPPD& DerivedPPD::replace(std::string_view from, std::string_view to) {
    text_.replace(found(text_.find(from), from), from.size(), to);
    return *this;
}

DerivedPPD& DerivedPPD::addPaperTypes(int count) {
    std::string lines;
    for (int i = 1; i <= count; ++i) {
        const std::string number = std::to_string(i);
        lines.append("*MediaType Extra").append(number).append("/Extra ").append(number).append(": \"\"\n");
    }
    constexpr std::string_view kEnd = "*CloseUI: *MediaType\n";
    text_.insert(found(text_.find(kEnd), kEnd), lines);
    return *this;
}

DerivedPPD& DerivedPPD::append(std::string_view lines) {
    text_ += lines;
    return *this;
}

DerivedPPD& DerivedPPD::addEntries(const std::string& statusLines) {
    std::istringstream words(statusLines);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) continue; // the line's "PPD:"
        std::string value = word.substr(equals + 1);
        std::erase(value, '"');
        append("*" + word.substr(0, equals) + ": \"" + value + "\"\n");
    }
    return *this;
}

} // namespace orvan
