// A command filter for the tests: answers every command of the job with a property list that tells how the
// filter was run.
//
// With ORVAN_TEST_FILTER_FAILS in its environment it exits with 1 at once.
#include "BiDi/ppdx.h"
#include "Formats/PropertyList.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

using platform::PropertyList;

int main(int count, char** arguments) {
    if (std::getenv("ORVAN_TEST_FILTER_FAILS") != nullptr) return 1;
    std::string job;
    if (count > 6)
        std::getline(std::ifstream(arguments[6]), job, '\0');
    else
        job.assign(std::istreambuf_iterator<char>(std::cin), {});

    PropertyList::Dictionary answer = {{"job", job}};
    PropertyList::List list;
    for (int position = 0; position < count; ++position)
        list.emplace_back(arguments[position]);
    answer["arguments"] = list;
    for (const char* name : {"DEVICE_URI", "PPD", "LANG", "PRINTER", "DISPLAY", "CUPS_SERVER"})
        if (const char* value = std::getenv(name)) answer[name] = value;

    std::istringstream lines(job);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        const std::string command = line.substr(0, line.find(' '));
        answer["command"] = command;
        const std::string bytes = PropertyList(answer).writeXML();
        orvan::ppdxWriteData(command.c_str(), bytes.data(), bytes.size());
    }
    return 0;
}
