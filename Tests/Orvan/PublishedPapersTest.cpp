// orvan papers --publish, with a scheduler and the real command filter.
#include "BiDi/StoredAnswers.h"
#include "PrintDialog/Host/QueuePPD.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using Papers = NamedPapers;

class PublishedPapers : public CommandQueue {
protected:
    void SetUp() override {
        CommandQueue::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) system_->adoptEnvironment();
    }

    static std::unique_ptr<DialogPPD> ppd() {
        platform::Failure error;
        auto ppd = fetchQueuePPD("Office", std::chrono::seconds(100), error);
        EXPECT_NE(ppd, nullptr) << error.value_or("");
        return ppd;
    }
    // What every client shows.
    static std::string title(const std::string& choice) {
        const TempFolder folder;
        const PPDRecord record(ppdOpenFile(folder.write("office.ppd", text()).c_str()));
        const ppd_choice_t* const found =
            record != nullptr ? ppdFindChoice(ppdFindOption(record.get(), "MediaType"), choice.c_str())
                              : nullptr;
        return found != nullptr ? found->text : "(no choice)";
    }
    // The PPD as the scheduler gives it to everybody.
    static std::string text() {
        platform::Failure error;
        const auto file = fetchQueuePPDFile("Office", std::chrono::seconds(100), error);
        return file != nullptr ? contents(file->file()) : "";
    }
    std::string doctor() const { return orvan({"doctor", "-q", "Office"}).output; }
};

TEST_F(PublishedPapers, AreTitlesForEveryClient) {
    const SimulatedPrinter printer(
        {"--no-snmp"}, statusDocument({{"Certificates: cream", "3"}, {"和紙", "2"}, {"Nowhere", "17"}}));
    addQueue("Office", printer);
    EXPECT_EQ(orvan({"papers", "-q", "Office"}).exitCode, 0);
    EXPECT_EQ(text().find("OVNTitle"), std::string::npos);
    const std::string panel = orvan({"panel", "-q", "Office"}).output;
    const ProgramEnd published = orvan({"papers", "-q", "Office", "--publish"});
    EXPECT_EQ(published.exitCode, 0) << published.errors;
    EXPECT_EQ(title("CustomType3"), "Certificates: cream");
    EXPECT_EQ(title("CustomType2"), "和紙");
    EXPECT_EQ(title("CustomType1"), "Custom Type 1");
    EXPECT_FALSE(storedAnswers(ppd()->record()).empty()) << "the answers stay";
    EXPECT_EQ(orvan({"panel", "-q", "Office"}).output, panel) << "nor does the panel change";
    EXPECT_EQ(doctor().find("not the printer's any more"), std::string::npos);

    // The office has other papers now.
    printer.replaceDocument(statusDocument({{"Certificates: cream", "3"}, {"Ivory", "1"}}));
    EXPECT_NE(doctor().find("these names of papers in the queue's PPD are not the printer's any more: 和紙"),
        std::string::npos)
        << doctor();
    EXPECT_EQ(orvan({"papers", "-q", "Office", "--publish"}).exitCode, 0);
    EXPECT_EQ(title("CustomType2"), "Custom Type 2");
    EXPECT_EQ(title("CustomType1"), "Ivory");

    const ProgramEnd back = orvan({"papers", "-q", "Office", "--unpublish"});
    EXPECT_EQ(back.exitCode, 0) << back.errors;
    EXPECT_EQ(title("CustomType3"), "Custom Type 3");
    EXPECT_EQ(text().find("OVNTitle"), std::string::npos);
    EXPECT_FALSE(text().empty());
}

TEST_F(PublishedPapers, StayWhereThePrinterDoesNotAnswer) {
    SimulatedPrinter printer({"--no-snmp"}, statusDocument({{"Certificates", "3"}}));
    addQueue("Office", printer);
    EXPECT_EQ(orvan({"papers", "-q", "Office", "--publish"}).exitCode, 0);
    printer.end();
    EXPECT_EQ(orvan({"papers", "-q", "Office", "--publish"}).exitCode, 1);
    EXPECT_EQ(title("CustomType3"), "Certificates");
    EXPECT_EQ(orvan({"papers", "-q", "Office", "--publish", "--unpublish"}).exitCode, 2);
    const ProgramEnd missing = orvan({"papers", "-q", "Nowhere", "--unpublish"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.errors.find("no queue"), std::string::npos) << missing.errors;
}

} // namespace
} // namespace orvan
