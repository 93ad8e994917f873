#include "Orvan/Doctor/Checkup.h"
#include "Orvan/PropertyListJson.h"

#include "Formats/OneLine.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

struct Word {
    const char* text;
    Color color;
};
// In the order of the verdicts.
constexpr std::array<Word, 3> kWords{
    {{"ok", Color::green}, {"problem", Color::red}, {"not checked", Color::yellow}}};

const Word& wordFor(const Finding& finding) {
    return kWords[static_cast<std::size_t>(finding.verdict)];
}

void writeLine(const std::string& station, const Finding& finding) {
    constexpr std::size_t kVerdictWidth = 13;
    constexpr int kStationWidth = 16;
    const Word& word = wordFor(finding);
    const std::string verdict = word.text;
    std::cout << colored(verdict, word.color, isDecorated(STDOUT_FILENO))
              << std::string(kVerdictWidth - verdict.size(), ' ') << std::left << std::setw(kStationWidth)
              << station << platform::onOneLine(finding.found);
    if (!finding.mend.empty())
        std::cout << (finding.found.ends_with(".)") ? " " : ". ") << platform::onOneLine(finding.mend);
    std::cout << std::endl;
}

} // namespace

bool Checkup::look(const char* station, const std::function<Finding()>& examine) {
    Finding finding;
    {
        ProgressLine line;
        line.show("Looking at: " + std::string(station) + (queue_.empty() ? "" : " (" + queue_ + ")"));
        finding = examine();
    }
    if (!json_) writeLine(station, finding);
    const bool works = finding.verdict == Verdict::ok;
    stations_.push_back({station, queue_, std::move(finding)});
    return works;
}

void Checkup::end() const {
    if (!json_) return;
    Json stations = Json::array();
    for (const Station& station : stations_)
        stations.push_back(
            {{"station", station.name}, {"queue", station.queue}, {"state", wordFor(station.finding).text},
                {"found", station.finding.found}, {"mend", station.finding.mend}});
    std::cout << jsonText(Json{{"schemaVersion", 1}, {"ok", allIsWell()}, {"stations", std::move(stations)}})
              << '\n';
}

bool Checkup::allIsWell() const {
    return std::ranges::none_of(
        stations_, [](const Station& station) { return station.finding.verdict == Verdict::problem; });
}

} // namespace orvan
