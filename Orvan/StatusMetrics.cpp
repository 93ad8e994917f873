#include "Orvan/StatusMetrics.h"

#include "PrintDialog/Host/PrinterPage.h"

#include <chrono>
#include <set>
#include <string>
#include <utility>

namespace orvan {
namespace {

using Labels = std::vector<std::pair<const char*, std::string>>;

// OpenMetrics 1.0, section 5.1: what a label's value escapes.
std::string escaped(const std::string& value) {
    std::string text;
    for (const char letter : value) {
        if (letter == '\\' || letter == '"') text += '\\';
        text += letter;
    }
    return text;
}

// The samples of one family, which stand together.
class Family {
public:
    Family(const char* name, const char* unit, const char* help, std::ostream& out) : name_(name), out_(out) {
        out << "# TYPE " << name << " gauge\n";
        if (*unit != '\0') out << "# UNIT " << name << ' ' << unit << '\n';
        out << "# HELP " << name << ' ' << help << '\n';
    }

    void write(const Labels& labels, const std::string& value) {
        std::string text;
        for (const auto& [label, content] : labels)
            text.append(text.empty() ? "{" : ",").append(label).append("=\"").append(escaped(content)) += '"';
        out_ << name_ << text << (text.empty() ? " " : "} ") << value << '\n';
    }

private:
    const char* name_;
    std::ostream& out_;
};

// A thing's label: its name, with a number where another has the same.
std::string uniqueName(const std::string& name, const char* kind, std::set<std::string>& taken) {
    const std::string wanted = name.empty() ? kind : name;
    std::string unique = wanted;
    for (int number = 2; !taken.insert(unique).second; ++number)
        unique = wanted + " (" + std::to_string(number) + ")";
    return unique;
}

template <class Things>
void writeLevels(Family& family, const std::string& queue, const char* kind, const Things& things) {
    if (!things) return;
    std::set<std::string> taken;
    for (const auto& thing : *things)
        family.write({{"queue", queue}, {kind, uniqueName(thing.name, kind, taken)}},
            thing.level.percent ? std::to_string(*thing.level.percent) : "NaN");
}

} // namespace

void writeMetrics(bool hasScheduler, const std::vector<PrinterAnswers>& printers, std::ostream& out) {
    Family("orvan_scheduler_answered", "", "Whether the print scheduler listed its queues.", out)
        .write({}, hasScheduler ? "1" : "0");
    Family answered("orvan_printer_answered", "", "Whether the printer answered now.", out);
    for (const PrinterAnswers& printer : printers)
        answered.write({{"queue", printer.queue}}, printer.problem.isNone() ? "1" : "0");
    Family age("orvan_printer_answer_age_seconds", "seconds", "How old the printer's answer is.", out);
    const auto now = std::chrono::system_clock::now();
    for (const PrinterAnswers& printer : printers)
        if (const auto askedAt = printer.askedAt())
            age.write({{"queue", printer.queue}},
                std::to_string(std::chrono::duration_cast<std::chrono::seconds>(now - *askedAt).count()));

    std::vector<PrinterPage> pages;
    pages.reserve(printers.size());
    for (const PrinterAnswers& printer : printers)
        pages.push_back(pageOf(printer.responses(), printer.ppd.get()));
    Family supplies("orvan_supply_level_percent", "percent", "How full a supply is.", out);
    for (std::size_t i = 0; i < printers.size(); ++i)
        writeLevels(supplies, printers[i].queue, "supply", pages[i].supplies);
    Family trays("orvan_tray_level_percent", "percent", "How full a paper tray is.", out);
    for (std::size_t i = 0; i < printers.size(); ++i)
        writeLevels(trays, printers[i].queue, "tray", pages[i].trays);
    out << "# EOF\n";
}

} // namespace orvan
