// What `orvan status` and `orvan papers` say when a question does not get to the printer, or its answer does
// not get back, through a real scheduler: the answers of before are shown as such, and why.
#include "PrintDialog/Host/PrinterAnswers.h"
#include "Tests/Orvan/Program.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/OwnNetwork.h"

#include <nlohmann/json.hpp>
#include <regex.h>
#include <sys/mount.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// Where an extended regular expression (POSIX) matches: its first group, or all when it has none.
std::vector<std::string> matches(const std::string& text, const char* pattern) {
    std::vector<std::string> found;
    regex_t expression{};
    if (regcomp(&expression, pattern, REG_EXTENDED) != 0) throw std::invalid_argument(pattern);
    regmatch_t places[2]{};
    const std::size_t group = expression.re_nsub > 0 ? 1 : 0;
    for (const char* rest = text.c_str(); regexec(&expression, rest, 2, places, 0) == 0;
         rest += places[0].rm_eo)
        found.emplace_back(rest + places[group].rm_so, rest + places[group].rm_eo);
    regfree(&expression);
    return found;
}

std::set<std::string> setOf(const std::vector<std::string>& words) {
    return {words.begin(), words.end()};
}

class OldAnswers : public CommandQueue {
protected:
    bool hasJob(const std::string& queue, ipp_jstate_t state) const {
        std::vector<PrintJob> jobs;
        EXPECT_EQ(system_->jobs(queue, &jobs), std::nullopt);
        return std::ranges::find(jobs, state, &PrintJob::state) != jobs.end();
    }

    Json json(const Words& arguments, int exitCode, const Environment& more = {}) const {
        const ProgramEnd end = orvan(arguments, more);
        EXPECT_EQ(end.exitCode, exitCode) << end.output << end.errors;
        return Json::parse(end.output, nullptr, false);
    }

    // Both commands, about a queue that has answered before or not, as text and as JSON.
    void expectOld(
        const std::string& queue, const std::string& code, const std::string& words, bool hasAnswered) const {
        SCOPED_TRACE(queue + ": " + code);
        const std::string end = hasAnswered ? " follow.\n" : " There are no earlier answers.\n";
        for (const char* const command : {"status", "papers"}) {
            SCOPED_TRACE(command);
            const ProgramEnd text = orvan({command, "-q", queue});
            EXPECT_EQ(text.exitCode, 1);
            EXPECT_EQ(text.output.find("Delivery notes") != std::string::npos, hasAnswered) << text.output;
            EXPECT_TRUE(text.errors.starts_with("orvan: printer " + queue)) << text.errors;
            EXPECT_NE(text.errors.find(words), std::string::npos) << text.errors;
            EXPECT_TRUE(text.errors.ends_with(end)) << text.errors;
            const bool hasTime = !matches(text.errors, "The answers of [0-9]+:[0-9]+ ").empty();
            EXPECT_EQ(hasTime, hasAnswered) << text.errors;
            const Json answer = json({command, "-q", queue, "--json"}, 1);
            EXPECT_EQ(answer["code"], code) << answer;
            EXPECT_EQ(answer["fresh"], false);
            EXPECT_NE(answer["problem"].get<std::string>().find(words), std::string::npos) << answer;
            EXPECT_EQ(answer["answeredAt"].is_string(), hasAnswered) << answer;
        }
    }

    SimulatedPrinter printer_{{}, contents(ORVAN_STATUS_DOCUMENT)};
};

TEST_F(OldAnswers, AreToldFromNewOnesWhateverHappens) {
    SimulatedPrinter leaving({}, contents(ORVAN_STATUS_DOCUMENT));
    for (const bool hasAnswered : {true, false}) {
        const std::string queue = hasAnswered ? "Office" : "New";
        const std::string off = hasAnswered ? "Off" : "NewOff";
        addQueue(queue, printer_);
        addQueue(off, leaving);
        if (!hasAnswered) continue;
        for (const std::string& asked : {queue, off})
            EXPECT_EQ(json({"status", "-q", asked, "--json"}, 0)["fresh"], true);
    }
    leaving.end();
    const auto administer = [this](const Words& words) { EXPECT_EQ(run(words).exitCode, 0); };
    const struct {
        const char* code;
        const char* words;
        std::function<void(const std::string& queue)> arrange;
        std::function<void(const std::string& queue)> restore;
    } cases[] = {
        {"queue-rejects-jobs", "not asked: the queue rejects jobs",
            [&](const std::string& queue) { EXPECT_EQ(system_->rejectJobs(queue), std::nullopt); },
            [&](const std::string& queue) {
                administer({"/usr/sbin/cupsaccept", queue});
            }},
        {"not-permitted", "not asked: ",
            [&](const std::string& queue) {
                administer({"/usr/sbin/lpadmin", "-p", queue, "-u", "allow:nobody"});
            },
            [&](const std::string& queue) {
                administer({"/usr/sbin/lpadmin", "-p", queue, "-u", "allow:all"});
            }},
        {"queue-paused", "not asked: the queue is stopped",
            [&](const std::string& queue) { EXPECT_EQ(system_->pauseQueue(queue), std::nullopt); },
            [&](const std::string& queue) { EXPECT_EQ(system_->resumeQueue(queue), std::nullopt); }},
        {"job-held", "not asked: the queue holds new jobs",
            [&](const std::string& queue) { EXPECT_EQ(system_->holdNewJobs(queue), std::nullopt); },
            [&](const std::string& queue) {
                administer({"/usr/sbin/cupsenable", "--release", queue});
            }},
    };
    for (const bool hasAnswered : {true, false}) {
        const std::string queue = hasAnswered ? "Office" : "New";
        // What an earlier job complained of is none of a later one's.
        expectOld(hasAnswered ? "Off" : "NewOff", "printer-offline", "does not answer: ", hasAnswered);
        for (const auto& [code, words, arrange, restore] : cases) {
            arrange(queue);
            expectOld(queue, code, words, hasAnswered);
            restore(queue);
        }
        EXPECT_FALSE(hasJob(queue, IPP_JSTATE_HELD) || hasJob(queue, IPP_JSTATE_PENDING));
    }
    ASSERT_EQ(system_->rejectJobs("Off"), std::nullopt);
    expectOld("Off", "queue-rejects-jobs", "not asked: the queue rejects jobs", true);
    const ProgramEnd line = orvan({"status", "--all", "--low"});
    EXPECT_EQ(line.exitCode, 1);
    EXPECT_EQ(matches("\n" + line.output,
                  "\nOff +4 trays, Tray 3 low; yellow 7 %; [0-9:]+; not asked: the queue rejects jobs\n")
                  .size(),
        1U)
        << line.output;
    EXPECT_EQ(line.errors, "");
    EXPECT_EQ(json({"papers", "-q", "Office", "--json"}, 0)["code"], "");
}

TEST_F(OldAnswers, AreShownWhileThePrinterIsBusyOrSomebodyCancels) {
    addGatedQueue("Office", printer_);
    EXPECT_EQ(json({"status", "-q", "Office", "--json"}, 0)["fresh"], true);
    shutGate();
    const TempFolder folder;
    {
        BackgroundProcess program(
            {ORVAN_PROGRAM, "papers", "-q", "Office", "--timeout", "100", "--json"}, [&] {
                changeEnvironment(environment());
                static_cast<void>(!std::freopen((folder.path() / "papers").c_str(), "w", stdout));
                static_cast<void>(!std::freopen("/dev/null", "w", stderr));
            });
        EXPECT_TRUE(eventually([&] { return hasJob("Office", IPP_JSTATE_PROCESSING); }));
        EXPECT_EQ(run({"/usr/bin/cancel", "-a", "Office"}).exitCode, 0);
        EXPECT_TRUE(eventually(
            [&] { return !Json::parse(contents(folder.path() / "papers"), nullptr, false).is_discarded(); }));
        const Json answer = Json::parse(contents(folder.path() / "papers"), nullptr, false);
        EXPECT_EQ(answer["code"], "job-cancelled") << answer;
        EXPECT_EQ(answer["papers"].size(), 5U);
        EXPECT_EQ(program.end(0), 1);
    }
    // Somebody's other job, which the printer is busy with.
    EXPECT_EQ(run({"/bin/sh", "-c",
                      "printf '#CUPS-COMMAND\\ncom.orvan.Permissions' | lp -s -d Office -t 'Other' -"})
                  .exitCode,
        0);
    EXPECT_TRUE(eventually([this] { return hasJob("Office", IPP_JSTATE_PROCESSING); }));
    const Json busy = json({"papers", "-q", "Office", "--json", "--timeout", "3"}, 1);
    EXPECT_EQ(busy["code"], "printer-busy") << busy;
    EXPECT_EQ(busy["papers"].size(), 5U);
    EXPECT_FALSE(hasJob("Office", IPP_JSTATE_PENDING)); // it took its own back
    EXPECT_EQ(run({"/usr/bin/cancel", "-a", "Office"}).exitCode, 0);
    openGate();
}

TEST_F(OldAnswers, AreToldWhenTheSpoolIsFull) {
    addQueue("Office", printer_);
    EXPECT_EQ(json({"status", "-q", "Office", "--json"}, 0)["fresh"], true);
    system_.reset();
    const std::string said = inOwnNetwork({}, [this]() -> std::string {
        SetUp();
        printer_.end();
        const SimulatedPrinter printer;
        addQueue("Office", printer);
        orvan({"status", "-q", "Office"});
        const std::string spool = system_->folder().path() / "spool";
        if (!fs::is_directory(spool)) return "no spool";
        if (::mount("none", spool.c_str(), "tmpfs", 0, "size=4k") != 0) return "skip: no file system";
        std::ofstream(spool + "/full") << std::string(8192, 'x');
        const ProgramEnd end = orvan({"papers", "-q", "Office", "--json"});
        ::umount(spool.c_str());
        system_.reset();
        return std::to_string(end.exitCode) + end.output;
    });
    ORVAN_SKIP_WITHOUT_NETWORK(said);
    EXPECT_TRUE(said.starts_with("1{")) << said;
    EXPECT_NE(said.find("\"code\":\"no-room\""), std::string::npos) << said;
    EXPECT_NE(said.find("Delivery notes"), std::string::npos) << said;
}

// An agent that is switched off is ordinary.
TEST_F(OldAnswers, AreNoneOfAnAgentsThatIsOff) {
    const SimulatedPrinter quiet({"--no-snmp"}, contents(ORVAN_STATUS_DOCUMENT));
    const SimulatedPrinter closed(
        {"--user", "admin"}, contents(ORVAN_STATUS_DOCUMENT), {{"ORVAN_PASSWORD", "x"}});
    const SimulatedPrinter empty(
        {}, "<status><deviceStatus/><customPaperTypes><printer/></customPaperTypes></status>");
    addQueue("Quiet", "commandtoorvan", quiet.url());
    addQueue("Closed", closed);
    addQueue("Empty", empty);
    const ProgramEnd end = orvan({"status", "-q", "Quiet"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(
        end.errors, "orvan: printer Quiet answered, except job accounting: the agent does not answer.\n");
    EXPECT_EQ(orvan({"papers", "-q", "Quiet"}).errors, "");
    const Json status = json({"status", "-q", "Quiet", "--json"}, 0);
    EXPECT_EQ(status["fresh"], true);
    EXPECT_EQ(status["remark"], "except job accounting: the agent does not answer");
    EXPECT_EQ(status["commands"].back()["code"], "agent-silent");
    EXPECT_EQ(status["commands"].back()["state"], "never");
    const Json checkup = json({"doctor", "-q", "Quiet", "--json"}, 0);
    for (const Json& station : checkup["stations"])
        EXPECT_NE(station["state"], "problem") << station;

    // The agent's answer is none of the papers'.
    const ProgramEnd papers = orvan({"papers", "-q", "Closed"});
    expectRefusal(papers, "wants a user name and a password");
    // Sections without anything in them are an answer.
    EXPECT_EQ(orvan({"papers", "-q", "Empty"}).exitCode, 0);
    const ProgramEnd nothing = orvan({"status", "-q", "Empty"});
    EXPECT_EQ(nothing.errors, "");
    EXPECT_TRUE(nothing.output.starts_with("Custom papers\n  (none)\n")) << nothing.output;
}

// What other clients of the scheduler see, and what stays in the queue's PPD.
TEST_F(OldAnswers, LeaveNothingInTheQueueThatThePrinterDoesNotTell) {
    std::string many = "<s><customPaperTypes><printer>";
    for (int i = 0; i < 200; ++i)
        many.append("<customPaperType><name>")
            .append(std::to_string(i * 7919 % 1000))
            .append("</name></customPaperType>");
    const SimulatedPrinter printer({}, many + "</printer></customPaperTypes></s>");
    addQueue("Office", printer);
    const auto entries = [this] {
        const std::string ppd = contents(system_->folder().path() / "etc/ppd/Office.ppd");
        return matches(ppd, "\\*com\\.orvan\\.CustomPaperTypes[0-9a-f]{4,}: [A-Za-z0-9+/=]+").size();
    };
    EXPECT_EQ(orvan({"papers", "-q", "Office"}).exitCode, 0);
    EXPECT_GT(entries(), 4U);
    const auto seen = [this] { return run({"/usr/bin/lpoptions", "-p", "Office"}).output; };
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"<s><deviceStatus><printer><supplies><s><name>Cyan Toner</name><status>NearEmpty</status></s>"
         "<s><name>Black Toner</name><status>0</status></s></supplies></printer></deviceStatus>"
         "<customPaperTypes><printer/></customPaperTypes></s>",
            {"marker-levels=-2,0 ", "printer-state-reasons=toner-empty-warning"}},
        {"<s><permissions/></s>",
            {"marker-levels=-2 ", "marker-names='Supplies not told'", "printer-state-reasons=none"}},
    };
    for (const auto& [document, expected] : cases) {
        printer.replaceDocument(document);
        EXPECT_EQ(orvan({"status", "-q", "Office"}).exitCode, 0);
        const std::string attributes = seen();
        for (const char* const words : expected)
            EXPECT_NE(attributes.find(words), std::string::npos) << words << " in\n" << attributes;
    }
    EXPECT_LT(entries(), 4U);
}

// Every key of the answers is in the manual page, and every key of the manual page in an answer.
class AnswerKeys {
public:
    explicit AnswerKeys(const Json& answer) { collect(answer); }
    std::set<std::string> keys;

private:
    void collect(const Json& value) {
        if (value.is_array())
            for (const Json& one : value)
                collect(one);
        if (!value.is_object()) return;
        for (const auto& [key, one] : value.items()) {
            if (key == "schemaVersion") continue;
            keys.insert(key);
            if (key != "responses") collect(one); // which are the printer's
        }
    }
};

TEST_F(OldAnswers, AreInJSONAsTheManualSays) {
    addQueue("Office", printer_);
    const std::string manual = contents(ORVAN_MANUAL);
    const auto section = [&manual](const std::string& title, const std::string& end) {
        const std::size_t begin = manual.find(title) + title.size();
        return manual.substr(begin, manual.find(end, begin) - begin);
    };
    const std::string schema = section(".Ss JSON\n", ".Ss Codes\n");
    const auto item = [&schema](const std::string& tag) {
        const std::size_t begin = schema.find(".It Cm " + tag + "\n");
        return setOf(matches(
            schema.substr(begin, schema.find("\n.It Cm ", begin + 1) - begin), "\n\\.Dq ([A-Za-z]+)"));
    };
    std::set<std::string> one = item("status");
    one.erase("time");
    EXPECT_EQ(AnswerKeys(json({"status", "-q", "Office", "--json"}, 0)).keys, one);
    std::set<std::string> all = item("status Fl -all");
    all.erase("time");
    all.insert(one.begin(), one.end());
    EXPECT_EQ(AnswerKeys(json({"status", "--all", "--json"}, 0)).keys, all);
    EXPECT_EQ(AnswerKeys(json({"papers", "-q", "Office", "--json"}, 0)).keys, item("papers"));
    EXPECT_EQ(AnswerKeys(json({"doctor", "-q", "Office", "--json"}, 0)).keys, item("doctor"));

    std::set<std::string> words;
    for (const std::string_view word : answerWords())
        if (!word.empty()) words.emplace(word);
    EXPECT_EQ(setOf(matches(section(".Ss Codes\n", ".Sh ENVIRONMENT"), "\n\\.It Li ([a-z-]+)")), words);

    // There is one whatever is wrong.
    EXPECT_EQ(json({"status", "-q", "Nowhere", "--json"}, 1)["code"], "no-such-queue");
    const Json down = json({"status", "--all", "--json"}, 1, {{"CUPS_SERVER", "/no/such/socket"}});
    EXPECT_EQ(down["code"], "scheduler-not-there");
    EXPECT_EQ(down["printers"], Json::array());
    // Also where nobody has named a queue, or the printer needs no hand.
    EXPECT_EQ(
        json({"papers", "--json"}, 1, {{"CUPS_SERVER", "/no/such/socket"}})["code"], "scheduler-not-there");
    EXPECT_EQ(json({"papers", "--json"}, 1)["code"], "no-such-queue");
    EXPECT_EQ(json({"status", "-q", "Office", "--low", "--json"}, 0)["queue"], "Office");
    const std::string watched = run(
        {"/bin/sh", "-c", ORVAN_PROGRAM " status -q Office --timeout 100 --watch 0.01 --json | head -n 1"})
                                    .output;
    EXPECT_TRUE(Json::parse(watched, nullptr, false)["time"].is_string()) << watched;
}

TEST_F(OldAnswers, AreMetricsThatAnotherProgramReads) {
    if (run({"/usr/bin/python3", "-c", "import prometheus_client.openmetrics.parser"}).exitCode != 0)
        GTEST_SKIP() << "python3-prometheus-client is not installed";
    addQueue("Office", printer_);
    SimulatedPrinter leaving;
    addQueue("Off", leaving);
    leaving.end();
    const std::string reader = "import sys\nfrom prometheus_client.openmetrics.parser import "
                               "text_string_to_metric_families as read\n"
                               "for f in read(sys.stdin.read()):\n for s in f.samples: print(s.name, "
                               "sorted(s.labels.items()), s.value)";
    const ProgramEnd end =
        run({"/bin/sh", "-c",
                ORVAN_PROGRAM
                " status --all --timeout 100 --metrics 2>/dev/null | /usr/bin/python3 -c \"$READER\""},
            {{"READER", reader}});
    EXPECT_EQ(end.errors, "");
    for (const char* const sample :
        {"orvan_scheduler_answered [] 1\n", "orvan_printer_answered [('queue', 'Office')] 1\n",
            "orvan_printer_answered [('queue', 'Off')] 0\n",
            "orvan_supply_level_percent [('queue', 'Office'), ('supply', 'Yellow Toner')] 7\n",
            "orvan_tray_level_percent [('queue', 'Office'), ('tray', 'Tray 2')] nan\n"})
        EXPECT_NE(end.output.find(sample), std::string::npos) << sample << " in\n" << end.output;
    EXPECT_NE(end.output.find("orvan_printer_answer_age_seconds [('queue', 'Office')] "), std::string::npos);
}

} // namespace
} // namespace orvan
