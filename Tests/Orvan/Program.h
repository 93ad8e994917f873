// `orvan` as its users run it, and how it ends.
#pragma once

#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvan {

using Words = std::vector<std::string>;

inline Words joined(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

// In English.
inline ProgramEnd orvan(const Words& arguments, Environment environment = {}) {
    environment.insert({{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}, {"ORVAN_SYSTEM_RELEASE", std::nullopt}});
    return runProgram(joined({ORVAN_PROGRAM}, arguments), environment);
}

// Where something is wrong, one line says so with these words.
inline void expectEnd(
    const ProgramEnd& end, int exitCode, const std::string& output, const std::string& words = "") {
    EXPECT_EQ(end.exitCode, exitCode);
    EXPECT_EQ(end.output, output);
    EXPECT_EQ(end.errors.substr(0, 7), exitCode == 0 ? "" : "orvan: ");
    EXPECT_EQ(end.errors.find('\n'), end.errors.size() - 1) << end.errors;
    EXPECT_NE(end.errors.find(words), std::string::npos) << end.errors;
}

struct Refusal {
    Words arguments;
    int exitCode;
    std::string words;
};

inline void expectRefusal(const ProgramEnd& end, const std::string& words, int exitCode = 1) {
    expectEnd(end, exitCode, "", words);
}

} // namespace orvan
