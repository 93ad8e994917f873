// The names that an office gave its papers, in the panel's paper-type list.
#include "BiDi/ppdx.h"
#include "Formats/PropertyList.h"
#include "Tests/OrvanPaperOptions/PanelFixture.h"
#include "Tests/Support/FakePrinter.h"
#include "Tests/Support/TempFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace orvan {
namespace {

using Words = std::vector<std::string>;
using platform::PropertyList;

constexpr std::size_t kOtherPaperTypes = 13; // of the driver's PPD, before its custom ones
constexpr const char* kThree = "{customPaperTypes=({name=A;type=1;},{name=B;type=17;},{name=C;type=4;});}";
constexpr const char* kCommand = "com.orvan.CustomPaperTypes";

class CustomPaperTypesTest : public PanelTest {
protected:
    void addPapers(const Words& keywords) {
        std::string lines;
        for (const std::string& keyword : keywords)
            lines.append("*MediaType ").append(keyword).append("/T: \"\"\n");
        ppd_.replace("*CloseUI: *MediaType\n", lines + "*CloseUI: *MediaType\n");
    }
    void receive(const std::string& response) {
        const auto list = PropertyList::read(response);
        ASSERT_TRUE(list) << response;
        panel_->receivedBiDiResponse(*list);
    }
    // As a dialog shows it first.
    void show() {
        panel_->restoreValuesAndReturnError(nullptr);
        panel_->willShow();
        panel_->restoreValuesAndReturnError(nullptr);
    }
    // What the list has after the driver's other paper types, as "Title/Keyword".
    Words customPapers() {
        Words papers;
        const auto& items = popUp("MediaType").items();
        EXPECT_GE(items.size(), kOtherPaperTypes);
        for (std::size_t i = kOtherPaperTypes; i < items.size(); ++i) {
            const auto choice = std::static_pointer_cast<PDEChoice>(items[i].representedObject);
            papers.push_back(items[i].title + "/" + *choice->ppdTitle());
        }
        return papers;
    }
};

TEST_F(CustomPaperTypesTest, TakeThePrintersNames) {
    const std::string x30(30, 'x');
    const std::string n78(78, 'n');
    const Words first = {"Custom Type 1/CustomType1"};
    const struct {
        const char* what;
        Words responses;
        Words expected;
    } cases[] = {
        {"three types", {kThree}, {"A/CustomType1", "B/CustomType17", "C/CustomType4"}},
        {"seven, of which five count",
            {"{customPaperTypes=({name=A;type=a;},{name=B;type=b;},{name=C;type=c;},{name=D;type=d;},"
             "{name=E;type=e;},{name=F;type=f;},{name=G;type=g;});}"},
            {"A/CustomTypea", "B/CustomTypeb", "C/CustomTypec", "D/CustomTyped", "E/CustomTypee"}},
        {"two answers", {"{customPaperTypes=({name=A;type=1;});}", "{customPaperTypes=({name=B;type=2;});}"},
            {"A/CustomType1", "B/CustomType2"}},
        {"no answer", {}, {}},
        {"an answer to something else", {"{trays=({name=A;type=1;});}"}, {}},
        {"an empty list", {"{customPaperTypes=();}"}, {}},
        {"no list", {"{customPaperTypes={name=A;type=1;};}", "{customPaperTypes=A;}"}, {}},
        {"no dictionary", {"(customPaperTypes)", "customPaperTypes"}, {}},
        {"no name", {"{customPaperTypes=({type=7;});}"}, first},
        {"an empty name", {"{customPaperTypes=({name=\"\";type=7;});}"}, first},
        {"a name that is no text", {"{customPaperTypes=({name=(A);type=7;});}"}, first},
        {"no type", {"{customPaperTypes=({name=A;});}"}, first},
        {"a type that is no text", {"{customPaperTypes=({name=A;type=<37>;});}"}, first},
        {"an empty type", {"{customPaperTypes=({name=A;type=\"\";});}"}, {"A/CustomType"}},
        {"entries that are no dictionaries", {"{customPaperTypes=(A,(B),{name=C;type=3;});}"},
            {"Custom Type 1/CustomType1", "Custom Type 2/CustomType2", "C/CustomType3"}},
        {"a keyword as long as the record's", {"{customPaperTypes=({name=A;type=" + x30 + ";});}"},
            {"A/CustomType" + x30}},
        {"a longer keyword", {"{customPaperTypes=({name=A;type=" + x30 + "x;});}"}, first},
        {"a name as long as the record's", {"{customPaperTypes=({name=\"" + n78 + "ü\";type=7;});}"},
            {n78 + "ü/CustomType7"}},
        {"a longer name", {"{customPaperTypes=({name=\"" + n78 + "nü\";type=7;});}"},
            {n78 + "n/CustomType7"}},
    };
    addPapers({"CustomType6", "CustomType7", "CustomType8", "CustomType9", "CustomType10"});
    for (const auto& [what, responses, expected] : cases) {
        SCOPED_TRACE(what);
        create();
        for (const std::string& response : responses)
            receive(response);
        show();
        EXPECT_EQ(customPapers(), expected);
    }
}

TEST_F(CustomPaperTypesTest, AreFoundByTheNumberInTheKeyword) {
    addPapers({"CustomType0", "CustomType12abc", "CustomType-1", "CustomType+2", "CustomType",
        "CustomType99999999999999999999", "MyCustomType2", "Abcdefghij3CustomType", "customtype1"});
    create();
    for (const char* const letter : {"A", "B", "C"}) {
        std::string list;
        for (const char* const number : {"1", "2", "3", "4", "5"})
            list.append("{name=").append(letter).append(number).append(";type=").append(number).append(";},");
        receive("{customPaperTypes=(" + list + ");}");
    }
    show();
    EXPECT_EQ(customPapers(), (Words{"A1/CustomType1", "A2/CustomType2", "A3/CustomType3", "A4/CustomType4",
                                  "A5/CustomType5", "B1/CustomType1", "B2/CustomType2", "C2/CustomType2",
                                  "A2/CustomType2", "A3/CustomType3", "T/customtype1"}));
}

TEST_F(CustomPaperTypesTest, AreSelectedAndPickedByTheirNewKeywords) {
    create();
    dialog_->mark("MediaType", "CustomType2");
    receive(kThree);
    panel_->updatePaperTypeListForCustomPaperTypes();
    const ppd_choice_t& record = dialog_->option("MediaType").choices[kOtherPaperTypes + 1];
    EXPECT_STREQ(record.choice, "CustomType2") << "before the panel is shown";
    show();
    EXPECT_STREQ(record.choice, "CustomType17");
    EXPECT_STREQ(record.text, "B");
    EXPECT_EQ(shown("MediaType"), "B");
    EXPECT_EQ(panel_->summaryInfo()["Paper Type"], "B");
    EXPECT_TRUE(pick("MediaType", "C"));
    EXPECT_EQ(dialog_->picks, (std::vector{CountingCallback::Pick("MediaType", "CustomType4")}));
    EXPECT_EQ(shown("MediaType"), "C");
    EXPECT_EQ(panel_->summaryInfo()["Paper Type"], "C");
}

TEST_F(CustomPaperTypesTest, AreDecidedWhenThePanelIsFirstShown) {
    create();
    dialog_->mark("MediaType", "CustomType2");
    show();
    EXPECT_EQ(customPapers(), Words());
    EXPECT_FALSE(panel_->summaryInfo().contains("Paper Type")) << "what is gone cannot be the choice";
    receive(kThree);
    panel_->willShow();
    EXPECT_EQ(panel_->queryPrinterForCPTsThread(), 0);
    EXPECT_EQ(customPapers(), Words());
    EXPECT_STREQ(dialog_->option("MediaType").choices[kOtherPaperTypes].choice, "CustomType1");
}

TEST_F(CustomPaperTypesTest, NeedThePaperTypeOption) {
    ppd_.removeOptions({"MediaType"});
    create();
    receive(kThree);
    show();
    EXPECT_TRUE(popUp("MediaType").items().empty());
    EXPECT_FALSE(popUp("Slipsheet").items().empty());
}

// The panel asks its printer.
class AskedPrinterTest : public CustomPaperTypesTest {
protected:
    void SetUp() override {
        printer_ = fake_;
        ppd_.append(std::string("*cupsCommands: \"") + kCommand + "\"\n");
    }

    std::shared_ptr<FakePrinter> fake_ = std::make_shared<FakePrinter>();
};

class ResponseCounter final : public OrvanBiDiDelegate {
public:
    void receivedBiDiResponse(const PropertyList&) override { ++count; }
    int count = 0;
};

TEST_F(AskedPrinterTest, LosesAPanelThatGoesDuringTheWait) {
    create();
    EXPECT_TRUE(panel_->awaitsPrinter());
    EXPECT_EQ(fake_->sent.size(), 1U);
    const std::weak_ptr<OrvanPaperOptions> panel = panel_;
    panel_.reset();
    EXPECT_TRUE(panel.expired());
    EXPECT_EQ(dialog_.use_count(), 1) << "the channel has ended with the panel";

    // And a panel that never comes to be.
    ppd_.keepOptions({});
    dialog_ = std::make_shared<CountingCallback>(ppd_, printer_);
    EXPECT_EQ(OrvanPaperOptions::initWithCallbackAndBundle(dialog_, bundle_), nullptr);
    EXPECT_GT(dialog_->printerRequests, 0) << "it has asked";
    EXPECT_EQ(dialog_.use_count(), 1);
    EXPECT_EQ(bundle_.use_count(), 1);
}

TEST_F(AskedPrinterTest, IsNotHeardDuringCreation) {
    // There is no job to wait for, and what the queue's PPD has is delivered at once.
    const TempFolder folder;
    const std::filesystem::path entries = folder.path() / "entries";
    const int descriptor = open(entries.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_TRUE(ppdxWriteDataToDescriptor(descriptor, kCommand, kThree, std::strlen(kThree)));
    close(descriptor);
    DerivedPPD answered;
    answered.addEntries(contents(entries));
    fake_->ppd = answered.file();
    fake_->keepsJobs = false;
    create();
    EXPECT_FALSE(panel_->awaitsPrinter());
    show();
    EXPECT_EQ(customPapers(), Words());

    const auto delegate = std::make_shared<ResponseCounter>();
    const auto channel = OrvanBiDi::initWithPDECallbackObject(dialog_);
    channel->setDelegate(delegate);
    channel->dispatchCommands(channel->supportedCommands());
    EXPECT_EQ(delegate->count, 1) << "there was something to hear";

    // Damage says nothing on the application's terminal.
    std::string damaged;
    for (int i = 0; i < 300; ++i) {
        std::array<char, 64> line{};
        std::snprintf(line.data(), line.size(), "*%s%04x: \"AAAA\"\n", kCommand, i);
        damaged += line.data();
    }
    DerivedPPD broken;
    broken.append(damaged);
    const std::filesystem::path whole = std::exchange(fake_->ppd, broken.file());
    testing::internal::CaptureStderr();
    const auto noisy = OrvanBiDi::initWithPDECallbackObject(dialog_);
    noisy->setDelegate(delegate);
    noisy->dispatchCommands(noisy->supportedCommands());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(delegate->count, 1);
    fake_->ppd = whole;

    // More than a dialog decodes at once is left.
    fake_->budget = std::strlen(kThree) - 1;
    const auto small = OrvanBiDi::initWithPDECallbackObject(dialog_);
    small->setDelegate(delegate);
    small->dispatchCommands(small->supportedCommands());
    EXPECT_EQ(delegate->count, 1);
}

} // namespace
} // namespace orvan
