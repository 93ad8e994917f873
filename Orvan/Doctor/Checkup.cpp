#include "Orvan/Doctor/Checkup.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/Wrapping.h"

#include "Formats/OneLine.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
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

} // namespace

bool Checkup::isShown(const Finding& finding) const {
    return !style_.problemsAlone || finding.verdict == Verdict::problem;
}

void Checkup::writeLine(const Station& station) const {
    constexpr std::size_t kVerdictWidth = 13;
    constexpr std::size_t kStationWidth = 16;
    const Finding& finding = station.finding;
    const Word& word = wordFor(finding);
    const std::string verdict = word.text;
    const std::size_t queueWidth = style_.queueColumns == 0 ? 0 : style_.queueColumns + 2;
    const auto padded = [](const std::string& text, std::size_t columns) {
        return text + std::string(columns - std::min(columns, columnsOf(text)), ' ');
    };
    std::string text = platform::onOneLine(finding.found);
    if (!finding.mend.empty())
        text.append(finding.found.ends_with(".)") ? " " : ". ").append(platform::onOneLine(finding.mend));
    const std::size_t indent = kVerdictWidth + queueWidth + kStationWidth;
    std::cout << colored(verdict, word.color, isDecorated(STDOUT_FILENO))
              << std::string(kVerdictWidth - verdict.size(), ' ') << padded(station.queue, queueWidth)
              << padded(station.name, kStationWidth)
              << wrapped(text, wrappingWidth(STDOUT_FILENO), indent, indent) << std::endl;
}

bool Checkup::look(const char* station, const std::function<Finding()>& examine) {
    Finding finding;
    {
        ProgressLine line;
        line.show("Looking at: " + std::string(station));
        finding = examine();
    }
    const bool works = finding.verdict == Verdict::ok;
    add(station, "", std::move(finding));
    return works;
}

void Checkup::add(const std::string& station, const std::string& queue, Finding finding) {
    stations_.push_back({station, queue, std::move(finding)});
    if (!style_.json && isShown(stations_.back().finding)) writeLine(stations_.back());
}

void Checkup::end(const std::string& problem) const {
    const std::size_t problems = count(Verdict::problem);
    const std::size_t works = count(Verdict::ok);
    const std::size_t notChecked = count(Verdict::notChecked);
    if (!style_.json) {
        std::cout << (problems == 0      ? "No problem"
                         : problems == 1 ? "1 problem"
                                         : std::to_string(problems) + " problems")
                  << "; " << works << " ok, " << notChecked << " not checked." << std::endl;
        return;
    }
    Json stations = Json::array();
    for (const Station& station : stations_)
        if (isShown(station.finding))
            stations.push_back({{"station", station.name}, {"queue", station.queue},
                {"state", wordFor(station.finding).text}, {"found", station.finding.found},
                {"mend", station.finding.mend}});
    std::cout << jsonText(Json{{"schemaVersion", 2}, {"ok", allIsWell() && problem.empty()},
                     {"problem", problem}, {"problems", problems}, {"works", works},
                     {"notChecked", notChecked}, {"stations", std::move(stations)}})
              << '\n';
}

std::size_t Checkup::count(Verdict verdict) const {
    return static_cast<std::size_t>(std::ranges::count(
        stations_, verdict, [](const Station& station) { return station.finding.verdict; }));
}

} // namespace orvan
