// What a question to a printer came to, for people and for scripts.
#pragma once

#include "Orvan/PrinterQuery.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <string>

namespace orvan {

// Of the JSON of "status" and "papers".
inline constexpr int kAnswerSchema = 2;

// RFC 3339, in UTC; null when it is not known.
nlohmann::ordered_json jsonTime(const std::optional<std::chrono::system_clock::time_point>& time);

// "fresh", "answeredAt", "problem" and "code".
void addOutcome(nlohmann::ordered_json& json,
    const std::optional<std::chrono::system_clock::time_point>& askedAt, const AnswerReason& problem);

// "queue", the outcome, "remark", "commands" and "responses".
nlohmann::ordered_json jsonOf(const PrinterAnswers& printer);

// "printer Office was not asked: the queue rejects jobs. The answers of 14:05 follow." The problem's text
// alone where there is no queue.
std::string complaintOf(const std::string& queue, const AnswerReason& problem, bool hasAnswers,
    const std::optional<std::chrono::system_clock::time_point>& askedAt);

// The same of all that the printer was asked; the remark alone when there is nothing else; "" when all is
// new.
std::string complaintOf(const PrinterAnswers& printer);

} // namespace orvan
