#include "Orvan/AnswerReport.h"

#include "Formats/OneLine.h"
#include "Orvan/PropertyListJson.h"

#include <ctime>
#include <iomanip>
#include <sstream>
#include <utility>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;
using Time = std::optional<std::chrono::system_clock::time_point>;

std::string withFullStop(std::string sentence) {
    if (!sentence.ends_with('.') && !sentence.ends_with(".)")) sentence += '.';
    return sentence;
}

} // namespace

Json jsonTime(const Time& time) {
    if (!time) return nullptr;
    const std::time_t seconds = std::chrono::system_clock::to_time_t(*time);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::ostringstream text;
    text << std::put_time(&utc, "%FT%TZ");
    return text.str();
}

void addOutcome(Json& json, const Time& askedAt, const AnswerReason& problem) {
    json["fresh"] = problem.isNone();
    json["answeredAt"] = jsonTime(askedAt);
    json["problem"] = problem.sentence();
    json["code"] = wordFor(problem.code);
}

Json jsonOf(const PrinterAnswers& printer) {
    Json json{{"queue", printer.queue}};
    addOutcome(json, printer.askedAt(), printer.problem);
    json["remark"] = printer.remark();
    Json commands = Json::array();
    for (const CommandAnswer& answer : printer.commands)
        commands.push_back({{"command", answer.command}, {"state", wordFor(answer.state)},
            {"answeredAt", jsonTime(answer.askedAt)}, {"problem", answer.reason.sentence()},
            {"code", wordFor(answer.reason.code)}});
    json["commands"] = std::move(commands);
    Json responses = Json::array();
    for (const platform::PropertyList& response : printer.responses())
        responses.push_back(jsonFromPropertyList(response));
    json["responses"] = std::move(responses);
    return json;
}

std::string complaintOf(
    const std::string& queue, const AnswerReason& problem, bool hasAnswers, const Time& askedAt) {
    if (queue.empty()) return problem.text; // there was nobody to ask
    std::string text =
        "printer " + queue + (problem.wasNotAsked() ? " was not asked: " : " did not answer: ");
    text = withFullStop(text + platform::onOneLine(problem.text));
    const bool isKnown = problem.code > AnswerCode::severalPrinters; // the queue, to the scheduler
    if (!hasAnswers) return isKnown ? text + " There are no earlier answers." : text;
    return text + " The answers of " + (askedAt ? timeText(*askedAt) : "an earlier time") + " follow.";
}

std::string complaintOf(const PrinterAnswers& printer) {
    if (printer.problem.isNone()) {
        const std::string remark = printer.remark();
        return remark.empty() ? "" : withFullStop("printer " + printer.queue + " answered, " + remark);
    }
    // Of those that are not new.
    Time oldest;
    bool hasAnswers = false;
    for (const CommandAnswer& answer : printer.commands) {
        if (answer.state != CommandAnswer::State::stored || answer.reason.isRemark()) continue;
        hasAnswers = true;
        if (answer.askedAt && (!oldest || *answer.askedAt < *oldest)) oldest = answer.askedAt;
    }
    return complaintOf(printer.queue, printer.problem, hasAnswers, oldest);
}

} // namespace orvan
